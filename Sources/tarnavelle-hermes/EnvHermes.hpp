// What the file of settings of the agent over there says of its gateway, and the lines that ask that machine
// for it. Pure functions.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Hermes/ReveilGateway.hpp"

namespace tarnavelle::EnvHermes {

inline constexpr int portUsuel = 8642;

/// For sh: what `lire` reads.
std::string ligne();
LectureEnvHermes lire(std::string_view sortie);

/// For sh: whether the gateway's process runs, as pgrep's own status, and a mark that it was asked.
std::string ligneProcessus();
inline constexpr std::string_view sentinelle = "tarnavelle-sonde";

/// For sh: starts it, and lets go of it. 127 when it is not installed.
std::string ligneLancement();

/// For sh: gives standard input to the agent as one message, and shows what it says.
std::string ligneMessage();

}  // namespace tarnavelle::EnvHermes
