#include "Etats/Regles.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "DossierTemporaire.hpp"
#include "EcranEnregistre.hpp"

namespace tarnavelle::Plateau {
namespace {

const Regles& regles(std::string_view programme) {
  static const CatalogueRegles catalogue("");
  return catalogue.de(programme);
}

/// "etat [regle] boite « text » …", as in lectures.txt.
std::string dire(const LectureEcran& lecture) {
  std::string dit(nom(lecture.etat));
  if (!lecture.regle.empty()) dit += " [" + lecture.regle + "]";
  if (lecture.boite) dit += " boite";
  std::string texte = lecture.texteBoite;
  std::ranges::replace(texte, '\n', '/');
  if (lecture.brouillon()) dit += " « " + texte + " »";
  if (lecture.collages > 0) dit += " collages=" + std::to_string(lecture.collages);
  if (lecture.enFile) dit += " file";
  if (lecture.interrompu) dit += " interrompu";
  return dit;
}

TEST(Regles, ChaqueEcranEnregistreSeLit) {
  std::map<std::string, std::string> attendus;
  std::ifstream table(std::string(ECRANS) + "/lectures.txt");
  for (std::string ligne; std::getline(table, ligne);)
    if (const auto deux = ligne.find(": "); deux != ligne.npos)
      attendus[ligne.substr(0, deux)] = ligne.substr(deux + 2);
  std::map<std::string, std::string> lus;
  for (const auto& entree : std::filesystem::recursive_directory_iterator(ECRANS)) {
    const auto programme = entree.path().parent_path().filename().string();
    if (!entree.is_regular_file() || entree.path().filename() == "lectures.txt") continue;
    const std::string cas = programme + "/" + entree.path().stem().string();
    lus[cas] = dire(regles(programme).lire(ecranEnregistre(cas)));
  }
  for (const auto& [cas, lu] : lus) EXPECT_EQ(lu, attendus[cas]) << cas;
  EXPECT_EQ(lus.size(), attendus.size());
}

TEST(Regles, CeQuiBougePourRienNEstPasUnMouvement) {
  const Regles codex = regles("codex");
  const auto empreinte = [&](const char* logo, const char* pied) {
    return codex.empreinte({logo, "", "› Ask Codex to do anything", "", pied});
  };
  EXPECT_EQ(empreinte("   ⣀⣤⣤⣤ ⣀", "a"), empreinte("  ⢸⣿⣿⡿⠛", "a"));
  EXPECT_NE(empreinte("   ⣀⣤⣤⣤⣀", "a"), empreinte("   ⣀⣤⣤⣤⣀", "b"));
}

struct Reste {
  std::string ecran;
  std::string consigne;
  std::string attendu;
};

TEST(Regles, CeQuiSuitUneConsigneSansSonCadre) {
  const Reste cas[] = {
      {"claude/repos-outil", "", "  Ran 1 shell command\n● FIN. {"},
      {"claude/interrompu", "Bonjour, une question", "● FIN.\n❯ une autre question\n● FIN.\n"},
      {"codex/file", "Bonjour, une question", "• Messages to be submitted"},
      {"gemini/repos-outil", "crée encore", "╭"},
      {"opencode/interrompu", "", ""},
      {"opencode/menu", "quel mot ?", "     FIN. Recu 10 caracteres, 1 lignes : 'quel mot ?'.\n"},
  };
  for (const auto& [ecran, consigne, attendu] : cas) {
    std::string tout;
    const auto& lignes = ecranEnregistre(ecran).lignes;
    for (const auto& ligne : regles(ecran.substr(0, ecran.find('/'))).depuisConsigne(lignes, consigne))
      if (!ligne.empty()) tout += ligne + "\n";
    EXPECT_TRUE(tout.starts_with(attendu)) << ecran << " :\n" << tout;
  }
  // A long instruction is folded by the program, wherever it likes; the last one that begins so counts.
  const std::vector<std::string> lignes = {"› fais un", "• vieux", "",      "› fais", "  ceci",          "",
                                           "• un",      "",        "",      "• deux", "  Worked for 2s", "",
                                           "› suite",   "",        "  pied"};
  EXPECT_EQ(regles("codex").depuisConsigne(lignes, "fais ceci"),
            (std::vector<std::string>{"• un", "", "• deux"}));
}

TEST(Regles, UnFichierFauxEstDitAvecSaLigne) {
  const std::pair<std::string, std::string> cas[] = {
      {"\n# note\nbesion a bas:1 x", "ligne 3 : mot inconnu, « besion »"},
      {"besoin", "ligne 1 : il manque le nom de la règle"},
      {"besoin a bas:x y", "ligne 1 : nombre de lignes illisible, « bas:x »"},
      {"besoin a haut:2 y", "ligne 1 : lieu inconnu, « haut:2 » : ni bas, ni dessus, ni dessous, ni boite"},
      {"besoin a bas:2", "ligne 1 : il manque une expression"},
      {"besoin a bas:2 (", "ligne 1 : expression illisible, « ( » : missing ): ("},
      {"boite.debut ^x", "ligne 1 : l'expression doit capturer le texte, entre parenthèses"},
      {"boite.pied -1", "ligne 1 : nombre illisible, « -1 »"},
      {"garde", "ligne 1 : il manque un texte"},
      {"cadre \xff", "ligne 1 : ce n'est pas de l'UTF-8"},
      {std::string(70000, '#'), "plus de 64 Kio"},
  };
  for (const auto& [texte, plainte] : cas) {
    const auto lu = Regles::lire(texte);
    EXPECT_EQ(lu ? "" : lu.raison(), plainte);
  }
}

TEST(Regles, LOperateurRemplaceUnFichierEtUnFauxNeChangeRien) {
  const DossierTemporaire dossier;
  dossier.ecrire("codex.regles", "besoin tout bas:1 .\n");
  dossier.ecrire("claude.regles", "repos b boite .*\nfaux\n");
  std::filesystem::create_directory(dossier.chemin() / "gemini.regles");
  const CatalogueRegles catalogue(dossier.chemin().string());
  EXPECT_EQ(dire(catalogue.de("codex").lire(ecranEnregistre("codex/repos"))), "besoin [tout]");
  EXPECT_EQ(dire(catalogue.de("claude").lire(ecranEnregistre("claude/repos"))), "repos [boite] boite");
  EXPECT_EQ(dire(catalogue.de("bash").lire(ecranEnregistre("claude/repos"))), "inconnu");
  ASSERT_EQ(catalogue.plaintes().size(), 2U);
  EXPECT_EQ(catalogue.plaintes()[0],
            "Règles d'écran refusées : " + (dossier.chemin() / "claude.regles").string() +
                ", ligne 2 : mot inconnu, « faux ». Les règles d'origine restent en vigueur.");
  EXPECT_EQ(catalogue.plaintes()[1],
            "Règles d'écran illisibles : " + (dossier.chemin() / "gemini.regles").string() +
                ". Les règles d'origine restent en vigueur.");
}

TEST(Regles, LaVersionSeLitAuLancement) {
  const std::pair<std::string, std::string> cas[] = {{"claude", " xx   Claude Code v2.1.330"},
                                                     {"codex", "  >_ OpenAI Codex (v0.169.0)"},
                                                     {"gemini", " xx     Gemini CLI v0.61.0"},
                                                     {"opencode", "  ~/projet:master        1.18.33"}};
  for (const auto& [programme, ligne] : cas) {
    const auto version = regles(programme).version({"rien", ligne});
    EXPECT_TRUE(version && ligne.find(*version) != ligne.npos && version->size() > 4) << programme;
  }
}

TEST(Regles, UnBlancSuitCeQuOteraitEntree) {
  const std::pair<std::string, std::string> cas[] = {{"/clear", "claude codex gemini "},
                                                     {"lis @a", "claude codex gemini opencode "},
                                                     {"C:\\", "claude gemini "},
                                                     {"5 $", "codex "},
                                                     {"a/b", ""},
                                                     {"@a fin", ""}};
  for (const auto& [texte, attendus] : cas) {
    std::string suivis;
    for (const char* programme : {"claude", "codex", "gemini", "opencode"})
      if (regles(programme).signes().aPoser(texte) != texte) suivis += programme + std::string(" ");
    EXPECT_EQ(suivis, attendus) << texte;
  }
}

TEST(Regles, LeTitreNeProuveQueLeTravail) {
  EXPECT_EQ(regles("gemini").titreTravaille("✦  Working… (projet)"), "✦  Working… (projet)");
  for (const char* programme : {"gemini", "claude", "codex"})
    EXPECT_EQ(regles(programme).titreTravaille("◇  Ready (projet)"), std::nullopt) << programme;
}

}  // namespace
}  // namespace tarnavelle::Plateau
