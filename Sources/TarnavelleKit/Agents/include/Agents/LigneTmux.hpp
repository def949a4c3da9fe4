// Words of a tmux command given on a shell line. tmux reads its arguments once more after the shell: one
// that ends with ";" ends the command, and a new session's name is a format, in which "#(…)" runs a
// program. These words reach tmux as the texts they were made of. Safe from any thread.
#pragma once

#include <string>
#include <string_view>

namespace tarnavelle::LigneTmux {

/// One argument, quoted for the shell.
std::string mot(std::string_view texte);

/// The same for an argument that tmux expands as a format.
std::string motDeFormat(std::string_view texte);

}  // namespace tarnavelle::LigneTmux
