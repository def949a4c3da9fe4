#include "Voix/RealtimeProvider.hpp"

#include <gtest/gtest.h>

namespace tarnavelle {
namespace {

using P = RealtimeProvider;
using Texte = std::optional<std::string>;

TEST(RealtimeProvider, TrouveParIdentifiant) {
  EXPECT_EQ(P::tous(), (std::vector{P::openai(), P::openai21(), P::grok()}));
  for (const P& p : P::tous()) EXPECT_EQ(P::parId(p.id), &p) << p.id;
  for (const Texte& autre : {Texte(), Texte(""), Texte("OpenAI"), Texte("grok ")})
    EXPECT_EQ(P::parId(autre), nullptr);
  for (const auto d : {DialecteRealtime::openai, DialecteRealtime::xai})
    EXPECT_EQ(dialecteDepuis(valeurBrute(d)), d);
  EXPECT_EQ(dialecteDepuis("XAI"), std::nullopt);
}

TEST(RealtimeProvider, ChoisitSelonLesCles) {
  const struct {
    P::Cles cles;
    Texte choisi;
    const P* attendu;
  } cas[] = {
      {{}, "openai", nullptr},
      {{"AUTRE"}, {}, nullptr},
      {{"OPENAI_API_KEY", "XAI_API_KEY"}, {}, &P::openai()},
      {{"OPENAI_API_KEY", "XAI_API_KEY"}, "grok", &P::grok()},
      {{"OPENAI_API_KEY", "XAI_API_KEY"}, "inconnu", &P::openai()},
      {{"OPENAI_API_KEY"}, "openai-2.1", &P::openai21()},
      {{"OPENAI_API_KEY"}, "grok", &P::openai()},
      {{"XAI_API_KEY"}, "openai-2.1", &P::grok()},
  };
  for (const auto& c : cas)
    EXPECT_EQ(P::actif(c.cles, c.choisi), c.attendu)
        << testing::PrintToString(c.cles) << " " << c.choisi.value_or("rien");

  EXPECT_EQ(P::offre({"XAI_API_KEY"}),
            (std::vector<P::Offre>{{P::openai(), false}, {P::openai21(), false}, {P::grok(), true}}));
  EXPECT_EQ(P::clesDistinctes(), (std::vector<std::string>{"OPENAI_API_KEY", "XAI_API_KEY"}));
}

TEST(RealtimeProvider, ComposeLAdresse) {
  const struct {
    std::string endpoint;
    std::string modele;
    Texte url;
  } cas[] = {
      {"wss://exemple.test/v1/realtime", "gpt-realtime-2.1",
       "wss://exemple.test/v1/realtime?model=gpt-realtime-2.1"},
      {"ws://127.0.0.1:8080/v1", "", "ws://127.0.0.1:8080/v1?model="},
      {"wss://exemple.test/", "a b&c=d#é", "wss://exemple.test/?model=a%20b%26c%3Dd%23%C3%A9"},
      {"wss://exemple.test/", "\xFF", {}},
      {"", "m", {}},
      {"wss://exemple test/", "m", {}},
  };
  for (const auto& c : cas) {
    P p = P::openai();
    p.endpoint = c.endpoint;
    EXPECT_EQ(p.url(c.modele), c.url) << c.endpoint << " " << c.modele;
  }
  EXPECT_EQ(P::grok().url("m"), "wss://api.x.ai/v1/realtime?model=m");
}

}  // namespace
}  // namespace tarnavelle
