// The name that was probably meant. Safe from any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnavelle {

/// The first of the names nearest to what was typed; nothing when none is near. Case, accents, dashes and
/// underscores do not count; the beginning of a name is near it.
std::optional<std::string> nomProche(std::string_view tape, const std::vector<std::string>& noms);

}  // namespace tarnavelle
