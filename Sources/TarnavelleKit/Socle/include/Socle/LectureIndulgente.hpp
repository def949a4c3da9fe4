// Reading the JSON that other programs leave in logs, streams and answers, where one fault should not cost
// all the rest. What LectureJSON reads is read as it reads it; leniency begins where it refuses. What must
// be right, as a request is, goes through LectureJSON. Safe from any thread.
#pragma once

#include <functional>
#include <optional>
#include <string_view>

#include "Socle/LectureJSON.hpp"

namespace tarnavelle::LectureIndulgente {

/// As `LectureJSON::valeur` and `LectureJSON::objet`, but half of a surrogate pair ("\ud83c" alone, which a
/// program writes that cuts a text within an emoji) reads as U+FFFD.
std::optional<Json> valeur(std::string_view texte, const LectureJSON::Filtre& filtre = {});
std::optional<Json> objet(std::string_view texte, const LectureJSON::Filtre& filtre = {});

/// Gives, in order, each whole object of a text that may hold anything else, until `voir` returns false; those
/// within a given one are not given. Whether none was broken: after one that was, what is given may be a
/// piece of it. Halves of surrogate pairs and trailing commas are let through.
bool chaqueObjet(std::string_view texte, const std::function<bool(const Json&)>& voir);

/// What unreadable objects may cost: bytes read in vain for each byte of the text. Far more than honest texts
/// need; a text made to cost more is given up.
inline constexpr std::size_t lecturesMax = 8;

}  // namespace tarnavelle::LectureIndulgente
