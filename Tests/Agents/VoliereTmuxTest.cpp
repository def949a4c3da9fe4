#include "Agents/VoliereTmux.hpp"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdlib>
#include <iostream>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "Agents/Interprete.hpp"
#include "Agents/Montrer.hpp"
#include "DossierTemporaire.hpp"

namespace tarnavelle {
namespace {

using VoliereTmux::SessionLaBas;

TEST(VoliereTmux, VraiNomEtCommandeTuer) {
  for (const char* vrai :
       {"tarnavelle-claude", "tarnavelle-", "tarnavelle-x-02", "tarnavelle-é😀", "tarnavelle-a'b\"$c"})
    EXPECT_TRUE(VoliereTmux::vraiNom(vrai)) << vrai;
  for (const char* autre :
       {"", "claude", "work", "tarnavelle", "Tarnavelle-claude", " tarnavelle-claude", "tarnavelle-a b",
        "tarnavelle-x:y", "tarnavelle-x/y", "tarnavelle-a\t", "tarnavelle-a\nb", "tarnavelle-a\r",
        "tarnavelle-a\u00A0b", "tarnavelle-\u2028", "tarnavelle-\u0085", "T:tarnavelle-a"}) {
    EXPECT_FALSE(VoliereTmux::vraiNom(autre)) << autre;
    EXPECT_EQ(VoliereTmux::commandeTuer(autre), std::nullopt) << autre;
  }
  EXPECT_EQ(VoliereTmux::commandeTuer("tarnavelle-claude"),
            "tmux kill-session -t 'tarnavelle-claude' 2>&1 || :");
  EXPECT_EQ(VoliereTmux::commandeTuer("tarnavelle-a'b"),
            R"(tmux kill-session -t 'tarnavelle-a'\''b' 2>&1 || :)");
}

TEST(VoliereTmux, NommeEtDecompose) {
  constexpr auto dernier = std::numeric_limits<std::int64_t>::max();
  const struct {
    std::string nom;
    VoliereTmux::Nom decompose;
    std::string titre;
    std::string nomCLI;
  } cas[] = {
      {"tarnavelle-claude", {"claude", 1}, "Claude Code", "Claude Code"},
      {"tarnavelle-claude-2", {"claude", 2}, "Claude Code · 2", "Claude Code"},
      {"tarnavelle-hermes-10", {"hermes", 10}, "Hermes Agent · 10", "Hermes Agent"},
      {"tarnavelle-codex-" + std::to_string(dernier),
       {"codex", dernier},
       "Codex · 9223372036854775807",
       "Codex"},
  };
  for (const auto& c : cas) {
    EXPECT_EQ(VoliereTmux::nommer(c.decompose), c.nom);
    EXPECT_EQ(VoliereTmux::decomposer(c.nom), c.decompose) << c.nom;
    EXPECT_EQ(VoliereTmux::titre(c.nom), c.titre);
    EXPECT_EQ(VoliereTmux::nomCLI(c.nom), c.nomCLI);
    EXPECT_TRUE(VoliereTmux::vraiNom(c.nom)) << c.nom;
  }
  for (const std::string autre :
       {"", "claude", "tarnavelle-", "tarnavelle-vim", "tarnavelle-vim-2", "tarnavelle-Claude",
        "tarnavelle-claude-", "tarnavelle-claude-0", "tarnavelle-claude-1", "tarnavelle-claude-02",
        "tarnavelle-claude-+2", "tarnavelle-claude--2", "tarnavelle-claude-2 ", "tarnavelle-claude-2x",
        "tarnavelle-claude-2-2", "tarnavelle-claude-٢", "tarnavelle-claude-9223372036854775808",
        "tarnavelle--2", "x-tarnavelle-claude"}) {
    EXPECT_EQ(VoliereTmux::decomposer(autre), std::nullopt) << autre;
    EXPECT_EQ(VoliereTmux::titre(autre), autre);
    EXPECT_EQ(VoliereTmux::nomCLI(autre), "") << autre;
  }
}

TEST(VoliereTmux, LitUneListe) {
  const struct {
    std::string sortie;
    std::vector<SessionLaBas> sessions;
  } cas[] = {
      {"", {}},
      {"\n\n", {}},
      {"no server running on /tmp/tmux-1000/default\nsh: 1: tmux: not found\n", {}},
      {"tarnavelle-codex:/srv/app\nwork:/home\ntarnavelle-claude:/home/u\nT:tarnavelle-claude:Refonte du "
       "parseur",
       {{"tarnavelle-claude", "/home/u", "Refonte du parseur"}, {"tarnavelle-codex", "/srv/app", ""}}},
      {"T: tarnavelle-grok\t: a : b \nT:tarnavelle-grok:\u00A0le "
       "dernier\u00A0\r\nT:x\nT::y\n\u3000tarnavelle-grok :  /a:b c \r\n",
       {{"tarnavelle-grok", "/a:b c", "le dernier"}}},
      {"tarnavelle-claude", {{"tarnavelle-claude", "", ""}}},
      {"tarnavelle-claude\r\ntarnavelle-codex:\n",
       {{"tarnavelle-claude", "", ""}, {"tarnavelle-codex", "", ""}}},
      {"tarnavelle-claude\t/p\ntarnavelle-b\t/a:b\ntarnavelle-c:/a\tb",
       {{"tarnavelle-c", "/a\tb", ""}, {"tarnavelle-claude", "/p", ""}}},
      {"tarnavelle-x/y:/p\ntarnavelle-a b:/p\nclaude:/p\n:/p\n\t/p\nT:/p", {}},
      // Sorted by bytes; equal names stay in the order of the listing, each with the same title.
      {"tarnavelle-é:/3\ntarnavelle-z:/1\ntarnavelle-Z:/0\ntarnavelle-z:/2\nT:tarnavelle-z:t\nT:tarnavelle-Z:",
       {{"tarnavelle-Z", "/0", ""},
        {"tarnavelle-z", "/1", "t"},
        {"tarnavelle-z", "/2", "t"},
        {"tarnavelle-é", "/3", ""}}},
  };
  for (const auto& c : cas) EXPECT_EQ(VoliereTmux::lire(c.sortie), c.sessions) << c.sortie;
}

TEST(VoliereTmux, SessionAffichee) {
  EXPECT_EQ((SessionLaBas{"tarnavelle-claude-2", "", "Refonte"}).titreAffiche(), "Refonte");
  EXPECT_EQ((SessionLaBas{"tarnavelle-claude-2", "", ""}).titreAffiche(), "Claude Code · 2");
  EXPECT_EQ((SessionLaBas{"tarnavelle-x", "", ""}).titreAffiche(), "tarnavelle-x");
  EXPECT_EQ((SessionLaBas{"tarnavelle-x", "", ""}).id(), "tarnavelle-x");
  const std::map<std::string, std::string> courts = {
      {"", ""},         {"/", "/"},  {"//", "/"},    {"/home/u/proj/", "proj"}, {"/a/b//", "b"}, {"/a//b", "b"},
      {"proj", "proj"}, {"a/", "a"}, {"/a b/é", "é"}};
  for (const auto& [dossier, court] : courts)
    EXPECT_EQ((SessionLaBas{"n", dossier, ""}).dossierCourt(), court) << dossier;
}

using UrgenceVoliere::Cran;

TEST(UrgenceVoliere, Crans) {
  for (std::size_t n = 0; n < UrgenceVoliere::crans.size(); ++n) {
    const auto cran = UrgenceVoliere::cran(static_cast<std::int64_t>(n));
    EXPECT_EQ(cran, UrgenceVoliere::crans[n]);
    EXPECT_EQ(static_cast<std::size_t>(*cran), n);
  }
  for (const std::int64_t autre : {std::int64_t{-1}, std::int64_t{6}, std::numeric_limits<std::int64_t>::min(),
                                   std::numeric_limits<std::int64_t>::max()})
    EXPECT_EQ(UrgenceVoliere::cran(autre), std::nullopt) << autre;
  EXPECT_TRUE(UrgenceVoliere::quelquUnAttend({Cran::laBas, Cran::besoinDeVous}));
  EXPECT_FALSE(UrgenceVoliere::quelquUnAttend({Cran::travaille, Cran::laBas}));
  EXPECT_FALSE(UrgenceVoliere::quelquUnAttend({}));
}

struct Agent {
  std::string nom;
  Cran cran = Cran::repos;
  int position = 0;
};

std::string ordonnes(const std::vector<Agent>& agents) {
  std::string texte;
  for (const Agent& a : UrgenceVoliere::ordonner(
           agents, [](const Agent& x) { return x.cran; }, [](const Agent& x) { return x.nom; }))
    texte += a.nom + std::to_string(a.position) + ' ';
  return texte;
}

/// Says the order on the standard error, in a process of its own: the locale is its environment's.
void dire(const std::vector<Agent>& agents, const std::map<const char*, std::string>& variables) {
  for (const auto& [nom, valeur] : variables) ::setenv(nom, valeur.c_str(), 1);
  std::cerr << ordonnes(agents);
  std::_Exit(0);
}

TEST(UrgenceVoliere, OrdonneAussiSansLaLocaleDeLUtilisateur) {
  const std::vector<Agent> agents = {{"b", Cran::laBas, 1},        {"a", Cran::travaille, 2},
                                     {"z", Cran::besoinDeVous, 3}, {"é", Cran::repos, 4},
                                     {"b", Cran::repos, 5},        {"Z", Cran::repos, 6},
                                     {"b", Cran::repos, 7},        {"a", Cran::connexion, 8},
                                     {"a", Cran::rompue, 9},       {"", Cran::laBas, 0}};
  for (const char* locale : {"C", "xx_XX.UTF-8", "\xFF/;"})
    EXPECT_EXIT(dire(agents, {{"LC_ALL", locale}}), testing::ExitedWithCode(0),
                "^z3 a2 a8 Z6 b5 b7 é4 a9 0 b1 $")
        << locale;
  EXPECT_EQ(ordonnes({}), "");
}

TEST(UrgenceVoliere, OrdonneSelonLaLocaleDeLUtilisateur) {
  const DossierTemporaire locales;
  const auto francais = (locales.chemin() / "fr_FR.UTF-8").string();
  const auto fait =
      essai::executer({"localedef", "-i", "fr_FR", "-f", "UTF-8", francais}, {{"PATH", ::getenv("PATH")}});
  if (fait.statut != 0) GTEST_SKIP() << "pas de locale à compiler ici : " << fait;
  const std::vector<Agent> agents = {{"Zoé"}, {"émile"}, {"Eric"}, {"éric"}, {"zoé"}, {"abel", Cran::laBas},
                                     {"Éva"}};
  EXPECT_EXIT(dire(agents, {{"LOCPATH", locales.chemin().string()}, {"LC_ALL", "fr_FR.UTF-8"}}),
              testing::ExitedWithCode(0), "^émile0 Eric0 éric0 Éva0 zoé0 Zoé0 abel0 $");
}

}  // namespace
}  // namespace tarnavelle
