// What the last board left without a terminal: the machine was started anew, or tmux was ended.
#pragma once

#include <functional>
#include <set>
#include <string>

#include "Registre/Registre.hpp"
#include "Verbes/Executeur.hpp"

namespace tarnavelle::Plateau::Reprise {

using Absents = std::set<std::string>;  ///< ids of agents and of windows

/// What should have a terminal and has none. Asked before the door answers: what it is opening has none yet.
Absents absents(const Registre& registre);

/// The agents that are gone, opened anew, several at once, their conversations with them; `dire` is told what
/// came of each, one at a time.
void reprendre(Executeur& executeur, const Registre& registre, const Absents& absents,
               const std::function<void(const std::string&)>& dire);

/// What is still without a terminal, and how it comes back: a few French lines, empty when nothing is.
/// `reprise`: they were just reopened.
std::string disparus(const Registre& registre, const Absents& absents, bool reprise);

}  // namespace tarnavelle::Plateau::Reprise
