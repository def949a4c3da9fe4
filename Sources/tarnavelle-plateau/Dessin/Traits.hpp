// Box drawing and block elements (Unicode U+2500 to U+259F), drawn by us: a font's do not meet from one cell to
// the next unless the cell is its own. One thread at a time.
#pragma once

#include <cairo.h>

#include <string_view>

namespace tarnavelle::Plateau::Dessin {

/// Draws a text in the cell whose upper left corner is there, with the ink that is set. False, with nothing
/// drawn, when it is none of these.
bool tracer(cairo_t* cairo, std::string_view texte, double x, double y);

}  // namespace tarnavelle::Plateau::Dessin
