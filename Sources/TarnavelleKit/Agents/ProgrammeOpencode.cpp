// opencode. It approves what nothing forbids, and the last rule that matches wins: the general one stands
// first, as the sorted keys put it. https://opencode.ai/docs/mcp-servers, https://opencode.ai/docs/permissions
#include <nlohmann/json.hpp>

#include "Socle/Shell.hpp"
#include "TableAgentsInterne.hpp"

namespace tarnavelle::interne {
namespace {

Json configuration(const Demande& d) {
  Json declaration = {{"command", Json::array({d.pont})}, {"type", "local"}};
  if (!d.variables.empty()) declaration["environment"] = d.variables;
  Json regles = {{serveur + "_*", d.approbation == Approbation::tout ? "allow" : "ask"}};
  for (const std::string& nom : approuves(d, serveur + "_")) regles[nom] = "allow";
  return {{"mcp", {{serveur, std::move(declaration)}}}, {"permission", std::move(regles)}};
}

std::string texte(const Demande& d) { return lisible(configuration(d)); }

Lignes lignes(const Demande& d, std::string_view fichier) {
  if (!fichier.empty()) return {"OPENCODE_CONFIG=" + Shell::mot(fichier) + " opencode"};
  if (secrete(d)) return {};
  return {"OPENCODE_CONFIG_CONTENT=" + Shell::mot(compacte(configuration(d))) + " opencode"};
}

}  // namespace

LigneAgent ligneOpencode() {
  return {.cli = {},
          .formes = {{.nom = "opencode",
                      .objet = "ce qui s'ajoute à l'« opencode.json » d'opencode",
                      .texte = texte,
                      .lignes = lignes,
                      .approbationAuLancement = nullptr,
                      .lieu = "dans ~/.config/opencode/opencode.json, à fusionner avec ce qui s'y trouve",
                      .sansApprobation = "opencode demande à chaque outil, et « opencode run » les refuse",
                      .approbationTotale = "\"tarnavelle_*\" : \"allow\""}}};
}

}  // namespace tarnavelle::interne
