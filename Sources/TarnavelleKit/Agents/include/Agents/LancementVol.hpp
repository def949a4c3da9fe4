// The shell line that starts an agent in tmux on another machine. Running it (over SSH) is the caller's
// business. Safe from any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Agents/AgentCLI.hpp"

namespace tarnavelle::CarnetDeVol {

/// Starts the agent in the tmux session of that name, or attaches the terminal to the session when it lives
/// already. claude gets its hooks and, with a new session, an empty log; other agents get neither. Where these
/// files cannot be written the line goes on: what was written stays, and claude is named a file that may be
/// missing. `extra` are words for the agent, after its own arguments.
std::string commandeLancement(const AgentCLI& cli, std::string_view tmux,
                              const std::vector<std::string>& extra);

}  // namespace tarnavelle::CarnetDeVol
