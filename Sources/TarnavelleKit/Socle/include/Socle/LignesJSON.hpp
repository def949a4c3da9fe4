// Files of JSON objects, one per line, that another program appends to and that are read in slices by
// byte cursor. A slice may end anywhere: within a line, a character or a "\r\n". What a line means is
// its reader's business. Safe from any thread.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>

#include "Socle/LectureJSON.hpp"

namespace tarnavelle::LignesJSON {

/// Gives each complete line of the slice, without its line feed, and returns how many bytes they take,
/// line feeds included: the reader's cursor moves on by as much, and what follows is read again.
std::size_t parcourir(std::string_view tranche, const std::function<void(std::string_view)>& voir);

/// The object that a line holds; nothing when it holds anything else. A byte order mark before it is passed
/// over, as RFC 8259 allows, and the reading is lenient (LectureIndulgente).
std::optional<Json> objet(std::string_view ligne, const LectureJSON::Filtre& filtre);

/// The same where several programs append to the file at once, and may write into each other's lines: gives
/// each whole object of a line that is not JSON, in order, with members that the filter leaves out.
void objets(std::string_view ligne, const LectureJSON::Filtre& filtre,
            const std::function<void(const Json&)>& voir);

}  // namespace tarnavelle::LignesJSON
