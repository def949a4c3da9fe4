// The one table of the door's verbs. A row holds all there is to know of a verb; the MCP tools, the
// client's commands, the guides, the voice's tools and the decoder are derived from it.
#pragma once

#include <string_view>
#include <vector>

#include "Porte/CommandeControle.hpp"
#include "Porte/OutilVoix.hpp"

namespace tarnavelle {

struct LigneVerbe {
  OutilVoix outil;
  std::vector<std::string_view> alias;                 ///< English names, normalised
  CommandeControle (*decoder)(const Json& arguments);  ///< never fails; reads through `Champ`
};

/// The rows in their fixed order, built on first use.
const std::vector<LigneVerbe>& tableVerbes();

}  // namespace tarnavelle
