// The names that the user's ssh configuration gives to hosts. What each of them means (Match, wildcards,
// HostName…) is for ssh to say. ssh_config(5): https://man.openbsd.org/ssh_config
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnavelle::Plateau::HotesConnus {

inline constexpr int profondeurMax = 16;  ///< of Include, as ssh has it
inline constexpr std::size_t fichierMax = std::size_t{1} << 20;
inline constexpr std::size_t fichiersMax = 200;
inline constexpr std::size_t hotesMax = 1000;
inline constexpr std::size_t nomMax = 255;  ///< bytes of a name

/// Whether the name may stand among ssh's words: no option, no control character, no white space, nothing that
/// means something to a shell (ssh takes no such name), well-formed.
bool nomSur(std::string_view hote);

/// Of what `ssh -G` prints, where the name leads: "user@host:port", an address that holds colons in brackets,
/// and " par …" with the machines it goes through. Nothing when that is not there, or is no text to be shown.
std::optional<std::string> destination(std::string_view configuration);

/// The names of the `Host` lines of a configuration and of what it includes, in their order, each once;
/// patterns and what cannot be a name left out. `personnel`: the home folder, from which "~" and relative
/// inclusions start.
std::vector<std::string> lire(const std::filesystem::path& configuration,
                              const std::filesystem::path& personnel);

}  // namespace tarnavelle::Plateau::HotesConnus
