// What an agent has printed since the last instruction: the end of the screen is remembered when the
// instruction is typed, and looked for when the answer is read. Pure functions, safe from any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tarnavelle::LectureDepuisPrompt {

/// Length of an anchor, in user-perceived characters.
inline constexpr std::size_t ancreCaracteres = 160;

/// The end of the screen, trimmed of white space and newlines.
std::string ancre(std::string_view ecran);

/// What follows the last occurrence of the anchor; the whole screen when there is no anchor, or when it
/// has scrolled away.
std::string depuis(std::string_view ecran, const std::optional<std::string>& ancre);

}  // namespace tarnavelle::LectureDepuisPrompt
