// What is added to an agent's launch so that it reaches the control door: the bridge declared as its
// MCP server, by a configuration file or by command-line words, and environment variables. With
// the user's setting off, or for a program that does not speak MCP, nothing at all is added. Writing the
// file, and keeping it private for the token it holds, are the launcher's business. codex's words hold the
// token, too: it then stands in that process's arguments, which other processes can read. Safe from any thread.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Agents/AgentCLI.hpp"
#include "Socle/Environnement.hpp"
#include "Socle/JSON.hpp"

namespace tarnavelle::InjectionPorte {

/// How a program takes its MCP configuration.
enum class FormeInjection {
  fichierJSON,  ///< a JSON file, named by one flag
  tomlPointe,   ///< dotted TOML overrides, repeated on the command line
};

/// The name under which the bridge is declared to the agent.
inline constexpr std::string_view nomServeur = "tarnavelle";

/// The identifiers of the programs that speak MCP.
const std::set<std::string, std::less<>>& idsMCP();

bool parleMCP(const AgentCLI& cli);

/// Nothing for a program that does not speak MCP.
std::optional<FormeInjection> forme(const AgentCLI& cli);

/// The flag that gives the configuration file, the same for every program.
std::string_view drapeauConfig(const AgentCLI& cli);

/// What an agent must know of the door. An empty text is left out everywhere.
struct Porte {
  std::string url = {};     ///< base URL
  std::string token = {};   ///< bearer token
  std::string nodeId = {};  ///< the terminal tile that the agent runs in
  bool etendu = false;      ///< the bridge is to speak today's protocol
};

/// The MCP configuration file of a program that takes one, and its text, "{}" when a value is not
/// well-formed UTF-8. `binaireMCP` is the bridge's absolute path.
Json configJSON(std::string_view binaireMCP, const Porte& porte);
std::string configLigne(std::string_view binaireMCP, const Porte& porte);

/// The text as a TOML basic string. Escapes backslash, quotation mark, line feed and tab only.
std::string tomlChaine(std::string_view texte);

struct Lancement {
  const AgentCLI& cli;
  bool actif = false;             ///< the user's setting
  std::string cheminConfig = {};  ///< where `configLigne`'s text was written; empty when it was not
  std::string binaireMCP = {};
  Porte porte = {};
};

/// The words to append to the program's launch arguments. Those of `tomlPointe` hold the token.
std::vector<std::string> arguments(const Lancement& lancement);

/// The variables to add to the program's environment.
Environnement environnement(const AgentCLI& cli, bool actif, const Porte& porte);

/// The same variables, whatever the setting and the program: for a terminal whose program declares its
/// own end or blockage through the command-line client.
Environnement envPipe(const Porte& porte);

}  // namespace tarnavelle::InjectionPorte
