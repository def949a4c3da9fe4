// The agent programs that the board starts: those of the catalogue, and further ones that only a terminal
// knows. A row holds what its launch needs to know of one. Immutable: safe from any thread. Private to this
// folder.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Agents/AgentCLI.hpp"
#include "Socle/JSON.hpp"

namespace tarnavelle::Plateau::interne {

struct Programme {
  AgentCLI cli;

  // How it takes a conversation's id, as it was seen to do.
  std::string_view neuve = {};       ///< before an id that we choose; empty when it chooses its own
  std::string_view reprise = {};     ///< before the id to be resumed; empty when it cannot
  bool repriseSousCommande = false;  ///< `reprise` comes before any option
};

/// In the order in which one is chosen when none is asked for.
const std::vector<Programme>& programmes();

/// The row of that name, or null.
const Programme* programme(std::string_view id);

/// The settings that give it the bridge, where they stand among others of its own; nothing for a program that
/// takes them by words, or not at all. They hold no token: it takes that from its environment.
std::optional<Json> reglagesDuPont(std::string_view id, const std::string& pont);

}  // namespace tarnavelle::Plateau::interne
