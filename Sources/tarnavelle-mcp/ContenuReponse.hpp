// What the agent is given of the door's reply: the result of an MCP tool call. Safe from any thread.
#pragma once

#include "Appel/AppelPorte.hpp"
#include "Porte/PorteMCP.hpp"

namespace tarnavelle {

/// The door's reply as it stands, an error unless it is an object whose "ok" is true; without a
/// readable reply, a refusal that gives the status.
PorteMCP::ResultatAppel contenuReponse(Coffre coffre);

}  // namespace tarnavelle
