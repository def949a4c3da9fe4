// Paths typed in a shell, as the door must read them: its working directory is not the shell's.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "Porte/OutilVoix.hpp"
#include "Session.hpp"

namespace tarnavelle::Chemins {

/// Whether a text says itself that it is a path: "/x", "./x", "../x", "~/x", ".", ".." or "~".
bool ecritEnChemin(std::string_view texte);

/// From the current folder, or from the user's own for "~". An absolute path is returned as it is.
std::filesystem::path absolu(std::string_view chemin, const std::filesystem::path& courant,
                             const std::filesystem::path& personnel);

/// Makes absolute the arguments that are paths of this machine, as the verb's row tells: a text that may also
/// be a name only when it is written as a path. False, and the operator is told, when that cannot be done.
bool rendreAbsolus(Json& corps, const OutilVoix& outil, Session& session);

}  // namespace tarnavelle::Chemins
