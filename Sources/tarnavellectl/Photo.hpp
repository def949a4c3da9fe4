// A picture that comes in a reply, as base64: found wherever it stands in the data, and put where the
// operator can look at it.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "Socle/JSON.hpp"

namespace tarnavelle::Photo {

/// The bytes of the first PNG that the data holds; nothing when there is none, or when it is not whole
/// base64. `data` may be a PNG's base64 itself, a data URL, or hold one at any depth.
std::optional<std::string> png(const Json& donnees);

/// Where to write it: `demande`, or under a dated name in it when it is a folder, or in the current one
/// when it is empty.
std::filesystem::path chemin(const std::string& demande);

}  // namespace tarnavelle::Photo
