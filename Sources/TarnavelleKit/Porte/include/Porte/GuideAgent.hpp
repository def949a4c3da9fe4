// The agent guide: a French Markdown document that tells an agent where it runs, which variables and
// tools it has, and the house rules. Its list of tools comes from the verb table. Safe from any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Socle/Environnement.hpp"

namespace tarnavelle::GuideAgent {

/// What the guide knows of its reader. An empty text means unknown. The bearer token is not here on
/// purpose: the guide names its variable and never holds its value.
struct Contexte {
  std::string urlControle;      ///< base URL of the door, without a trailing "/action"
  std::string binaireCtl;       ///< path of the command-line client
  std::string binaireMCP;       ///< path of the bridge
  std::string nodeId;           ///< name of the calling agent's tile
  std::string scene;            ///< name of the current scene
  std::string cheminGuide;      ///< path of the guide kept as a file
  std::string cheminConfigMCP;  ///< path of the written MCP configuration

  bool operator==(const Contexte&) const = default;

  struct Defauts {
    std::string binaireCtl;
    std::string binaireMCP;
  };
  /// Each field from its variable, trimmed; the two binaries fall back on `defauts`, taken as they are.
  static Contexte depuisEnvironnement(const Variables& environnement, Defauts defauts);
};

/// The whole document, ending with a line feed.
std::string markdown(const Contexte& contexte);

/// File name of a guide kept for one session.
std::string nomFichier(std::string_view session);

/// Examples of the command-line client's use, each the words that follow its name.
const std::vector<std::string_view>& exemplesCLI();

/// The sections of the document, each ending with a line feed.
std::string enTete(const Contexte& contexte);
std::string sectionEnvironnement(const Contexte& contexte);
std::string sectionMCP(const Contexte& contexte);
std::string sectionRepliCLI();
std::string sectionRegles();

}  // namespace tarnavelle::GuideAgent
