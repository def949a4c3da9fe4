// The door as MCP tools: names, descriptions, request bodies and JSON-RPC replies, the verbs as their table has
// them. Reading lines and calling the door are the bridge's business. Safe from any thread.
// Protocol: Model Context Protocol 2024-11-05 over JSON-RPC 2.0.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Porte/OutilVoix.hpp"
#include "Porte/Version.hpp"
#include "Socle/JSON.hpp"

namespace tarnavelle::PorteMCP {

inline constexpr std::string_view prefixe = "trv_";
inline constexpr std::string_view versionProtocole = "2024-11-05";
inline constexpr std::string_view nomServeur = "tarnavelle-mcp";
inline constexpr std::string_view versionServeur = versionTarnavelle;

/// JSON-RPC error codes: the whole set that the bridge produces, and the protocol's own for a resource that is
/// not there. The last two are of its extended form alone.
enum class CodeErreur {
  illisible = -32700,
  methodeInconnue = -32601,
  parametres = -32602,
  requete = -32600,
  ressource = -32002,
};

/// The id of a request: absent when it had none, else any JSON value, echoed as it is.
using Identifiant = std::optional<Json>;

/// The bridge's own tool, answered without the door.
const OutilVoix& outilGuide();

/// The verbs by which an agent declares its own end or blockage.
const std::set<std::string, std::less<>>& verbesAvecNodeId();

/// Gives `nodeId` as "agent" to a body whose verb declares for its caller and names none.
void completerAgent(Json& corps, std::string_view nodeId);

/// One MCP tool description: "name", "description", "inputSchema".
Json outil(const OutilVoix& outil);

/// Every verb of the door, in table order.
std::vector<Json> outils();

/// What "tools/list" returns: `outils`, then the guide's tool.
std::vector<Json> outilsExposes();

/// The names of the tools that change nothing: those of the verbs that only look, and the guide's.
std::vector<std::string> outilsDeLecture();

/// Whether the bridge itself answers the tool of that name, with or without the prefix.
bool estLocal(std::string_view nom);

/// The door's verb for a tool name. Does not check that it exists: the door refuses unknown verbs.
std::string verbe(std::string_view depuisOutil);

/// The body to post to the door: the arguments plus "action". Arguments that are no object are none.
Json corpsAppel(std::string_view outil, Json arguments);

/// The same, with `completerAgent`.
Json corpsAppel(std::string_view outil, Json arguments, std::string_view nodeId);

/// What the agent reads of a tool call.
struct ResultatAppel {
  std::string corpsJSON;  ///< the content's text: the door's reply as it stands, or the guide
  bool ok = false;
  bool objet = false;  ///< the text is a JSON object that says whether it is ok
};

/// The result of a tool call: the text as content, and whether it is an error.
Json contenuAppel(std::string corpsJSON, bool ok);

/// A refusal by the bridge itself, in the shape of the door's replies.
Json refus(std::string_view message);

Json resultat(Identifiant id, Json resultat);
Json erreur(Identifiant id, CodeErreur code, std::string_view message);
Json reponseInitialize(Identifiant id);
Json reponseListe(Identifiant id);

/// One line of text, no line feed; "{}" when a text in the object is not well-formed UTF-8. So do the lines
/// below, for the id too.
std::string ligne(const Json& objet);

/// The line of `resultat` when the result is already written as compact JSON.
std::string ligneResultat(const Identifiant& id, std::string_view resultatEcrit);

/// The line of `resultat` for a tool call, written without a document.
std::string ligneAppel(const Identifiant& id, const ResultatAppel& appel);

/// The line of `reponseListe`; the list, which never changes, is written once for the whole process.
std::string ligneListe(const Identifiant& id);

}  // namespace tarnavelle::PorteMCP
