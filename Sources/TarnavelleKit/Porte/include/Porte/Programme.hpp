// Where the programs of the house stand on this machine.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Socle/Environnement.hpp"

namespace tarnavelle::Programme {

/// The absolute path of the running program, links followed; empty when the system does not tell.
std::string chemin();

/// The absolute path at which another program of the house stands when it is beside this one.
std::string voisin(std::string_view nom);

/// The absolute path of the bridge: TARNAVELLE_MCP_SERVER, else the one beside this program. Nothing when
/// no executable stands there.
std::optional<std::string> pont(const Variables& environnement);

}  // namespace tarnavelle::Programme
