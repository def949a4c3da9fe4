// The table of the agents' programs: a row holds all that is known of one, and the catalogue, what is added to
// a launch and what is configured by hand are read from it. Immutable: safe from any thread. Private to this
// folder.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Agents/AgentCLI.hpp"
#include "Agents/ConfigurationMCP.hpp"
#include "Agents/InjectionPorte.hpp"

namespace tarnavelle::interne {

struct LigneAgent {
  /// Its entry of the catalogue; nothing for a program that the cockpit does not start.
  std::optional<AgentCLI> cli;

  /// How a launch of the cockpit's gives it the bridge; nothing when it does not speak MCP there.
  std::optional<InjectionPorte::FormeInjection> injection = {};

  /// The flag that gives it a file of hooks, which a flight log needs; empty when it takes none.
  std::string_view drapeauHooks = {};

  /// The configurations that a person may give it, the usual one first.
  std::vector<ConfigurationMCP::Forme> formes = {};
};

/// In the order of the catalogue.
const std::vector<LigneAgent>& tableAgents();

/// The row of the program of exactly that identifier, or null.
const LigneAgent* ligneAgent(std::string_view id);

// The rows that have a configuration to write, each in a file of its own.
LigneAgent ligneClaude();
LigneAgent ligneCodex();
LigneAgent ligneGemini();
LigneAgent ligneOpencode();

// What those files share.

using ConfigurationMCP::Approbation;
using ConfigurationMCP::Demande;
using InjectionPorte::FormeInjection;
using Lignes = std::vector<std::string>;

/// What the bridge must know of the door, as InjectionPorte orders them.
inline constexpr const char* variableURL = "TARNAVELLE_CONTROL_URL";
inline constexpr const char* variableJeton = "TARNAVELLE_CONTROL_TOKEN";
inline constexpr const char* variableAgent = "TARNAVELLE_NODE_ID";
inline constexpr const char* variableEtendu = "TARNAVELLE_MCP_ETENDU";

/// The name under which the bridge is declared.
inline const std::string serveur(InjectionPorte::nomServeur);

/// The texts of a configuration, "{}" when JSON cannot hold a value; the readable one ends with a line feed.
std::string lisible(const Json& configuration);
std::string compacte(const Json& configuration);

/// The names of the approved tools, each behind `prefixe`.
Lignes approuves(const Demande& demande, const std::string& prefixe);

}  // namespace tarnavelle::interne
