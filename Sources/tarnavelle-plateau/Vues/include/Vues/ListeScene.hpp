// The list of a scene, which a pane of it shows: two files of ours, and the program that shows them. They
// outlive the door: the next one finds the pane and writes on.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tarnavelle::Plateau::ListeScene {

/// Writes what the program is to show: lines of `TextesVues::liste`.
bool ecrire(const std::filesystem::path& fichier, const std::vector<std::string>& lignes);

/// Has each program that shows a file of that folder ring its terminal's bell, once. False when nothing could
/// be written.
bool sonner(const std::filesystem::path& dossier);

/// What the program draws in a window of that size: SGR (ECMA-48) and text, as many lines at most. What does
/// not fit is counted on the last one.
std::string dessin(const std::string& contenu, int colonnes, int lignes);

/// Shows the file until the terminal goes: the whole of `tarnavelle-plateau liste FICHIER`.
int montrer(const std::filesystem::path& fichier);

}  // namespace tarnavelle::Plateau::ListeScene
