#include "Dessin/Dessin.hpp"

#include <gtest/gtest.h>

#include "Photographe/Couleurs.hpp"
#include "Photographe/DessinAPart.hpp"
#include "Pixels.hpp"

/// fontconfig 2.14 loses 288 bytes of its configuration, once.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig\n"; }

namespace tarnavelle::Plateau {
namespace {

using essai::Pixels;

constexpr Couleur rouge{Couleur::Genre::vraie, 0xc00000}, vert{Couleur::Genre::vraie, 0x00ff00};

std::string png(const Grille& grille) {
  const auto image = Dessin::peindre(grille);
  EXPECT_TRUE(image) << image.raison();
  return image ? image->png : "";
}

std::string peindre(const std::vector<Troncon>& troncons, Taille taille) {
  Grille grille(taille);
  grille.ecrire(0, 0, troncons, taille.colonnes);
  return png(grille);
}

TEST(Dessin, LeMemeDansSonPropreProgramme) {
  Grille grille({40, 3});
  grille.ecrire(
      1, 2,
      {{"漢 é ⎿\u0301", {.encre = rouge, .fond = {Couleur::Genre::palette, 200}, .gras = true, .barre = true}}},
      40);
  const auto image = DessinAPart(DESSIN, {}).peindre(grille);
  ASSERT_TRUE(image) << image.raison();
  EXPECT_EQ(image->png, png(grille));
  EXPECT_EQ(DessinAPart("/nulle/part", {}).peindre(grille).raison(),
            "Ce plateau ne prend pas de photos : « /nulle/part », qui les dessine, n'a pas pu être lancé.");
  const std::string pli = Pli::plier(grille);
  EXPECT_FALSE(Pli::deplier(pli.substr(0, pli.size() - 1)));
  EXPECT_FALSE(Pli::deplier(pli + "x"));
}

TEST(Dessin, CouleursEtTaille) {
  const Pixels vus(peindre({{"M", {.encre = rouge, .fond = vert}},
                            {"M", {.encre = rouge, .fond = vert, .inverse = true}},
                            {"M", {.encre = rouge, .cache = true}},
                            {" ", {.fond = vert}},
                            {"█", {.encre = rouge}}},
                           {7, 2}));
  EXPECT_EQ(vus.largeur(), 7 * Dessin::largeurCase + 2 * Dessin::marge);
  EXPECT_EQ(vus.hauteur(), 2 * Dessin::hauteurCase + 2 * Dessin::marge);
  EXPECT_EQ(vus.en(0, 0), Couleurs::fondPropre);
  EXPECT_EQ(vus.fond(0, 0), vert.valeur);
  EXPECT_GT(vus.couleurs(0, 0)[rouge.valeur], 5);
  EXPECT_EQ(vus.fond(0, 1), rouge.valeur);
  EXPECT_GT(vus.couleurs(0, 1)[vert.valeur], 5);
  EXPECT_EQ(vus.encre(0, 2), 0);
  EXPECT_EQ(vus.fond(0, 2), Couleurs::fondPropre);
  EXPECT_EQ(vus.couleurs(0, 3)[vert.valeur], Dessin::largeurCase * Dessin::hauteurCase);
  EXPECT_EQ(vus.couleurs(0, 4)[rouge.valeur], Dessin::largeurCase * Dessin::hauteurCase);
  EXPECT_EQ(vus.encre(1, 0), 0);
}

TEST(Dessin, Attributs) {
  const auto encre = [](const Style& style) { return Pixels(peindre({{"n", style}}, {1, 1})).encre(0, 0); };
  const int simple = encre({});
  EXPECT_GT(encre({.gras = true}), simple);
  EXPECT_NE(peindre({{"n", {.italique = true}}}, {1, 1}), peindre({{"n"}}, {1, 1}));
  EXPECT_GE(encre({.souligne = true}), simple + Dessin::largeurCase);
  EXPECT_GT(encre({.barre = true}), simple);
  const Pixels attenue(peindre({{"█", {.attenue = true}}}, {1, 1}));
  EXPECT_LT(attenue.en(Dessin::marge + 4, Dessin::marge + 4), Couleurs::encrePropre);
}

/// The columns stay whatever has come before, a font's or the frame that stands for what none has.
TEST(Dessin, ChaqueCaractereSurSaColonne) {
  const Pixels seul(peindre({{"     |"}}, {6, 1}));
  for (const std::string avant : {"漢漢 ", "ii\u0301MW", "👩\u200d💻漢", "\U00013000m  "}) {
    Grille grille({6, 1});
    grille.ecrire(0, 0, {{avant}}, 5);
    grille.ecrire(0, 5, {{"|"}}, 6);
    EXPECT_EQ(Pixels(png(grille)).couleurs(0, 5), seul.couleurs(0, 5)) << avant;
  }
  const Pixels large(peindre({{"漢"}}, {3, 1}));
  EXPECT_GT(large.encre(0, 0), 0);
  EXPECT_GT(large.encre(0, 1), 0);
  EXPECT_EQ(large.encre(0, 2), 0);
}

TEST(Dessin, LesTraitsSeTouchent) {
  Grille grille({2, 2});
  grille.ecrire(0, 0, {{"┏━"}}, 2);
  grille.ecrire(1, 0, {{"║░"}}, 2);
  grille.ecrire(1, 0, {{"┃"}}, 1);
  const Pixels vus(png(grille));
  const int x = Dessin::marge + Dessin::largeurCase / 2, y = Dessin::marge + Dessin::hauteurCase / 2 - 1;
  for (int i = y; i < Dessin::marge + 2 * Dessin::hauteurCase; ++i)
    EXPECT_EQ(vus.en(x, i), Couleurs::encrePropre) << i;
  for (int i = x; i < Dessin::marge + 2 * Dessin::largeurCase; ++i)
    EXPECT_EQ(vus.en(i, y), Couleurs::encrePropre) << i;
  EXPECT_EQ(vus.en(x, y - 4), Couleurs::fondPropre);
  EXPECT_EQ(vus.en(x - 4, y), Couleurs::fondPropre);
}

}  // namespace
}  // namespace tarnavelle::Plateau
