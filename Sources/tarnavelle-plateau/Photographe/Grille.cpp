#include "Photographe/Grille.hpp"

#include <algorithm>
#include <string_view>

#include "Socle/Colonnes.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::string_view liant = "\u200d";

}  // namespace

bool Grille::convient(Taille taille) {
  return taille.colonnes > 0 && taille.lignes > 0 &&
         static_cast<std::size_t>(taille.lignes) <= casesMax / static_cast<std::size_t>(taille.colonnes);
}

Grille::Grille(Taille taille)
    : taille_(taille),
      cases_(static_cast<std::size_t>(taille.lignes) * static_cast<std::size_t>(taille.colonnes)) {}

void Grille::ecrire(int ligne, int colonne, const std::vector<Troncon>& troncons, int fin) {
  if (ligne < 0 || ligne >= taille_.lignes || colonne < 0) return;
  fin = std::min(fin, taille_.colonnes);
  Case* derniere = nullptr;
  bool lie = false;  // a joiner has just come
  for (const Troncon& troncon : troncons) {
    std::string_view reste = troncon.texte;
    while (!reste.empty()) {
      const auto longueur = std::max<std::size_t>(Texte::longueurSequence(reste), 1);
      const auto point = reste.substr(0, longueur);
      reste.remove_prefix(longueur);
      // As tmux places them: one code point after the other, but for marks and what a joiner ties.
      const int largeur = Texte::ordinaire(point[0]) ? 1 : static_cast<int>(Colonnes::largeur(point));
      if (largeur == 0 || lie) {
        if (derniere && derniere->texte.size() + longueur <= Case::octetsMax)
          derniere->texte += Inoffensif::epurer(point);  // nothing of what is no mark
        lie = point == liant;
        continue;
      }
      if (colonne + largeur > fin) return;
      derniere = &cases_[rang(ligne, colonne)];
      *derniere = {.texte = std::string(point == " " ? "" : point), .largeur = largeur, .style = troncon.style};
      if (largeur == 2) cases_[rang(ligne, colonne + 1)] = {.texte = {}, .largeur = 0, .style = troncon.style};
      colonne += largeur;
    }
  }
}

void Grille::poser(int ligne, int colonne, const Peinture& peinture) {
  for (int l = 0; l < static_cast<int>(peinture.lignes.size()) && l < peinture.taille.lignes; ++l)
    ecrire(ligne + l, colonne, peinture.lignes[static_cast<std::size_t>(l)],
           colonne + peinture.taille.colonnes);
  if (!peinture.curseur) return;
  const auto [l, c] = *peinture.curseur;
  if (l < 0 || l >= peinture.taille.lignes || c < 0 || c >= peinture.taille.colonnes) return;
  if (ligne + l >= taille_.lignes || colonne + c >= taille_.colonnes) return;
  auto* dessous = &cases_[rang(ligne + l, colonne + c)];
  if (dessous->largeur == 0) --dessous;
  dessous->style.inverse = !dessous->style.inverse;
}

}  // namespace tarnavelle::Plateau
