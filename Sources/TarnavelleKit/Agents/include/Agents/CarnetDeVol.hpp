// The flight log of a claude agent that runs in tmux on another machine: a file there, to which the agent's
// hooks append a line for each event. Here: where it is, and the shell lines that read it. The hooks are in
// HooksVol, the start of the agent in LancementVol, what the log says in EvenementVol, the agent's replies in
// TranscriptClaude; running the lines (over SSH) and keeping the cursors is the caller's business. A new tmux
// session empties its log, so cursors start again at 0 with it. Safe from any thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Agents/FichierDistant.hpp"

namespace tarnavelle::CarnetDeVol {

inline constexpr std::string_view dossierDistant = ".tarnavelle/vol";  ///< from the remote home
using FichierDistant::lectureMax;

/// The session's name as a file name: its letters and numbers, ".", "-" and "_"; "session" when nothing
/// remains. Holds no character that a shell knows.
std::string nomSur(std::string_view nom);

/// Paths of a session's log and hooks settings, from the remote home.
std::string journalDistant(std::string_view session);
std::string reglagesDistant(std::string_view session);

/// Prints at most `lectureMax` bytes of the log from byte `curseur`; nothing when there is no log.
std::string commandeLecture(std::string_view session, std::int64_t curseur);

/// Prints "<marque><session's safe name>:<title>" for each log whose transcript, in its last `queue`
/// bytes, tells the conversation's title. The title is the JSON text's own, escapes included.
std::string commandeTitres(std::string_view marque, std::int64_t queue);

}  // namespace tarnavelle::CarnetDeVol
