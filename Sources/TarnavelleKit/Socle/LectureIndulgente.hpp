// Reading the JSON that other programs leave in logs, streams and answers, where one fault should not cost
// all the rest. What LectureJSON reads is read as it reads it; leniency begins where it refuses. What must
// be right, as a request is, goes through LectureJSON. Pure functions.
#pragma once

#include <optional>
#include <string_view>

#include "Socle/LectureJSON.hpp"

namespace tarnavelle::LectureIndulgente {

/// As `LectureJSON::valeur` and `LectureJSON::objet`, but half of a surrogate pair ("\ud83c" alone, which a
/// program writes that cuts a text within an emoji) reads as U+FFFD.
std::optional<Json> valeur(std::string_view texte);
std::optional<Json> objet(std::string_view texte, const LectureJSON::Filtre& filtre = {});

}  // namespace tarnavelle::LectureIndulgente
