// Text for a terminal: how many columns it takes, cut or folded to fit, and made harmless. Widths are
// those of Unicode: nothing for combining marks, two columns for wide characters. Pure functions.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tarnavelle::Colonnes {

/// The text with whatever could drive or mislead a terminal written out as JSON would ("\u001b", "\n"):
/// control characters, line separators, invisible formatting such as writing direction. A byte of no
/// character is written "\xff". The characters of `gardes` stand; so do the joiners of letters and emoji.
std::string montrable(std::string_view texte, std::string_view gardes = {});

/// The same, left out instead of written out: for words that are to be understood as well as shown.
std::string epurer(std::string_view texte, std::string_view gardes = {});

/// Columns that the text takes; what `montrable` would write out counts for nothing.
std::size_t largeur(std::string_view texte);

/// The text when it fits; else the beginning that fits with the "…" that ends it.
std::string couper(std::string_view texte, std::size_t colonnes);

/// The text, then spaces up to that many columns.
std::string completer(std::string_view texte, std::size_t colonnes);

/// Whether no line may break at the space between two texts: French puts one inside quotation marks and
/// before the marks of two signs.
bool inseparables(std::string_view gauche, std::string_view droite);

/// The text's words on lines of at most that many columns; a longer word has a line of its own.
std::vector<std::string> plier(std::string_view texte, std::size_t colonnes);

}  // namespace tarnavelle::Colonnes
