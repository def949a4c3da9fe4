#include <algorithm>

#include "Agents/ConfigurationMCP.hpp"
#include "ProgrammesInterne.hpp"
#include "Socle/LectureJSON.hpp"

namespace tarnavelle::Plateau::interne {
namespace {

struct Conversation {
  std::string_view programme, neuve, reprise;
  bool sousCommande = false;
};
constexpr Conversation conversations[] = {
    {"claude", "--session-id", "--resume"},
    {"gemini", "--session-id", "--resume"},
    {"codex", "", "resume", true},
    {"opencode", "", "--session"},
};

/// Its bridge inherits the environment. https://opencode.ai/docs/config
AgentCLI opencode() {
  return {.id = "opencode",
          .titre = "opencode",
          .editeur = "Anomaly",
          .cheminsBinaires = {"~/.opencode/bin/opencode", "/opt/homebrew/bin/opencode",
                              "/usr/local/bin/opencode", "~/.local/bin/opencode"},
          .arguments = {},
          .symbole = "terminal",
          .alias = {"open code", "opencode"},
          .prefixeSession = "Opencode"};
}

Programme rangee(const AgentCLI& cli) {
  const auto sait = std::ranges::find(conversations, cli.id, &Conversation::programme);
  if (sait == std::end(conversations)) return {.cli = cli};
  return {cli, sait->neuve, sait->reprise, sait->sousCommande};
}

}  // namespace

const std::vector<Programme>& programmes() {
  static const std::vector<Programme> tous = [] {
    std::vector<Programme> table;
    for (const AgentCLI& cli : AgentCLI::tous()) table.push_back(rangee(cli));
    table.push_back(rangee(opencode()));
    return table;
  }();
  return tous;
}

const Programme* programme(std::string_view id) {
  const auto trouve = std::ranges::find_if(programmes(), [&](const Programme& p) { return p.cli.id == id; });
  return trouve == programmes().end() ? nullptr : &*trouve;
}

std::optional<Json> reglagesDuPont(std::string_view id, const std::string& pont) {
  if (id != "gemini" && id != "opencode") return std::nullopt;
  const auto& formes = ConfigurationMCP::formes();
  const auto forme = std::ranges::find(formes, id, &ConfigurationMCP::Forme::nom);
  return forme == formes.end() ? std::nullopt : LectureJSON::objet(forme->texte({.pont = pont}));
}

}  // namespace tarnavelle::Plateau::interne
