#include <algorithm>

#include "TableAgentsInterne.hpp"

namespace tarnavelle::interne {

const std::vector<LigneAgent>& tableAgents() {
  static const std::vector<LigneAgent> table = {
      ligneClaude(),
      ligneCodex(),
      {.cli =
           AgentCLI{.id = "grok",
                    .titre = "Grok CLI",
                    .editeur = "xAI",
                    .cheminsBinaires = {"/opt/homebrew/bin/grok", "/usr/local/bin/grok", "~/.local/bin/grok"},
                    .arguments = {},
                    .symbole = "bolt",
                    .teinte = TeinteLanceur::alerte,
                    .alias = {"grok cli", "grok"},
                    .prefixeSession = "Grok"}},
      ligneGemini(),
      {.cli = AgentCLI{.id = "hermes",
                       .titre = "Hermes Agent",
                       .editeur = "Nous Research",
                       .cheminsBinaires = {"~/.local/bin/hermes", "/opt/homebrew/bin/hermes",
                                           "/usr/local/bin/hermes"},
                       .arguments = {},
                       .symbole = "paperplane",
                       .teinte = TeinteLanceur::alerte,
                       .alias = {"hermes agent", "hermes"},
                       .prefixeSession = "Hermes"}},
      ligneOpencode(),
  };
  return table;
}

const LigneAgent* ligneAgent(std::string_view id) {
  const auto ligne =
      std::ranges::find_if(tableAgents(), [id](const LigneAgent& l) { return l.cli && l.cli->id == id; });
  return ligne == tableAgents().end() ? nullptr : &*ligne;
}

}  // namespace tarnavelle::interne
