// Sound from files and pipes, at the pace of real time, in place of a device. What libsndfile reads is read;
// what is written is WAV, 24 kHz mono 16 bits: the voice alone, without the silences around it. One thread at a
// time.
#pragma once

#include <memory>
#include <string>

#include "Socle/Resultat.hpp"
#include "Son/Bouts.hpp"

namespace tarnavelle::Voix {

/// A file, or standard input for "-"; or why it is not one, in French.
Resultat<std::unique_ptr<EntreeSon>, std::string> ouvrirEntree(const std::string& chemin);

/// A file, replaced when it is there, or standard output for "-"; or why it can't be written, in French. It is
/// whole when the object is destroyed.
Resultat<std::unique_ptr<SortieSon>, std::string> ouvrirSortie(const std::string& chemin);

}  // namespace tarnavelle::Voix
