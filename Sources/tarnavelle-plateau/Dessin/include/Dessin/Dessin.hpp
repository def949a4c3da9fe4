// A grid of cells as a PNG, by Cairo and Pango. One thread at a time.
#pragma once

#include <string>

#include "Photographe/Image.hpp"
#include "Socle/Resultat.hpp"

namespace tarnavelle::Plateau::Dessin {

// Pixels. A font is made to fit the cell, so that a picture's size depends on nothing else than the grid's.
inline constexpr int largeurCase = 9;
inline constexpr int hauteurCase = 18;
inline constexpr int marge = 6;  ///< on the four sides

/// Or, in French, why there is none: a sentence.
Resultat<Image, std::string> peindre(const Grille& grille);

}  // namespace tarnavelle::Plateau::Dessin
