// The board on the terminal of the person who started it, and what he is told before and after.
#pragma once

#include <string>
#include <vector>

#include "Detachement.hpp"
#include "Machine/LanceursReels.hpp"

namespace tarnavelle::Plateau::SurTerminal {

/// The words as a person types them.
std::string ligne(const std::vector<std::string>& mots);

/// Whether somebody sits there: both our input and our output are a terminal.
bool present();

/// Shows the board until the person leaves it, then says what goes on and how to come back or to stop. Within
/// tmux already, says what to type elsewhere instead. `fichier`: where the door keeps it. An exit status.
int montrer(const Regard& regard, const std::filesystem::path& fichier);

/// What is to be said where no agent program is installed: those that are known, and whose they are. Empty when
/// there is one.
std::string sansAgent(LanceursReels& lanceurs);

}  // namespace tarnavelle::Plateau::SurTerminal
