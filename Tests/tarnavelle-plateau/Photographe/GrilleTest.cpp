#include "Photographe/Grille.hpp"

#include <gtest/gtest.h>

#include "Photographe/Composition.hpp"
#include "Photographe/Couleurs.hpp"

namespace tarnavelle::Plateau {
namespace {

std::string ligneDe(const Grille& grille, int ligne) {
  std::string texte;
  for (int c = 0; c < grille.taille().colonnes; ++c) {
    const Case& vue = grille.en(ligne, c);
    texte += vue.largeur == 0 ? "<" : vue.texte.empty() ? "." : vue.texte;
  }
  return texte;
}

TEST(Grille, ChaqueTexteSurSesColonnes) {
  const std::string marques = [] {
    std::string beaucoup = "e";
    for (int i = 0; i < 40; ++i) beaucoup += "\u0301";
    return beaucoup;
  }();
  const struct {
    std::vector<Troncon> troncons;
    std::string attendu;  ///< "." for a blank, "<" for the second half of a wide character
  } cas[] = {
      {{{"a b"}}, "a.b....."},
      {{{"漢字"}, {"|"}}, "漢<字<|..."},
      {{{"e\u0301"}, {"\u0301x"}}, "e\u0301\u0301x......"},
      {{{"👩\u200d💻|"}}, "👩\u200d💻<|....."},
      {{{"🫠|"}}, "🫠<|....."},
      {{{"abcdefghij"}}, "abcdefgh"},
      {{{"abcdefg漢x"}}, "abcdefg."},
      {{{"\u0301a\u0007\u0085\u202eb"}}, "ab......"},
      {{{marques}}, marques.substr(0, 31) + "......."},
  };
  for (const auto& [troncons, attendu] : cas) {
    Grille grille({8, 1});
    grille.ecrire(0, 0, troncons, 8);
    EXPECT_EQ(ligneDe(grille, 0), attendu);
  }
}

TEST(Grille, PosePasAuDela) {
  Grille grille({6, 3});
  Peinture peinture{.taille = {3, 2}, .lignes = {{{"漢漢"}}, {{"xyz!"}}, {{"hors"}}}, .curseur = {{0, 1}}};
  grille.poser(1, 2, peinture);
  EXPECT_EQ(ligneDe(grille, 0), "......");
  EXPECT_EQ(ligneDe(grille, 1), "..漢<..");
  EXPECT_EQ(ligneDe(grille, 2), "..xyz.");
  EXPECT_TRUE(grille.en(1, 2).style.inverse);  // the whole of a wide character
  for (const Peinture::Curseur ailleurs : {Peinture::Curseur{-1, 0}, {0, 3}, {2, 0}, {1 << 30, 1 << 30}}) {
    peinture.curseur = ailleurs;
    grille.poser(1, 3, peinture);
  }
  EXPECT_TRUE(Grille::convient({500, 200}));
  for (const Taille taille : {Taille{500, 201}, {0, 5}, {5, -1}, {1 << 30, 1 << 30}})
    EXPECT_FALSE(Grille::convient(taille));
}

TEST(Composition, QuatreEcransEtDesNoms) {
  const auto vignettes = [](std::size_t ecrans, Taille taille) {
    std::vector<Composition::Vignette> liste;
    for (std::size_t i = 0; i < ecrans; ++i)
      liste.push_back(
          {"N" + std::to_string(i), "au repos", Peinture{.taille = taille, .lignes = {}, .curseur = {}}});
    liste.push_back({"Mort", "sorti", {}});
    return liste;
  };
  const struct {
    std::size_t ecrans;
    Taille chacun;
    Taille tout;
  } cas[] = {{0, {}, {40, 1}},
             {1, {50, 4}, {50, 6}},
             {2, {50, 4}, {50, 11}},
             {3, {50, 4}, {101, 11}},
             {4, {50, 4}, {101, 11}},
             {6, {50, 4}, {101, 13}},
             {4, {300, 100}, {300, 205}},
             {1, {2000, 1000}, {40, 2}}};
  for (const auto& [ecrans, chacun, tout] : cas)
    EXPECT_EQ(Composition::scene(vignettes(ecrans, chacun)).taille(), tout)
        << ecrans << " × " << chacun.colonnes;
  const auto grille = Composition::scene(vignettes(5, {20, 2}));
  EXPECT_EQ(ligneDe(grille, 3).substr(0, 11), ".N2.·.au.r");
  EXPECT_EQ(ligneDe(grille, 6).substr(0, 11), ".N4.·.au.r");
  EXPECT_EQ(ligneDe(grille, 7).substr(0, 14), ".Mort.·.sorti");
}

TEST(Couleurs, PaletteEtAttributs) {
  using enum Couleur::Genre;
  using Couleurs::Paire;
  EXPECT_EQ(Couleurs::palette(16), 0x000000U);
  EXPECT_EQ(Couleurs::palette(67), 0x5f87afU);
  EXPECT_EQ(Couleurs::palette(231), 0xffffffU);
  EXPECT_EQ(Couleurs::palette(232), 0x080808U);
  EXPECT_EQ(Couleurs::palette(255), 0xeeeeeeU);
  const Couleur rouge{vraie, 0xff0000}, bleu{vraie, 0x0000ff};
  const struct {
    Style style;
    Paire attendue;
  } cas[] = {
      {{}, {Couleurs::encrePropre, Couleurs::fondPropre}},
      {{.encre = rouge, .fond = bleu}, {0xff0000, 0x0000ff}},
      {{.encre = rouge, .fond = bleu, .inverse = true}, {0x0000ff, 0xff0000}},
      {{.encre = rouge, .fond = bleu, .attenue = true}, {0x8c0072, 0x0000ff}},
      {{.encre = rouge, .fond = bleu, .inverse = true, .cache = true}, {0xff0000, 0xff0000}},
      {{.inverse = true}, {Couleurs::fondPropre, Couleurs::encrePropre}},
  };
  for (const auto& [style, attendue] : cas) EXPECT_EQ(Couleurs::de(style), attendue) << attendue.encre;
}

}  // namespace
}  // namespace tarnavelle::Plateau
