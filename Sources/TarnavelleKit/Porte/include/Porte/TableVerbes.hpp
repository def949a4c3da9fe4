// The one table of the door's verbs: the MCP tools, the client's commands, the guide and the decoder take from
// its rows all that they know of a verb. Never changes; safe from any thread.
#pragma once

#include <vector>

#include "Porte/LigneVerbe.hpp"

namespace tarnavelle {

/// The rows in their fixed order, built on first use.
const std::vector<LigneVerbe>& tableVerbes();

}  // namespace tarnavelle
