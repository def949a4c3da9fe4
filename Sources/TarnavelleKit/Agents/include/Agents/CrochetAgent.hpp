// The hook that agent programs run on this machine, and the log that it appends to: one JSON object per line,
// with the members that tell what the agent does, under the names that the program gives them. `CarnetDeVol`
// reads it as it reads a log from afar. A hook never holds its agent up and never fails it.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace tarnavelle::CrochetAgent {

/// The variable that names an agent's log to its hooks.
inline constexpr const char* variable = "TARNAVELLE_CROCHETS";

inline constexpr std::size_t entreeMax = std::size_t{16} << 20;  ///< bytes read of what the program says
inline constexpr std::chrono::milliseconds patience{2000};       ///< for a program that does not close its end
inline constexpr std::size_t journalMax = std::size_t{256}
                                          << 20;  ///< bytes; a longer log is appended to no more

/// What a descriptor gives until its end, at most `entreeMax` bytes and for `patience`; nothing from a
/// terminal.
std::string entree(int descripteur);

/// What is noted of one hook.
struct Appel {
  std::string_view programme;
  std::string_view evenement;       ///< its name, where what the program says does not tell it
  std::string_view dit;             ///< by the program
  std::chrono::milliseconds quand;  ///< since 1970
};

/// The log's line for it, line feed included: of what the program says the members of use, long texts cut. When
/// that is no JSON object the line says only which hook fired.
std::string ligne(const Appel& appel);

/// Appends it, in one write, to a regular file, made when it is missing (0600). Never waits: a link, a FIFO, a
/// device are refused. Whether it was done.
bool ajouter(const std::filesystem::path& journal, std::string_view ligne);

}  // namespace tarnavelle::CrochetAgent
