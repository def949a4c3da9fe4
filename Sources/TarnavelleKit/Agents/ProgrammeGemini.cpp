// gemini. It keeps variables that look like secrets from its servers, but for those named here, and reads
// "$NAME" as their value. https://geminicli.com/docs/tools/mcp-server/
#include <nlohmann/json.hpp>

#include "Socle/Shell.hpp"
#include "Socle/Texte.hpp"
#include "TableAgentsInterne.hpp"

namespace tarnavelle::interne {
namespace {

Environnement variables(const Demande& d) {
  Environnement variables = d.variables;
  variables.emplace(variableJeton, std::string("$") + variableJeton);
  return variables;
}

std::string texte(const Demande& d) {
  Json declaration = {{"args", Json::array()}, {"command", d.pont}, {"env", variables(d)}};
  if (d.approbation == Approbation::tout) declaration["trust"] = true;
  Json reglages = {{"mcpServers", {{serveur, std::move(declaration)}}}};
  if (const auto noms = approuves(d, "mcp_" + serveur + "_"); !noms.empty())
    reglages["tools"] = {{"allowed", noms}};
  return lisible(reglages);
}

Lignes lignes(const Demande& d, std::string_view) {
  if (secrete(d)) return {};
  std::string ajout = "gemini mcp add --scope user";
  if (d.approbation == Approbation::tout) ajout += " --trust";
  for (const auto& [nom, valeur] : variables(d)) ajout += " -e " + Shell::mot(nom + "=" + valeur);
  Lignes lignes = {ajout + " " + serveur + " " + Shell::mot(d.pont)};
  if (const auto noms = approuves(d, "mcp_" + serveur + "_"); !noms.empty())
    lignes.push_back("gemini --allowed-tools=" + Texte::joindre(noms, ","));
  return lignes;
}

}  // namespace

LigneAgent ligneGemini() {
  return {.cli = AgentCLI{.id = "gemini",
                          .titre = "Gemini CLI",
                          .editeur = "Google",
                          .cheminsBinaires = {"/opt/homebrew/bin/gemini", "/usr/local/bin/gemini",
                                              "~/.local/bin/gemini"},
                          .arguments = {},
                          .symbole = "circle.hexagongrid",
                          .teinte = TeinteLanceur::ok,
                          .alias = {"gemini cli", "gemini"},
                          .prefixeSession = "Gemini"},
          .formes = {
              {.nom = "gemini",
               .objet = "ce qui s'ajoute au « settings.json » de gemini",
               .texte = texte,
               .lignes = lignes,
               .approbationAuLancement = nullptr,
               .lieu = "dans ~/.gemini/settings.json, à fusionner avec ce qui s'y trouve",
               .sansApprobation = "gemini demande à chaque outil, et « gemini -p » les cache à son modèle",
               .approbationTotale = "\"trust\" : true",
               .remarque =
                   "Dans un dossier auquel il ne se fie pas, gemini n'ouvre aucun serveur MCP : approuvez le "
                   "dossier, ou lancez « gemini --skip-trust »."}}};
}

}  // namespace tarnavelle::interne
