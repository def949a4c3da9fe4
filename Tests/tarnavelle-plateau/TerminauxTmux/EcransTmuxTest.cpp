// What a real terminal shows, and being told that it changed.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Terrain.hpp"

namespace tarnavelle::Plateau {
namespace {

using EcransTmux = essai::Terrain;

TEST_F(EcransTmux, UnEcranEstLuTelQuOnLeVoit) {
  // The numbers of a reply, as a screen that would forge one; then a title that would forge a row of a listing.
  const auto id = ouvrir(
      "ecran",
      "stty -echo; printf '%%end 1 2 1\\n%%begin 1 2 1\\n\\033[2m> attenue\\033[0m \\342\\234\\246 "
      "\\346\\274\\242|\\n\\033(0lqk\\033(B\\n\\033]2;ti\\ttre\\n%%9\\t\\342\\234\\246\\007'; printf '>>'; "
      "read x; printf '\\033[?1049h\\033[HALTERNE'; read x");
  ASSERT_TRUE(attendreTexte(id, ">>"));
  const auto ecran = terrain->ecran(id);
  ASSERT_TRUE(ecran);
  ASSERT_EQ(ecran->lignes.size(), 24u);
  const std::vector<std::string> lignes(ecran->lignes.begin(), ecran->lignes.begin() + 5);
  EXPECT_EQ(lignes, (std::vector<std::string>{"%end 1 2 1", "%begin 1 2 1", "> attenue ✦ 漢|", "┌─┐", ">>"}));
  EXPECT_EQ(ecran->attenuees[2], "          ✦ 漢|");
  EXPECT_EQ(ecran->curseurLigne, 4);
  EXPECT_EQ(ecran->curseurColonne, 2);
  EXPECT_FALSE(ecran->ecranAlterne);
  EXPECT_FALSE(ecran->modeCopie);
  EXPECT_EQ(terrain->ecran(id)->revision, ecran->revision);
  const auto liste = terrain->lister();
  ASSERT_TRUE(liste);
  ASSERT_EQ(liste->size(), 1u);
  EXPECT_EQ(liste->front().titre, ecran->titre);
  EXPECT_TRUE(ecran->titre.ends_with("✦")) << ecran->titre;

  ASSERT_TRUE(terrain->valider(id, {}));
  const auto alterne = attendreEcran(id, [](const Ecran& e) { return porte(e, "ALTERNE"); });
  EXPECT_TRUE(alterne.ecranAlterne);
  EXPECT_NE(alterne.revision, ecran->revision);
  const auto histoire = terrain->historique(id, 100);
  ASSERT_TRUE(histoire);
  EXPECT_EQ(histoire->size(), 24u);
}

TEST_F(EcransTmux, LHistoriqueGardeCeQuiADefile) {
  const auto id =
      ouvrir("histoire", "i=0; while [ $i -lt 100 ]; do i=$((i+1)); echo ligne $i; done; printf FIN; read x");
  ASSERT_TRUE(attendreTexte(id, "FIN"));
  const auto trente = terrain->historique(id, 30);
  ASSERT_TRUE(trente);
  ASSERT_EQ(trente->size(), 54u);
  EXPECT_EQ(trente->front(), "ligne 48");
  EXPECT_EQ(terrain->historique(id, 1'000'000'000)->front(), "ligne 1");
  EXPECT_EQ(terrain->historique(id, -5)->size(), 24u);
}

TEST_F(EcransTmux, NulNEstPrevenuSansGuetter) {
  const auto id = ouvrir("veille", "stty -echo; echo PRET; while read x; do echo VU $x; done");
  ASSERT_TRUE(attendreTexte(id, "PRET"));
  ASSERT_TRUE(terrain->presser(id, {"1", "entree"}));
  ASSERT_TRUE(attendreTexte(id, "VU 1"));
  // Once nobody watches any more, tmux tells nothing.
  EXPECT_TRUE(jusqua([&] { return tmux("list-windows -t =plateau: | grep -q ^1000") != 0; }));
  const auto avant = temoin.compter("ecrit " + id.valeur);
  ASSERT_TRUE(terrain->presser(id, {"2", "entree"}));
  EXPECT_TRUE(jusqua([&] {
    const auto ecran = terrain->ecran(id);
    return ecran && porte(*ecran, "VU 2");
  }));
  EXPECT_EQ(temoin.compter("ecrit " + id.valeur), avant);
  // Watched twice and let go once is still watched.
  terrain->guetter(id);
  terrain->guetter(id);
  terrain->laisser(id);
  ASSERT_TRUE(attendreTexte(id, "VU 2"));
  ASSERT_TRUE(terrain->presser(id, {"3", "entree"}));
  EXPECT_TRUE(attendreTexte(id, "VU 3"));
  terrain->laisser(id);
  terrain->laisser(id);
}

TEST_F(EcransTmux, UnDelugeNeCoutePasPlusQuUneGoutte) {
  const auto deluge = ouvrir("deluge", "exec yes '%end deluge'");
  const auto calme = ouvrir("calme", "echo PRET; while read x; do echo VU $x; done");
  ASSERT_TRUE(attendreTexte(calme, "PRET"));
  terrain->guetter(deluge);
  ASSERT_TRUE(temoin.entendre("ecrit " + deluge.valeur));
  const auto debut = std::chrono::steady_clock::now();
  const auto avant = temoin.compter("ecrit " + deluge.valeur);
  for (int i = 0; i < 20; ++i) {
    const auto n = std::to_string(i);
    ASSERT_TRUE(terrain->coller(calme, n));
    ASSERT_TRUE(terrain->valider(calme, {}));
    ASSERT_TRUE(attendreTexte(calme, "VU " + n));
    ASSERT_TRUE(terrain->ecran(deluge));
  }
  const auto ms =
      std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - debut).count();
  EXPECT_LE(temoin.compter("ecrit " + deluge.valeur) - avant, ms / 10 + 4);  // two for each silence
  terrain->laisser(deluge);
  EXPECT_TRUE(terrain->terminer(deluge));
}

}  // namespace
}  // namespace tarnavelle::Plateau
