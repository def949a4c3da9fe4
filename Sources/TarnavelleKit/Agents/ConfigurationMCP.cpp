#include "Agents/ConfigurationMCP.hpp"

#include <nlohmann/json.hpp>

#include "Socle/EcritureJSON.hpp"
#include "TableAgentsInterne.hpp"

namespace tarnavelle {

std::string interne::lisible(const Json& configuration) {
  return EcritureJSON::lisible(configuration).value_or("{}") + "\n";
}

std::string interne::compacte(const Json& configuration) {
  return EcritureJSON::compacte(configuration).value_or("{}");
}

interne::Lignes interne::approuves(const Demande& demande, const std::string& prefixe) {
  Lignes noms;
  if (demande.approbation == Approbation::lecture)
    for (const std::string& outil : demande.lecture) noms.push_back(prefixe + outil);
  return noms;
}

namespace ConfigurationMCP {

bool secrete(const Demande& demande) { return demande.variables.contains(interne::variableJeton); }

const std::vector<Forme>& formes() {
  static const std::vector<Forme> liste = [] {
    std::vector<Forme> toutes;
    for (const auto& ligne : interne::tableAgents())
      toutes.insert(toutes.end(), ligne.formes.begin(), ligne.formes.end());
    return toutes;
  }();
  return liste;
}

}  // namespace ConfigurationMCP
}  // namespace tarnavelle
