// How a program starts in a terminal without a shell, and without its secrets in words that `ps` shows: a file
// of mode 0600 says everything, our own program reads it in the terminal, removes it and becomes what it names.
// `executer` is the whole of `tarnavelle-plateau lancer FILE`.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "Socle/Environnement.hpp"
#include "Terminaux/Terminaux.hpp"

namespace tarnavelle::Plateau::Lanceur {

/// Whether a program started here may inherit that variable: not those by which one believes itself within
/// another terminal or agent, nor ours. Where a program keeps its user's settings (CODEX_HOME) is no such mark.
bool herite(std::string_view variable);

/// This process's environment, or a table, without what `herite` refuses.
Environnement heritage();
Environnement heritage(const Environnement& table);

/// Longest file, in bytes.
inline constexpr std::size_t tailleMax = 4 * 1024 * 1024;

/// The words, folder and environment of a launch, as the file holds them. Nothing when they cannot be handed to
/// a program: no word, a NUL, a variable without a name, too long.
std::optional<std::string> ecrire(const Lancement& lancement);

/// The inverse: words, folder and environment alone.
std::optional<Lancement> lire(std::string_view octets);

/// Reads the file and removes it, whatever it holds, then replaces this process by the program. Returns only
/// when that cannot be done: 126 or 127 as a shell would, with the reason in French on the terminal.
int executer(const std::filesystem::path& fichier);

}  // namespace tarnavelle::Plateau::Lanceur
