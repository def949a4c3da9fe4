// Text on a terminal: how many columns it takes, cut or folded to fit. Widths are those of Unicode: nothing for
// combining marks, two columns for wide characters. Plain functions, safe from any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tarnavelle::Colonnes {

/// Columns that the text takes; what `Inoffensif::montrable` would write out counts for nothing.
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
