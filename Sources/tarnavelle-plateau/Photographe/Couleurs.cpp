#include "Photographe/Couleurs.hpp"

#include <array>
#include <utility>

namespace tarnavelle::Plateau::Couleurs {
namespace {

constexpr std::array<RVB, 16> seize = {0x282c34, 0xe05561, 0x8cc265, 0xd9a343, 0x4aa5f0, 0xc162de,
                                       0x42b3c2, 0xc8ccd4, 0x5f6672, 0xff7b85, 0xa5e075, 0xf0c46c,
                                       0x78bdff, 0xde8ef5, 0x62d6e6, 0xffffff};

RVB choisie(const Couleur& couleur, RVB propre) {
  switch (couleur.genre) {
    case Couleur::Genre::propre: return propre;
    case Couleur::Genre::palette: return palette(couleur.valeur);
    case Couleur::Genre::vraie: return couleur.valeur & 0xffffff;
  }
  return propre;
}

/// Between two colours, component by component: 55 % of the first.
RVB melange(RVB a, RVB b) {
  constexpr unsigned part = 55;
  RVB mele = 0;
  for (const unsigned decalage : {0U, 8U, 16U})
    mele |= ((a >> decalage & 0xff) * part + (b >> decalage & 0xff) * (100 - part)) / 100 << decalage;
  return mele;
}

}  // namespace

RVB palette(std::uint32_t rang) {
  constexpr std::array<RVB, 6> niveaux = {0, 95, 135, 175, 215, 255};
  constexpr std::uint32_t cube = 16, gris = 232;
  rang &= 0xff;
  if (rang < cube) return seize[rang];
  if (rang >= gris) return (8 + 10 * (rang - gris)) * 0x010101;
  rang -= cube;
  return niveaux[rang / 36] << 16 | niveaux[rang / 6 % 6] << 8 | niveaux[rang % 6];
}

Paire de(const Style& style) {
  Paire paire{choisie(style.encre, encrePropre), choisie(style.fond, fondPropre)};
  if (style.inverse) std::swap(paire.encre, paire.fond);
  if (style.attenue) paire.encre = melange(paire.encre, paire.fond);
  if (style.cache) paire.encre = paire.fond;
  return paire;
}

}  // namespace tarnavelle::Plateau::Couleurs
