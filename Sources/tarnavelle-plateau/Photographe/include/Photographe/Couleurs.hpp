// The colours of a picture: xterm's palette beyond the sixteen that each terminal chooses for itself. Pure
// functions.
#pragma once

#include <cstdint>

#include "Terminaux/Peinture.hpp"

namespace tarnavelle::Plateau::Couleurs {

using RVB = std::uint32_t;  ///< 0xRRGGBB

inline constexpr RVB encrePropre = 0xd6d9de;
inline constexpr RVB fondPropre = 0x16181d;

/// A colour of the palette, from 0 to 255.
RVB palette(std::uint32_t rang);

struct Paire {
  RVB encre = encrePropre;
  RVB fond = fondPropre;
  bool operator==(const Paire&) const = default;
};

/// What a cell of that style is drawn with: reversed, dimmed and hidden as the style says.
Paire de(const Style& style);

}  // namespace tarnavelle::Plateau::Couleurs
