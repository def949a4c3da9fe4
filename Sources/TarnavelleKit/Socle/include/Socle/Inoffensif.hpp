// Text from elsewhere made harmless to the terminal, and to the eye, that it is shown to. Plain functions, safe
// from any thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tarnavelle::Inoffensif {

/// The text with whatever could drive or mislead a terminal written out as JSON would ("\u001b", "\n"):
/// control characters, line separators, invisible formatting such as writing direction. A byte of no
/// character is written "\xff". The characters of `gardes` stand; so do the joiners of letters and emoji.
std::string montrable(std::string_view texte, std::string_view gardes = {});

/// The same, left out instead of written out: for words that are to be understood as well as shown.
std::string epurer(std::string_view texte, std::string_view gardes = {});

/// Whether a code point is one that `montrable` lets through.
bool laissePasser(std::int32_t point);

}  // namespace tarnavelle::Inoffensif
