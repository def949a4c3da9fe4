#include "TerminauxTmux/Lanceur.hpp"

#include <gtest/gtest.h>

#include <string>

namespace tarnavelle::Plateau {
namespace {

TEST(Lanceur, UnFichierPorteTousLesMots) {
  const Lancement lancement{.cle = {},
                            .session = {},
                            .mots = {"/bin/l'été", "", "--", "a\nb", "\xff\x1b[0m", "$(x) `y` #{z};"},
                            .environnement = {{"VIDE", ""}, {"JETON", "a=b\nc"}},
                            .dossier = "/tmp/l'été",
                            .taille = {}};
  const auto octets = Lanceur::ecrire(lancement);
  ASSERT_TRUE(octets);
  const auto lu = Lanceur::lire(*octets);
  ASSERT_TRUE(lu);
  EXPECT_EQ(lu->mots, lancement.mots);
  EXPECT_EQ(lu->environnement, lancement.environnement);
  EXPECT_EQ(lu->dossier, lancement.dossier);
  // No part of it passes for a whole, but one that lacks whole variables at its end.
  const auto avantVariables = octets->find("JETON=");
  for (std::size_t n = 0; n < avantVariables; ++n) EXPECT_FALSE(Lanceur::lire(octets->substr(0, n))) << n;
}

TEST(Lanceur, RefuseCeQuUnProgrammeNePeutRecevoir) {
  Lancement bon;
  bon.mots = {"cat"};
  const auto avec = [&](auto changer) {
    Lancement l = bon;
    changer(l);
    return Lanceur::ecrire(l);
  };
  using namespace std::string_literals;
  EXPECT_TRUE(Lanceur::ecrire(bon));
  EXPECT_FALSE(avec([](Lancement& l) { l.mots.clear(); }));
  EXPECT_FALSE(avec([](Lancement& l) { l.mots = {""}; }));
  EXPECT_FALSE(avec([](Lancement& l) { l.mots.push_back("a\0b"s); }));
  EXPECT_FALSE(avec([](Lancement& l) { l.environnement["A\0B"s] = ""; }));
  EXPECT_FALSE(avec([](Lancement& l) { l.environnement[""] = "x"; }));
  EXPECT_FALSE(avec([](Lancement& l) { l.environnement["A=B"] = "x"; }));
  EXPECT_FALSE(avec([](Lancement& l) { l.mots.push_back(std::string(Lanceur::tailleMax, 'x')); }));
}

TEST(Lanceur, LHeritageEstSansMarqueDAutrui) {
  const Environnement gardees = {
      {"PATH", "/bin"}, {"CODEX_HOME", "/h"}, {"CLAUDE_CONFIG_DIR", "/c"}, {"TMUXINATOR", "x"}};
  Environnement toutes = gardees;
  for (const char* marque : {"TMUX", "TMUX_PANE", "CLAUDECODE", "CLAUDE_CODE_ENTRYPOINT", "CODEX_SANDBOX",
                             "TARNAVELLE_CONTROL_TOKEN", "GEMINI_CLI"})
    toutes[marque] = "1";
  EXPECT_EQ(Lanceur::heritage(toutes), gardees);
}

}  // namespace
}  // namespace tarnavelle::Plateau
