// The one table of the door's verbs. A row holds all there is to know of a verb; the MCP tools, the
// client's commands, the guides, the voice's tools and the decoder are derived from it.
#pragma once

#include <vector>

#include "Porte/LigneVerbe.hpp"

namespace tarnavelle {

/// The rows in their fixed order, built on first use.
const std::vector<LigneVerbe>& tableVerbes();

}  // namespace tarnavelle
