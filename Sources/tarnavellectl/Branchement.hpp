// The command that connects an agent's program to the bridge: which bridge, which door, in what form; and what
// the operator is told of it. The forms themselves are the kit's.
#pragma once

#include <vector>

#include "Porte/OutilVoix.hpp"
#include "Session.hpp"
#include "Socle/JSON.hpp"

namespace tarnavelle::Branchement {

/// What the command can be told: the forms, and the rest.
std::vector<ParamVoix> parametres();

/// Writes the configuration, alone, to standard output or to a file, and what to do with it to standard error.
int configurationMCP(Session& session, const Json& arguments);

}  // namespace tarnavelle::Branchement
