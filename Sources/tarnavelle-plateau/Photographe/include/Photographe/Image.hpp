// What a picture is made of, and what comes of it, as they go to the program that draws and back. Plain values
// and pure functions.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "Photographe/Grille.hpp"
#include "Socle/Resultat.hpp"

namespace tarnavelle::Plateau {

struct Image {
  std::string png;
  std::size_t sansGlyphe = 0;  ///< cells whose character no font has: a frame stands there
};

namespace Pli {

/// A grid as bytes, and back; nothing for what `plier` did not write.
std::string plier(const Grille& grille);
std::optional<Grille> deplier(std::string_view octets);

/// The same of what was drawn, or of the sentence that says why nothing was.
std::string plierImage(const Resultat<Image, std::string>& image);
std::optional<Resultat<Image, std::string>> deplierImage(std::string_view octets);

}  // namespace Pli
}  // namespace tarnavelle::Plateau
