// Reading and writing whole files, telling executable ones, and finding the user's folders. Safe from any
// thread as long as none changes the environment; of two that write one path, the last has it.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "Socle/Environnement.hpp"

namespace tarnavelle {

/// The file's bytes; nothing when it cannot be read, is not a regular file or exceeds `tailleMax` bytes.
std::optional<std::string> lireFichier(const std::filesystem::path& chemin, std::size_t tailleMax);

/// Writes every byte to a descriptor, waiting for one that is non-blocking. False once a write fails, which
/// errno tells: what was written before stays written.
bool ecrireTout(int descripteur, std::string_view octets);

/// Puts a file with that content at that path, in one step, readable by its owner alone (0600): a reader
/// finds the old file or the new one, whole. A link at that path is replaced, never followed. False, with
/// nothing changed and errno set, when that cannot be done; the folder must be there. A process that is killed
/// meanwhile may leave the new file beside it, its name followed by a dot and six characters.
bool ecrireFichierPrive(const std::filesystem::path& chemin, std::string_view contenu);

/// Whether a regular file that this user may execute stands at that path, links followed.
bool fichierExecutable(const std::filesystem::path& chemin);

/// The user's home folder: HOME, else what the user database says. Empty when neither knows.
std::filesystem::path dossierPersonnel(const Variables& environnement);

/// Where a user's Application Support folder usually is within the home folder.
inline constexpr std::string_view applicationSupport = "Library/Application Support";

/// The user's Application Support folder: as macOS reports it; elsewhere `applicationSupport` in the home
/// folder. Located, never created.
std::filesystem::path dossierApplicationSupport(const Variables& environnement);

}  // namespace tarnavelle
