// Quoting for POSIX shells. Pure functions, safe from any thread.
#pragma once

#include <string>
#include <string_view>

namespace tarnavelle::Shell {

/// The text as one shell word: between single quotes, each single quote inside written '\''. Holds for
/// every byte but NUL, which no argument can carry.
std::string mot(std::string_view texte);

}  // namespace tarnavelle::Shell
