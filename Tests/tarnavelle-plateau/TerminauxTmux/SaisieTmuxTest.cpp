// What is typed into a real terminal, as the program there receives it.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Socle/Fichiers.hpp"
#include "Terrain.hpp"

namespace tarnavelle::Plateau {
namespace {

class SaisieTmux : public essai::Terrain {
 protected:
  /// A program in raw mode that keeps the first bytes it receives.
  IdTerminal receveur(const std::string& nom, std::size_t octets) {
    const auto id = ouvrir(nom, "stty raw -echo; printf '\\033[?2004hPRET'; head -c " + std::to_string(octets) +
                                    " > " + nom + "; printf RECU; exec cat");
    EXPECT_TRUE(attendreTexte(id, "PRET"));
    return id;
  }
  std::string recu(const IdTerminal& id, const std::string& nom) {
    EXPECT_TRUE(attendreTexte(id, "RECU")) << lireFichier(dossier.chemin() / nom, 1'000'000).value_or("");
    return lireFichier(dossier.chemin() / nom, 10'000'000).value_or("");
  }
};

const std::string debut = "\x1b[200~";
const std::string fin = "\x1b[201~";

TEST_F(SaisieTmux, UnCollageArriveEntierEtEncadre) {
  using namespace std::string_literals;
  std::string tous;
  for (int c = 1; c < 128; ++c) tous += static_cast<char>(c);
  std::string long_;
  while (long_.size() < 200'000)
    long_ += "ligne " + std::to_string(long_.size()) + " « été » ; # $HOME `id` \\ %end 1\n";
  long_ += "fin";
  const std::pair<std::string, std::string> cas[] = {
      {"l'été\n\tdeux", "l'été\n\tdeux"},
      {";", ";"},
      {"a;\n\n", "a;"},
      {"-x \"\\\" #{pid} #(id) $HOME ~ {} %1", "-x \"\\\" #{pid} #(id) $HOME ~ {} %1"},
      {"a\x1b[201~b\xc2\x9b"
       "201~c\x1b[31m\0d\x7f"s,
       "a[201~b201~c[31md"},
      {"a\r\nb\rc", "a\nb\nc"},
      {"漢👩\u200d👧\xff.", "漢👩\u200d👧\uFFFD."},
      {tous, "\t\n\n" + tous.substr(31, 95)},
      {long_, long_},
  };
  std::size_t rang = 0;
  for (const auto& [texte, attendu] : cas) {
    const auto nom = "recu" + std::to_string(++rang);
    const auto id = receveur(nom, debut.size() + attendu.size() + fin.size());
    ASSERT_TRUE(terrain->coller(id, texte));
    EXPECT_EQ(recu(id, nom), debut + attendu + fin) << rang;
  }
  for (const auto& vide : {""s, "\n\n"s, "\x1b\x07"s, std::string(9'000'000, 'x')})
    EXPECT_EQ(terrain->coller({"%1"}, vide).raison(), Panne::refuse);
  EXPECT_NE(tmux("show-messages | grep -E 'ligne 0|buffer'"), 0);
  EXPECT_NE(tmux("list-buffers | grep ."), 0);
}

TEST_F(SaisieTmux, LesTouchesToutesOuAucune) {
  const std::string attendues =
      "\x1b\r\t\x1b[A\x1b[B\x1b[D\x1b[C \x03\x04\x1a\x15\x12"
      "1;yé-\\\"#{";
  const auto id = receveur("touches", attendues.size());
  EXPECT_EQ(terrain->presser(id, {"1", "inconnue"}).raison(), Panne::refuse);
  for (const char* touche : {"", "ab", "ctrl+x", "Enter", "C-c", "\x1b", "\n", "\xff", "esc "})
    EXPECT_EQ(terrain->presser(id, {"1", touche}).raison(), Panne::refuse) << touche;
  EXPECT_EQ(terrain->presser(id, {}).raison(), Panne::refuse);
  EXPECT_EQ(terrain->presser(id, std::vector<Touche>(1000, "1")).raison(), Panne::refuse);
  ASSERT_TRUE(terrain->presser(
      id, {"esc",    "entree", "tab", "haut", "bas", "gauche", "droite", "espace", "ctrl+c", "ctrl+d", "ctrl+z",
           "ctrl+u", "ctrl+r", "1",   ";",    "y",   "é",      "-",      "\\",     "\"",     "#",      "{"}));
  EXPECT_EQ(recu(id, "touches"), attendues);
}

TEST_F(SaisieTmux, LeModeCopieNAvaleRien) {
  const auto id = receveur("copie", debut.size() + 1 + fin.size() + 2);
  for (const int acte : {0, 1, 2}) {
    ASSERT_EQ(tmux("copy-mode -t '" + id.valeur + "'"), 0);
    ASSERT_TRUE(terrain->ecran(id)->modeCopie);
    const auto fait = acte == 0   ? terrain->coller(id, "a")
                      : acte == 1 ? terrain->presser(id, {"b"})
                                  : terrain->valider(id, {"absent"});
    ASSERT_TRUE(fait) << acte;
  }
  EXPECT_EQ(recu(id, "copie"), debut + "a" + fin + "b\r");
}

TEST_F(SaisieTmux, ValiderRegardeAuMomentMeme) {
  const std::vector<std::string> vus = {"Do you want to proceed?", "#{pane_id}, a}b#,{c}",
                                        "[x]*?\\ \"q\" $HOME ;", "❯ 1. Oui ?"};
  dossier.ecrire("dialogue", vus[0] + "\n" + vus[1] + "\n  " + vus[2] + " suite\n" + vus[3] + "\n");
  const auto id = ouvrir(
      "dialogue",
      "stty raw -echo opost onlcr; cat dialogue; printf PRET; head -c 2 > valide; printf RECU; exec cat");
  ASSERT_TRUE(attendreTexte(id, "PRET"));
  for (const auto& vu : vus) {
    EXPECT_EQ(terrain->valider(id, {vu}).raison(), Panne::condition) << vu;
    EXPECT_EQ(terrain->valider(id, {"absent", "", vu, "autre"}).raison(), Panne::condition) << vu;
  }
  EXPECT_EQ(terrain->valider(id, std::vector<std::string>(Terminaux::saufSiMax + 1, "x")).raison(),
            Panne::refuse);
  // Near misses: these are texts, not patterns.
  EXPECT_TRUE(terrain->valider(id, {"D* proceed", "%0", "[xy]", "Oui .", "c}}", std::string(200, '#')}));
  EXPECT_TRUE(terrain->valider(id, {}));
  EXPECT_EQ(recu(id, "valide"), "\r\r");
}

}  // namespace
}  // namespace tarnavelle::Plateau
