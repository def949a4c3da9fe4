// Where pictures are written: a dated file of its own for each, whole or not at all, for its owner alone. Safe
// from any thread.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "Socle/Date.hpp"
#include "Socle/Resultat.hpp"

namespace tarnavelle::Plateau::Album {

/// "tarnavelle-2026-11-22-143501-Merlin.png".
std::string nomDeFichier(std::string_view sujet, std::chrono::system_clock::time_point quand,
                         const Calendrier& calendrier);

/// Writes under that name in a folder that is there, or with "-2", "-3"… before its ".png": no file, no link is
/// ever replaced or followed. Where it was written, or in French why it was not: a sentence.
Resultat<std::filesystem::path, std::string> ranger(const std::filesystem::path& chemin, std::string_view png);

}  // namespace tarnavelle::Plateau::Album
