#include "Agents/VoliereTmux.hpp"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "Agents/Interprete.hpp"
#include "DossierTemporaire.hpp"

namespace tarnavelle {
namespace {

using VoliereTmux::SessionLaBas;

TEST(VoliereTmux, VraiNomEtCommandeTuer) {
  for (const char* autre : {"", "tarnavelle", "Tarnavelle-claude", "T:tarnavelle-a", "tarnavelle-a b",
                            "tarnavelle-x:y", "tarnavelle-x/y", "tarnavelle-a\n", "tarnavelle-\u2028"}) {
    EXPECT_FALSE(VoliereTmux::vraiNom(autre)) << autre;
    EXPECT_EQ(VoliereTmux::commandeTuer(autre), std::nullopt) << autre;
  }
  EXPECT_TRUE(VoliereTmux::vraiNom("tarnavelle-"));
  EXPECT_EQ(VoliereTmux::commandeTuer("tarnavelle-é😀'b\"$c"),
            R"(tmux kill-session -t 'tarnavelle-é😀'\''b"$c' 2>&1 || :)");
}

TEST(VoliereTmux, NommeEtDecompose) {
  const std::tuple<std::string, VoliereTmux::Nom, std::string> cas[] = {
      {"tarnavelle-claude", {"claude", 1}, "Claude Code"},
      {"tarnavelle-codex-9223372036854775807", {"codex", INT64_MAX}, "Codex · 9223372036854775807"},
  };
  for (const auto& [nom, decompose, titre] : cas) {
    EXPECT_EQ(VoliereTmux::nommer(decompose), nom);
    EXPECT_EQ(VoliereTmux::decomposer(nom), decompose) << nom;
    EXPECT_EQ(VoliereTmux::titre(nom), titre);
    EXPECT_EQ(VoliereTmux::nomCLI(nom), AgentCLI::parId(decompose.id)->titre) << nom;
  }
  for (const std::string autre :
       {"tarnavelle-", "tarnavelle-vim-2", "tarnavelle-claude-", "tarnavelle-claude-1", "tarnavelle-claude-02",
        "tarnavelle-claude-+2", "tarnavelle-claude--2", "tarnavelle-claude-2x",
        "tarnavelle-claude-9223372036854775808", "x-tarnavelle-claude"}) {
    EXPECT_EQ(VoliereTmux::decomposer(autre), std::nullopt) << autre;
    EXPECT_EQ(VoliereTmux::titre(autre), autre);
    EXPECT_EQ(VoliereTmux::nomCLI(autre), "") << autre;
  }
}

TEST(VoliereTmux, LitUneListe) {
  const std::pair<std::string, std::vector<SessionLaBas>> cas[] = {
      {"tarnavelle-codex:/srv/app\nwork:/home\ntarnavelle-claude:/home/u\nT:tarnavelle-claude:Refonte du "
       "parseur",
       {{"tarnavelle-claude", "/home/u", "Refonte du parseur"}, {"tarnavelle-codex", "/srv/app", ""}}},
      {"T: tarnavelle-grok\t: a : b \nT:tarnavelle-grok:\u00A0le "
       "dernier\u00A0\r\nT:x\nT::y\n\u3000tarnavelle-grok :  /a:b c \r\n",
       {{"tarnavelle-grok", "/a:b c", "le dernier"}}},
      {"tarnavelle-claude\r\n", {{"tarnavelle-claude", "", ""}}},
      {"tarnavelle-claude\t/p\ntarnavelle-b\t/a:b\ntarnavelle-c:/a\tb",
       {{"tarnavelle-c", "/a\tb", ""}, {"tarnavelle-claude", "/p", ""}}},
      {"\uFEFFtarnavelle-b:/\xE9t\xE9\nT:tarnavelle-b:caf\xC3",
       {{"tarnavelle-b", "/\uFFFDt\uFFFD", "caf\uFFFD"}}},
      {"tarnavelle-x/y:/p\ntarnavelle-a b:/p\nclaude:/p\n:/p\n\t/p\nT:/p", {}},
      // Sorted by bytes; equal names stay in the order of the listing, each with the same title.
      {"tarnavelle-é:/3\ntarnavelle-z:/1\ntarnavelle-Z:/0\ntarnavelle-z:/2\nT:tarnavelle-z:t\nT:tarnavelle-Z:",
       {{"tarnavelle-Z", "/0", ""},
        {"tarnavelle-z", "/1", "t"},
        {"tarnavelle-z", "/2", "t"},
        {"tarnavelle-é", "/3", ""}}},
  };
  for (const auto& [sortie, sessions] : cas) EXPECT_EQ(VoliereTmux::lire(sortie), sessions) << sortie;
}

TEST(VoliereTmux, SessionAffichee) {
  EXPECT_EQ((SessionLaBas{"tarnavelle-claude-2", "", "Refonte"}).titreAffiche(), "Refonte");
  EXPECT_EQ((SessionLaBas{"tarnavelle-claude-2", "", ""}).titreAffiche(), "Claude Code · 2");
  const std::map<std::string, std::string> courts = {
      {"", ""}, {"/", "/"}, {"//", "/"}, {"/home/u/proj/", "proj"}, {"/a/é b//", "é b"}, {"a", "a"}};
  for (const auto& [dossier, court] : courts)
    EXPECT_EQ((SessionLaBas{"n", dossier, ""}).dossierCourt(), court) << dossier;
}

using UrgenceVoliere::Cran;

TEST(UrgenceVoliere, Crans) {
  EXPECT_EQ(UrgenceVoliere::cran(5), Cran::laBas);
  for (const std::int64_t autre : {-1, 6}) EXPECT_EQ(UrgenceVoliere::cran(autre), std::nullopt) << autre;
  EXPECT_TRUE(UrgenceVoliere::quelquUnAttend({Cran::laBas, Cran::besoinDeVous}));
  EXPECT_FALSE(UrgenceVoliere::quelquUnAttend({Cran::travaille, Cran::laBas}));
}

using Agent = std::pair<std::string, Cran>;

/// Says the order on the standard error, in a process of its own: the locale is its environment's.
void dire(const std::vector<Agent>& agents, const std::map<const char*, std::string>& variables) {
  for (const auto& [nom, valeur] : variables) ::setenv(nom, valeur.c_str(), 1);
  for (const auto& [nom, cran] : UrgenceVoliere::ordonner(
           agents, [](const Agent& a) { return a.second; },
           [](const Agent& a) { return a.first.substr(0, a.first.find('.')); }))
    std::cerr << nom << ' ';
  std::_Exit(0);
}

TEST(UrgenceVoliere, OrdonneParUrgencePuisParNom) {
  const std::vector<Agent> agents = {{"b", Cran::laBas},   {"z", Cran::besoinDeVous}, {"é", Cran::repos},
                                     {"b.2", Cran::repos}, {"Z", Cran::repos},        {"b.1", Cran::repos}};
  EXPECT_EXIT(dire(agents, {{"LC_ALL", "C"}}), testing::ExitedWithCode(0), "^z b.2 b.1 é Z b $");
}

/// In no order.
std::vector<Agent> auRepos() {
  std::vector<Agent> agents;
  for (const char* nom :
       {"zoé", "érié", "officine", "Zoé", "âne", "œuf", "erie", "Eric", "ail", "Ail", "côte", "coté"})
    agents.emplace_back(nom, Cran::repos);
  return agents;
}
constexpr const char* francais = "^ail Ail âne coté côte Eric erie érié œuf officine zoé Zoé $";

// Without a locale to heed, names are not sorted by bytes.
TEST(UrgenceVoliere, OrdonneLesNomsEnFrancais) {
  for (const char* locale : {"", "C", "C.UTF-8", "xx_XX.UTF-8", "\xFF/;"})
    EXPECT_EXIT(dire(auRepos(), {{"LC_ALL", ""}, {"LC_COLLATE", locale}, {"LANG", ""}}),
                testing::ExitedWithCode(0), francais)
        << locale;
}

// The user's own locale decides where it can.
TEST(UrgenceVoliere, OrdonneLesNomsCommeLUtilisateur) {
  const DossierTemporaire locales;
  const auto installer = [&](const char* langue, const char* encodage, const char* nom) {
    const auto fait = essai::executer({"localedef", "-i", langue, "-f", encodage, locales.chemin() / nom},
                                      {{"PATH", ::getenv("PATH")}});
    return fait.statut == 0;
  };
  if (!installer("fr_FR", "ISO-8859-1", "fr_FR") || !installer("sv_SE", "UTF-8", "sv_SE.UTF-8"))
    GTEST_SKIP() << "pas de locale à compiler ici";
  const std::pair<const char*, const char*> installees[] = {
      {"fr_FR", francais},  // of another encoding: the order of our own
      {"sv_SE.UTF-8", "^ail Ail âne coté côte Eric erie érié officine zoé Zoé œuf $"},
  };
  for (const auto& [locale, ordre] : installees)
    EXPECT_EXIT(dire(auRepos(), {{"LOCPATH", locales.chemin().string()},
                                 {"LC_ALL", ""},
                                 {"LC_COLLATE", locale},
                                 {"LC_TIME", "xx_XX.UTF-8"}}),
                testing::ExitedWithCode(0), ordre)
        << locale;
}

}  // namespace
}  // namespace tarnavelle
