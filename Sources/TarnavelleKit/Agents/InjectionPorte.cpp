#include "Agents/InjectionPorte.hpp"

#include <nlohmann/json.hpp>
#include <utility>

#include "Socle/EcritureJSON.hpp"
#include "TableAgentsInterne.hpp"

namespace tarnavelle::InjectionPorte {
namespace {

/// The variables that have a value, in their fixed order.
std::vector<std::pair<std::string, std::string>> variables(const Porte& porte) {
  std::vector<std::pair<std::string, std::string>> presentes;
  const auto ajouter = [&presentes](std::string nom, const std::string& valeur) {
    if (!valeur.empty()) presentes.emplace_back(std::move(nom), valeur);
  };
  ajouter(interne::variableURL, porte.url);
  ajouter(interne::variableJeton, porte.token);
  ajouter(interne::variableAgent, porte.nodeId);
  ajouter(interne::variableEtendu, porte.etendu ? "1" : "");
  return presentes;
}

/// The words of dotted TOML overrides. A key ends at the first "=".
std::vector<std::string> motsTOML(std::string_view binaireMCP, const Porte& porte) {
  if (binaireMCP.empty()) return {};
  std::vector<std::string> mots;
  const auto ajouter = [&mots](const std::string& cle, std::string_view valeur) {
    mots.emplace_back("-c");
    mots.push_back("mcp_servers." + std::string(nomServeur) + "." + cle + "=" + tomlChaine(valeur));
  };
  ajouter("command", binaireMCP);
  for (const auto& [nom, valeur] : variables(porte)) ajouter("env." + nom, valeur);
  return mots;
}

}  // namespace

const std::set<std::string, std::less<>>& idsMCP() {
  static const auto ids = [] {
    std::set<std::string, std::less<>> noms;
    for (const auto& ligne : interne::tableAgents())
      if (ligne.cli && ligne.injection) noms.insert(ligne.cli->id);
    return noms;
  }();
  return ids;
}

bool parleMCP(const AgentCLI& cli) { return idsMCP().contains(cli.id); }

std::optional<FormeInjection> forme(const AgentCLI& cli) {
  const auto* ligne = interne::ligneAgent(cli.id);
  return ligne ? ligne->injection : std::nullopt;
}

std::string_view drapeauConfig(const AgentCLI&) { return "--mcp-config"; }

Json configJSON(std::string_view binaireMCP, const Porte& porte) {
  const Json serveur = {{"command", binaireMCP}, {"args", Json::array()}, {"env", envPipe(porte)}};
  return {{"mcpServers", {{nomServeur, serveur}}}};
}

std::string configLigne(std::string_view binaireMCP, const Porte& porte) {
  return EcritureJSON::lisible(configJSON(binaireMCP, porte)).value_or("{}");
}

std::string tomlChaine(std::string_view texte) {
  std::string chaine = "\"";
  for (const char c : texte) {
    switch (c) {
      case '\\': chaine += R"(\\)"; break;
      case '"': chaine += R"(\")"; break;
      case '\n': chaine += R"(\n)"; break;
      case '\t': chaine += R"(\t)"; break;
      default: chaine += c;
    }
  }
  return chaine += '"';
}

std::vector<std::string> arguments(const Lancement& lancement) {
  const auto prise = lancement.actif ? forme(lancement.cli) : std::nullopt;
  if (!prise) return {};
  switch (*prise) {
    case FormeInjection::fichierJSON:
      if (lancement.cheminConfig.empty()) return {};
      return {std::string(drapeauConfig(lancement.cli)), lancement.cheminConfig};
    case FormeInjection::tomlPointe: return motsTOML(lancement.binaireMCP, lancement.porte);
  }
  return {};
}

Environnement environnement(const AgentCLI& cli, bool actif, const Porte& porte) {
  return actif && parleMCP(cli) ? envPipe(porte) : Environnement{};
}

Environnement envPipe(const Porte& porte) {
  const auto presentes = variables(porte);
  return {presentes.begin(), presentes.end()};
}

}  // namespace tarnavelle::InjectionPorte
