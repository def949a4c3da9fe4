// Reading a growing file of another machine by byte cursor: the shell line that prints a slice of it, and where
// the next one begins. What a slice says is its reader's business, running the line (over SSH) and keeping the
// cursor the caller's. Safe from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tarnavelle::FichierDistant {

inline constexpr std::int64_t lectureMax = 262144;  ///< bytes that one read prints

/// The part of a line that prints at most `lectureMax` bytes of a file from byte `curseur`, nothing when there
/// is no such file. `chemin` stands between double quotes within single ones: a variable, or a path that holds
/// no character that a shell knows.
std::string impression(std::string_view chemin, std::int64_t curseur);

/// Where to read next after a slice of `octets` bytes, of which the reader consumed `consommes`: as much
/// further on. A full slice that holds no whole line is within one that no read can complete: it is passed
/// over, and what remains of that line is consumed as an unreadable one.
std::int64_t curseurSuivant(std::int64_t curseur, std::size_t octets, std::size_t consommes);

}  // namespace tarnavelle::FichierDistant
