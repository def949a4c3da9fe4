// What of a text shows whatever terminal and program draw it. They fold it as they like, compose its accents or
// not, and drop or replace what has no width of its own. Pure.
#pragma once

#include <string>
#include <string_view>

namespace tarnavelle::Plateau {

/// The text without white space, accents (composed or not) and variation selectors, format characters
/// (U+200B, U+00AD, U+202E…), skin tones, and U+FFFD, which is drawn for any of them. UTF-8; invalid bytes
/// stay.
std::string trame(std::string_view texte);

}  // namespace tarnavelle::Plateau
