// claude's replies, read from the transcript that it keeps on the machine where it runs. The flight log
// tells the transcript's path; running the line and keeping the cursor is the caller's business.
// Safe from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnavelle::TranscriptClaude {

inline constexpr std::size_t reponseMax = 1200;  ///< characters kept of a reply

/// Whether the path may stand in a shell line: absolute, without "..", made of letters, numbers, "/",
/// ".", "-", "_" and ordinary spaces.
bool cheminSur(std::string_view chemin);

/// Prints at most `FichierDistant::lectureMax` bytes of the transcript from byte `curseur`, nothing when
/// there is no such file. No line for an unsafe path.
std::optional<std::string> commandeLecture(std::string_view chemin, std::int64_t curseur);

struct Lecture {
  std::vector<std::string> textes;
  std::size_t consommes = 0;  ///< bytes by which the cursor moves on
};

/// The replies of a slice, by the rules of `CarnetDeVol::lire` and `FichierDistant::curseurSuivant`.
Lecture lire(std::string_view data);

/// The reply that one line holds: its text parts, trimmed, one per line. Nothing when it holds none.
std::optional<std::string> texte(std::string_view ligne);

}  // namespace tarnavelle::TranscriptClaude
