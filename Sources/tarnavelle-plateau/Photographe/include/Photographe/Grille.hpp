// A screen as a grid of cells, each text on the columns that the terminal gave it. Plain value: one thread at a
// time.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "Terminaux/Peinture.hpp"

namespace tarnavelle::Plateau {

struct Case {
  static constexpr std::size_t octetsMax = 32;  ///< longest text of one cell: marks beyond are dropped
  std::string texte;                            ///< a character with its marks; empty for a blank
  int largeur = 1;                              ///< 2 for a wide character, then 0 for the cell that it covers
  Style style{};
};

class Grille {
 public:
  /// Most cells that a picture has: some 16 million pixels.
  static constexpr std::size_t casesMax = 100'000;
  static bool convient(Taille taille);

  /// Blank; `convient` says whether there may be one.
  explicit Grille(Taille taille);

  const Taille& taille() const { return taille_; }
  const Case& en(int ligne, int colonne) const { return cases_[rang(ligne, colonne)]; }

  /// Writes texts one after the other from that cell on, no further than `fin` or the line's end. What lies
  /// outside of the grid is passed over.
  void ecrire(int ligne, int colonne, const std::vector<Troncon>& troncons, int fin);
  void placer(int ligne, int colonne, Case la) { cases_[rang(ligne, colonne)] = std::move(la); }
  /// A screen whose first cell is that one, its cursor with it.
  void poser(int ligne, int colonne, const Peinture& peinture);

 private:
  std::size_t rang(int ligne, int colonne) const {
    return static_cast<std::size_t>(ligne) * static_cast<std::size_t>(taille_.colonnes) +
           static_cast<std::size_t>(colonne);
  }

  Taille taille_;
  std::vector<Case> cases_;
};

}  // namespace tarnavelle::Plateau
