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

/// Whether a file must outlive a power failure: waiting for the disk takes milliseconds.
enum class Duree { durable, passagere };

/// Puts a file with that content at that path, in one step, readable by its owner alone (0600): a reader
/// finds the old file or the new one, whole. A link at that path is replaced, never followed. False, with
/// nothing changed and errno set, when that cannot be done; the folder must be there. A process that is killed
/// meanwhile may leave the new file beside it, its name followed by a dot and six characters.
bool ecrireFichierPrive(const std::filesystem::path& chemin, std::string_view contenu,
                        Duree duree = Duree::durable);

/// Why something could not be written, from errno, in French: the end of a sentence.
std::string raisonEcriture(int erreur);

/// Makes the folder and those on its way that are missing, for their owner alone (0700). False when it is not
/// there afterwards.
bool creerDossierPrive(const std::filesystem::path& dossier);

/// The same, and one that stands there already becomes private, too. False, with nothing changed, when it is
/// another user's.
bool reserverDossier(const std::filesystem::path& dossier);

/// Whether a regular file that this user may execute stands at that path, links followed.
bool fichierExecutable(const std::filesystem::path& chemin);

/// The user's home folder: HOME, else what the user database says. Empty when neither knows.
std::filesystem::path dossierPersonnel(const Variables& environnement);

/// Where a user's Application Support folder usually is within the home folder.
inline constexpr std::string_view applicationSupport = "Library/Application Support";

/// The user's Application Support folder: as macOS reports it; elsewhere `applicationSupport` in the home
/// folder. Located, never created.
std::filesystem::path dossierApplicationSupport(const Variables& environnement);

/// Where a user's programs keep what outlives them: XDG_STATE_HOME, ~/.local/state when it is unset or relative
/// (XDG Base Directory 0.8); on macOS the Application Support folder. Located, never created.
std::filesystem::path dossierEtats(const Variables& environnement);

/// Where a user keeps the settings of his programs: XDG_CONFIG_HOME, ~/.config when it is unset or relative; on
/// macOS the Application Support folder. Located, never created.
std::filesystem::path dossierReglages(const Variables& environnement);

}  // namespace tarnavelle
