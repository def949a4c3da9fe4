#include "Hermes/OreilleNtfy.hpp"

#include <gtest/gtest.h>

#include "Hermes/Dire.hpp"
#include "Hermes/MondeFlux.hpp"

namespace tarnavelle {
namespace {

using essai::dire;
using essai::ligne;
using essai::MondeFlux;
using essai::Ouverture;
using Lignes = std::vector<std::string>;

const ReglageNtfy reglage{"https://h", " abcdefghijklmnopqrst-_ ", "tk"};

#define ICI R"(,"topic":"abcdefghijklmnopqrst-_"})"
constexpr std::string_view open = R"(data: {"event":"open")" ICI;
constexpr std::string_view vie = R"(data:{"event":"keepalive")" ICI;
constexpr std::string_view a = R"(data: {"event":"message","id":"a","message":"A")" ICI;
constexpr std::string_view b = R"(data: {"event":"message","id":"b","message":"B")" ICI;
constexpr std::string_view c = R"(data: {"event":"message","id":"c","message":"C")" ICI;
constexpr std::string_view etrangere = R"(data: {"event":"keepalive","topic":"autre"})";

constexpr LectureFlux fin{LectureFlux::fin{}};
constexpr LectureFlux illisible{LectureFlux::illisible{}};
constexpr LectureFlux perdue{LectureFlux::perte{ErreurReseau::connexionPerdue}};
constexpr LectureFlux muette{LectureFlux::perte{ErreurReseau::delaiDepasse}};

/// Listens to the end of the script, or to the end of the ear: what happened, and when.
Lignes vivre(MondeFlux& monde, const ReglageNtfy& r = reglage, const OreilleNtfy::Cockpit& cockpit = {},
             int fois = 1) {
  OreilleNtfy oreille(
      monde, [&] { return OreilleNtfy::Secondes(monde.secondes); },
      essai::raconter([&](const std::string& fait) { monde.noter(fait); }));
  while (fois-- > 0) monde.noter(dire(oreille.ecouter(r, cockpit)));
  return monde.journal;
}

TEST(OreilleNtfy, VitCommeLaPolitiqueLeDit) {
  const std::string demande = "L'oreille d'Hermès se tait : le serveur refuse la demande.";
  const std::string acces = "L'oreille d'Hermès se tait : le serveur refuse l'accès à ce canal.";
  const struct {
    const char* nom;
    std::vector<Ouverture> script;
    Lignes attendu;
  } cas[] = {
      {"a cut, a catch-up that repeats, nothing lost and nothing twice",
       {{200, {ligne(1, open), ligne(5, ""), ligne(0, ": x"), ligne(4, a), ligne(0, a), {30, perdue}}},
        {200, {ligne(1, a), ligne(0, b), {70, fin}}},
        {200, {ligne(0, b), ligne(0, c)}}},
       {"0 GET", "1 ouverte", "10 A", "40 la liaison réseau a été coupée, 2", "42 GET?since=32s", "43 ouverte",
        "43 B", "113 loques, 2", "115 GET?since=2m", "115 ouverte", "115 C", "3715 arretee"}},
      {"opened afresh every hour, waiting for nothing",
       {{200, {ligne(0, open), ligne(3590, vie)}}, {201, {ligne(3599.5, a), ligne(1, b)}}, {200}, {200}},
       {"0 GET", "0 ouverte", "3600 GET?since=10s", "7200 ouverte", "7200 A", "7200 GET?since=1s",
        "10800 GET?since=30m", "14400 arretee"}},
      {"a refused catch-up is tried once plainly",
       {{200, {ligne(0, open), {1, fin}}}, {400}, {200, {ligne(0, open), {1, fin}}}, {400}, {400}},
       {"0 GET", "0 ouverte", "1 loques, 2", "3 GET?since=3s", "3 400, 0", "3 GET", "3 ouverte", "4 loques, 2",
        "6 GET?since=3s", "6 400, 0", "6 GET", "6 " + demande}},
      {"a retry that fails otherwise does not count against the next catch-up",
       {{200, {ligne(0, open), {0, fin}}}, {400}, {500}, {400}, {400}},
       {"0 GET", "0 ouverte", "0 loques, 2", "2 GET?since=2s", "2 400, 0", "2 GET", "2 500, 4",
        "6 GET?since=6s", "6 400, 0", "6 GET", "6 " + demande}},
      {"an hour without a sign of life is no refusal",
       {{400}, {200}, {400}},
       {"0 GET", "0 400, 0", "0 GET", "3600 GET", "3600 400, 0", "3600 arretee"}},
      {"a plain request refused twice", {{400}, {400}}, {"0 GET", "0 400, 0", "0 GET", "0 " + demande}},
      {"401", {{401}}, {"0 GET", "0 " + acces}},
      {"403 after a while",
       {{200, {ligne(0, open), {0, muette}}}, {403}},
       {"0 GET", "0 ouverte", "0 le serveur n'a plus rien dit, 2", "2 GET?since=2s", "2 " + acces}},
      {"429 waits a minute, redirects are not followed",
       {{429}, {302}},
       {"0 GET", "0 429, 60", "60 GET", "60 302, 2", "62 arretee"}},
      {"back-off grows until the server gives a sign of life, which an answer alone is not",
       {{ErreurReseau::hoteIntrouvable},
        {ErreurReseau::racineInconnue},
        {500},
        {200, {ligne(0, etrangere), {0, fin}}},
        {200, {{0, illisible}}},
        {503},
        {503},
        {200, {ligne(0, vie), {0, perdue}}}},
       {"0 GET", "0 le serveur ntfy est injoignable, 2", "2 GET", "2 la liaison chiffrée a échoué, 2", "4 GET",
        "4 500, 4", "8 GET", "8 loques, 8", "16 GET", "16 loques, 16", "32 GET", "32 503, 32", "64 GET",
        "64 503, 60", "124 GET", "124 ouverte", "124 la liaison réseau a été coupée, 2", "126 arretee"}},
  };
  for (const auto& c2 : cas) {
    MondeFlux monde(c2.script);
    EXPECT_EQ(vivre(monde), c2.attendu) << c2.nom;
    for (const auto& requete : monde.requetes) {
      EXPECT_TRUE(requete.url.starts_with("https://h/abcdefghijklmnopqrst-_/sse")) << requete.url;
      EXPECT_EQ(requete.entetes.back(), (EnteteHTTP{"Authorization", "Bearer tk"}));
    }
  }
}

TEST(OreilleNtfy, NOuvreRienQuandElleNeDoitPas) {
  MondeFlux monde(std::vector<Ouverture>{{200}});
  vivre(monde, {"http://h", reglage.topic, ""});
  vivre(monde, reglage, {.headless = true});
  EXPECT_EQ(vivre(monde, reglage, {.demo = true}), (Lignes{"0 fermee", "0 fermee", "0 fermee"}));
}

TEST(OreilleNtfy, RepartANeufApresUnAbandon) {
  MondeFlux monde(std::vector<Ouverture>{{500}, {500}, {400}, {400}, {400}, {500}});
  EXPECT_EQ(vivre(monde, reglage, {}, 2),
            (Lignes{"0 GET", "0 500, 2", "2 GET", "2 500, 2", "4 GET", "4 400, 0", "4 GET",
                    "4 L'oreille d'Hermès se tait : le serveur refuse la demande.", "4 GET", "4 400, 0",
                    "4 GET", "4 500, 2", "6 arretee"}));
}

TEST(OreilleNtfy, SArreteDansUneAttente) {
  MondeFlux monde(std::vector<Ouverture>{{500}, {200}});
  monde.pendantLaPause = [&] { monde.interrompre(); };
  EXPECT_EQ(vivre(monde), (Lignes{"0 GET", "0 500, 2", "0 arretee"}));
}

}  // namespace
}  // namespace tarnavelle
