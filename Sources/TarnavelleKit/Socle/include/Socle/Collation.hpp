// The order in which a person looks for names in a list. Safe from any thread as long as none changes
// the environment, which names the locale.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tarnavelle::Collation {

/// Keys that sort, byte by byte, as the names they stand for, in the same places. The order is that of the
/// user's locale (LC_ALL, LC_COLLATE or LANG), whatever its other categories; it is the French order when no
/// locale is set or installed, or when the platform's own puts "é" elsewhere than between "e" and "f" or
/// fails on a name. Keys of two calls cannot be compared.
std::vector<std::string> cles(const std::vector<std::string>& noms);

/// The key of the French order: signs, then numerals, then letters, "œ" as "oe". Accents count between names of
/// the same letters, the first difference deciding, and then lower case comes before upper.
std::string cleFrancaise(std::string_view nom);

}  // namespace tarnavelle::Collation
