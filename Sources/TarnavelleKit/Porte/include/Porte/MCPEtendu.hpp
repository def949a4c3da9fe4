// The door as MCP tools, as today's protocol has it: versions, instructions, titles, annotations, schemas,
// paged screens, the guide as a resource and a prompt, progress. What a verb is comes from its row. Which
// request gets what is the bridge's business. Safe from any thread. Protocol: Model Context Protocol,
// https://modelcontextprotocol.io/specification, each version as its own.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "Porte/LigneVerbe.hpp"
#include "Porte/PorteMCP.hpp"
#include "Socle/JSON.hpp"

namespace tarnavelle::MCPEtendu {

/// In the order of time: a later one has what an earlier one has, but for batches of requests, which only
/// 2025-03-26 knows.
enum class Version { v2024_11_05, v2025_03_26, v2025_06_18, v2025_11_25 };
inline constexpr Version derniere = Version::v2025_11_25;

std::string_view nom(Version version);

/// The version that is asked for, the latest when it is not known.
Version negocier(std::string_view demandee);

/// The results of "initialize" and "tools/list".
Json accueil(Version version);
Json outils(Version version);

/// The row of a tool's verb, by any of its names; null for one that the table has not.
const LigneVerbe* ligne(std::string_view outil);

/// The result of a tool call, as one line of compact JSON. A reply whose data is a screen is given as lines,
/// behind the rest of it. `ligne` may be null.
std::string resultatAppel(const PorteMCP::ResultatAppel& appel, const LigneVerbe* ligne, Version version);

/// The guide as a resource and as a prompt: the results of "resources/list" and "prompts/list", then of
/// "resources/read" and "prompts/get" with the guide's text; nothing when it is another one that is asked for.
Json ressources(Version version);
Json invites(Version version);
std::optional<Json> ressource(std::string_view uri, const std::string& guide);
std::optional<Json> invite(std::string_view nom, const std::string& guide);

/// What a client may be told of a call under way, as "notifications/progress": for how long, out of how long
/// when that is known.
Json progres(const Json& jeton, std::chrono::seconds ecoulees, std::optional<std::chrono::seconds> total,
             Version version);

}  // namespace tarnavelle::MCPEtendu
