#include "Photographe/Composition.hpp"

#include <algorithm>
#include <array>

#include "Socle/Inoffensif.hpp"

namespace tarnavelle::Plateau::Composition {
namespace {

constexpr int colonnesMin = 40;  ///< for names to be read
constexpr std::size_t lignesDeNomsMax = 64;

std::vector<Troncon> titre(const Vignette& vignette, Style style) {
  Style nom = style;
  nom.gras = true;
  std::vector<Troncon> troncons = {{" " + Inoffensif::epurer(vignette.nom), nom}};
  if (!vignette.etat.empty()) troncons.push_back({" · " + Inoffensif::epurer(vignette.etat), style});
  return troncons;
}

/// Where each screen stands, with its title above it, and how much room there must be for all.
struct Plan {
  std::array<int, 2> larges{};  ///< of each column
  std::array<int, 2> hauts{};   ///< of each row, titles included
  std::vector<const Vignette*> ecrans, lignes;
  int parRangee = 1;
  Taille taille;

  Plan(const std::vector<Vignette>& vignettes, std::size_t ecransVoulus) {
    for (const Vignette& v : vignettes)
      (v.ecran && ecrans.size() < ecransVoulus ? ecrans : lignes).push_back(&v);
    if (lignes.size() > lignesDeNomsMax) lignes.resize(lignesDeNomsMax);
    parRangee = ecrans.size() > 2 ? 2 : 1;
    for (std::size_t i = 0; i < ecrans.size(); ++i) {
      larges[colonne(i)] = std::max(larges[colonne(i)], ecrans[i]->ecran->taille.colonnes);
      hauts[rangee(i)] = std::max(hauts[rangee(i)], ecrans[i]->ecran->taille.lignes + 1);
    }
    taille.colonnes = std::max(colonnesMin, x(1) + larges[1]);
    taille.lignes = hauts[0] + hauts[1] + static_cast<int>(lignes.size());
  }
  std::size_t colonne(std::size_t i) const { return i % static_cast<std::size_t>(parRangee); }
  std::size_t rangee(std::size_t i) const { return i / static_cast<std::size_t>(parRangee); }
  int x(std::size_t c) const { return c == 0 ? 0 : larges[0] + (larges[1] > 0 ? 1 : 0); }
  int y(std::size_t r) const { return r == 0 ? 0 : hauts[0]; }
};

}  // namespace

Grille scene(const std::vector<Vignette>& vignettes) {
  std::size_t voulus = ecransMax;
  Plan plan(vignettes, voulus);
  while (!Grille::convient(plan.taille) && voulus > 0) plan = Plan(vignettes, --voulus);
  Grille grille(plan.taille);
  Style bandeau;
  bandeau.fond = {Couleur::Genre::palette, 238};
  for (std::size_t i = 0; i < plan.ecrans.size(); ++i) {
    const int x = plan.x(plan.colonne(i)), y = plan.y(plan.rangee(i));
    const int fin = x + plan.larges[plan.colonne(i)];
    grille.ecrire(y, x, {{std::string(static_cast<std::size_t>(fin - x), ' '), bandeau}}, fin);
    grille.ecrire(y, x, titre(*plan.ecrans[i], bandeau), fin);
    grille.poser(y + 1, x, *plan.ecrans[i]->ecran);
  }
  for (std::size_t i = 0; i < plan.lignes.size(); ++i)
    grille.ecrire(plan.y(1) + plan.hauts[1] + static_cast<int>(i), 0, titre(*plan.lignes[i], {}),
                  plan.taille.colonnes);
  return grille;
}

}  // namespace tarnavelle::Plateau::Composition
