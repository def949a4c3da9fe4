#include "Voix/RealtimeProvider.hpp"

#include <gtest/gtest.h>

namespace tarnavelle {
namespace {

using P = RealtimeProvider;
using Texte = std::optional<std::string>;

TEST(RealtimeProvider, ChoisitSelonLesCles) {
  const std::tuple<P::Cles, Texte, const P*> cas[] = {
      {{"AUTRE"}, "openai", nullptr},
      {{"OPENAI_API_KEY", "XAI_API_KEY"}, {}, &P::openai()},
      {{"OPENAI_API_KEY", "XAI_API_KEY"}, "grok", &P::grok()},
      {{"OPENAI_API_KEY", "XAI_API_KEY"}, "Grok", &P::openai()},
      {{"OPENAI_API_KEY"}, "openai-2.1", &P::openai21()},
      {{"XAI_API_KEY"}, "openai-2.1", &P::grok()},
  };
  for (const auto& [cles, choisi, attendu] : cas)
    EXPECT_EQ(P::actif(cles, choisi), attendu) << testing::PrintToString(cles) << choisi.value_or("");
  EXPECT_EQ(P::offre({"XAI_API_KEY"}),
            (std::vector<P::Offre>{{P::openai(), false}, {P::openai21(), false}, {P::grok(), true}}));
  EXPECT_EQ(P::clesDistinctes(), (std::vector<std::string>{"OPENAI_API_KEY", "XAI_API_KEY"}));
  EXPECT_EQ(dialecteDepuis("xai"), DialecteRealtime::xai);
  EXPECT_FALSE(dialecteDepuis("XAI"));
}

TEST(RealtimeProvider, ComposeLAdresse) {
  P p;
  p.endpoint = "wss://exemple.test/";
  EXPECT_EQ(p.url("a b&c=d#é-2.1"), "wss://exemple.test/?model=a%20b%26c%3Dd%23%C3%A9-2.1");
  EXPECT_FALSE(p.url("\xFF"));
  p.endpoint = "wss://exemple test/";
  EXPECT_FALSE(p.url("m"));
}

}  // namespace
}  // namespace tarnavelle
