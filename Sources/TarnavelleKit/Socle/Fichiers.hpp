// Reading whole files, telling executable ones, and finding the user's folders.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

#include "Socle/Environnement.hpp"

namespace tarnavelle {

/// The file's bytes; nothing when it cannot be read, is not a regular file or exceeds `tailleMax` bytes.
std::optional<std::string> lireFichier(const std::filesystem::path& chemin, std::size_t tailleMax);

/// Whether a regular file that this user may execute stands at that path, links followed.
bool fichierExecutable(const std::filesystem::path& chemin);

/// The user's home folder: HOME, else what the user database says. Empty when neither knows.
std::filesystem::path dossierPersonnel(const Variables& environnement);

/// The user's Application Support folder: as macOS reports it; elsewhere the home folder's
/// "Library/Application Support". Located, never created.
std::filesystem::path dossierApplicationSupport(const Variables& environnement);

}  // namespace tarnavelle
