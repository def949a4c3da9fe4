// Several screens in one picture: each under its name, four at most, the others as lines below. Pure functions.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Photographe/Grille.hpp"

namespace tarnavelle::Plateau::Composition {

struct Vignette {
  std::string nom;
  std::string etat;
  std::optional<Peinture> ecran;  ///< nothing: a line
};

inline constexpr std::size_t ecransMax = 4;

/// One above the other when they are two, else two by two; as many as `Grille::casesMax` allows, in their
/// order.
Grille scene(const std::vector<Vignette>& vignettes);

}  // namespace tarnavelle::Plateau::Composition
