#include "Agents/ConfigurationMCP.hpp"

#include "Agents/InjectionPorte.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/Shell.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::ConfigurationMCP {
namespace {

using InjectionPorte::nomServeur;
using InjectionPorte::tomlChaine;
using Lignes = std::vector<std::string>;

constexpr const char* variableURL = "TARNAVELLE_CONTROL_URL";
constexpr const char* variableJeton = "TARNAVELLE_CONTROL_TOKEN";
constexpr const char* variableAgent = "TARNAVELLE_NODE_ID";

const std::string serveur(nomServeur);

std::string lisible(const Json& valeur) { return EcritureJSON::lisible(valeur).value_or("{}") + "\n"; }
std::string compacte(const Json& valeur) { return EcritureJSON::compacte(valeur).value_or("{}"); }

/// The names of the approved tools, each behind `prefixe`.
Lignes approuves(const Demande& d, const std::string& prefixe) {
  Lignes noms;
  if (d.approbation == Approbation::lecture)
    for (const std::string& outil : d.lecture) noms.push_back(prefixe + outil);
  return noms;
}

// claude. A server whose tools are not always loaded shows its model their names only.
// https://code.claude.com/docs/en/mcp, https://code.claude.com/docs/en/cli-reference

Json serveurClaude(const Demande& d) {
  return {{"alwaysLoad", true}, {"args", Json::array()}, {"command", d.pont}, {"env", d.variables}};
}

Json configClaude(const Demande& d) { return {{"mcpServers", {{serveur, serveurClaude(d)}}}}; }

/// Behind "=": without it the flag would take the words that follow for names of tools, too.
std::string approbationClaude(const Demande& d) {
  if (d.approbation == Approbation::tout) return " --allowedTools=mcp__" + serveur;
  const auto noms = approuves(d, "mcp__" + serveur + "__");
  return noms.empty() ? "" : " --allowedTools=" + Texte::joindre(noms, ",");
}

std::string texteClaude(const Demande& d) { return lisible(configClaude(d)); }

Lignes lignesClaude(const Demande& d, std::string_view fichier) {
  if (fichier.empty() && secrete(d)) return {};
  return {"claude --mcp-config=" + Shell::mot(fichier.empty() ? compacte(configClaude(d)) : fichier) +
          approbationClaude(d)};
}

std::string texteServeur(const Demande& d) { return lisible(serveurClaude(d)); }

Lignes lignesServeur(const Demande& d, std::string_view) {
  if (secrete(d)) return {};
  Lignes lignes = {"claude mcp add-json --scope user " + serveur + " " +
                   Shell::mot(compacte(serveurClaude(d)))};
  if (const auto approbation = approbationClaude(d); !approbation.empty())
    lignes.push_back("claude" + approbation);
  return lignes;
}

// codex: dotted TOML overrides. It gives a server its own few variables, those named here, no other.
// https://developers.openai.com/codex/mcp

std::string motsCodex(const Demande& d) {
  std::string mots;
  const auto ajouter = [&mots](const std::string& cle, const std::string& valeur) {
    mots += (mots.empty() ? "-c " : " -c ") + Shell::mot("mcp_servers." + serveur + "." + cle + "=" + valeur);
  };
  ajouter("command", tomlChaine(d.pont));
  Lignes heritees;
  for (const char* nom : {variableURL, variableJeton, variableAgent})
    if (!d.variables.contains(nom) && (d.porteHeritee || nom == variableAgent)) heritees.emplace_back(nom);
  if (!heritees.empty()) ajouter("env_vars", "[" + Texte::joindre(heritees, ",", tomlChaine) + "]");
  for (const auto& [nom, valeur] : d.variables) ajouter("env." + nom, tomlChaine(valeur));
  if (d.approbation == Approbation::tout) ajouter("default_tools_approval_mode", tomlChaine("approve"));
  if (const auto noms = approuves(d, ""); !noms.empty())
    ajouter("tools", "{" + Texte::joindre(noms, ",", [](const std::string& nom) {
                       return nom + "={approval_mode=" + tomlChaine("approve") + "}";
                     }) + "}");
  return mots;
}

std::string texteCodex(const Demande& d) { return motsCodex(d) + "\n"; }

Lignes lignesCodex(const Demande& d, std::string_view fichier) {
  if (!fichier.empty()) return {"eval \"codex $(cat " + Shell::mot(fichier) + ")\""};
  if (secrete(d)) return {};
  return {"codex " + motsCodex(d)};
}

// gemini. It keeps variables that look like secrets from its servers, but for those named here, and reads
// "$NAME" as their value. https://geminicli.com/docs/tools/mcp-server/

Environnement variablesGemini(const Demande& d) {
  Environnement variables = d.variables;
  variables.emplace(variableJeton, std::string("$") + variableJeton);
  return variables;
}

std::string texteGemini(const Demande& d) {
  Json declare = {{"args", Json::array()}, {"command", d.pont}, {"env", variablesGemini(d)}};
  if (d.approbation == Approbation::tout) declare["trust"] = true;
  Json reglages = {{"mcpServers", {{serveur, std::move(declare)}}}};
  if (const auto noms = approuves(d, "mcp_" + serveur + "_"); !noms.empty())
    reglages["tools"] = {{"allowed", noms}};
  return lisible(reglages);
}

Lignes lignesGemini(const Demande& d, std::string_view) {
  if (secrete(d)) return {};
  std::string ajout = "gemini mcp add --scope user";
  if (d.approbation == Approbation::tout) ajout += " --trust";
  for (const auto& [nom, valeur] : variablesGemini(d)) ajout += " -e " + Shell::mot(nom + "=" + valeur);
  Lignes lignes = {ajout + " " + serveur + " " + Shell::mot(d.pont)};
  if (const auto noms = approuves(d, "mcp_" + serveur + "_"); !noms.empty())
    lignes.push_back("gemini --allowed-tools=" + Texte::joindre(noms, ","));
  return lignes;
}

// opencode. It approves what nothing forbids, and the last rule that matches wins: the general one stands
// first, as the sorted keys put it. https://opencode.ai/docs/mcp-servers, https://opencode.ai/docs/permissions

Json configOpencode(const Demande& d) {
  Json declare = {{"command", Json::array({d.pont})}, {"type", "local"}};
  if (!d.variables.empty()) declare["environment"] = d.variables;
  Json regles = {{serveur + "_*", d.approbation == Approbation::tout ? "allow" : "ask"}};
  for (const std::string& nom : approuves(d, serveur + "_")) regles[nom] = "allow";
  return {{"mcp", {{serveur, std::move(declare)}}}, {"permission", std::move(regles)}};
}

std::string texteOpencode(const Demande& d) { return lisible(configOpencode(d)); }

Lignes lignesOpencode(const Demande& d, std::string_view fichier) {
  if (!fichier.empty()) return {"OPENCODE_CONFIG=" + Shell::mot(fichier) + " opencode"};
  if (secrete(d)) return {};
  return {"OPENCODE_CONFIG_CONTENT=" + Shell::mot(compacte(configOpencode(d))) + " opencode"};
}

}  // namespace

bool secrete(const Demande& demande) { return demande.variables.contains(variableJeton); }

const std::vector<Forme>& formes() {
  static const std::vector<Forme> liste = {
      {.nom = "claude",
       .objet = "le fichier de claude, celui que prend « --mcp-config »",
       .texte = texteClaude,
       .lignes = lignesClaude,
       .approbationAuLancement = approbationClaude,
       .lieu = "dans « .mcp.json » à la racine d'un projet ; pour tous les projets, voyez --serveur",
       .sansApprobation = "claude demande à chaque outil, et « claude -p » les refuse",
       .approbationTotale = "--allowedTools=mcp__tarnavelle"},
      {.nom = "serveur",
       .objet = "le serveur seul, pour « claude mcp add-json »",
       .texte = texteServeur,
       .lignes = lignesServeur,
       .approbationAuLancement = approbationClaude,
       .lieu = "dans ~/.claude.json, sous « mcpServers » puis « tarnavelle » : « claude mcp add-json » l'y met",
       .sansApprobation = "claude demande à chaque outil, et « claude -p » les refuse",
       .approbationTotale = "--allowedTools=mcp__tarnavelle, à chaque lancement"},
      {.nom = "codex",
       .objet = "les mots « -c » de codex",
       .texte = texteCodex,
       .lignes = lignesCodex,
       .approbationAuLancement = nullptr,
       .lieu = "dans un alias ; « codex exec » les prend aussi",
       .sansApprobation = "codex demande à chaque outil, et « codex exec » les refuse",
       .approbationTotale = "default_tools_approval_mode=\"approve\"",
       .remarque =
           "Ces mots valent pour le terminal où codex est lancé. Les mêmes réglages dans "
           "~/.codex/config.toml passent par son serveur partagé, qui garde l'environnement, donc le nom "
           "d'agent, du premier terminal ouvert : lancez alors « codex --no-daemon ».",
       .jetonEnArgument = true},
      {.nom = "gemini",
       .objet = "ce qui s'ajoute au « settings.json » de gemini",
       .texte = texteGemini,
       .lignes = lignesGemini,
       .approbationAuLancement = nullptr,
       .lieu = "dans ~/.gemini/settings.json, à fusionner avec ce qui s'y trouve",
       .sansApprobation = "gemini demande à chaque outil, et « gemini -p » les cache à son modèle",
       .approbationTotale = "\"trust\" : true",
       .remarque = "Dans un dossier auquel il ne se fie pas, gemini n'ouvre aucun serveur MCP : approuvez le "
                   "dossier, ou lancez « gemini --skip-trust »."},
      {.nom = "opencode",
       .objet = "ce qui s'ajoute à l'« opencode.json » d'opencode",
       .texte = texteOpencode,
       .lignes = lignesOpencode,
       .approbationAuLancement = nullptr,
       .lieu = "dans ~/.config/opencode/opencode.json, à fusionner avec ce qui s'y trouve",
       .sansApprobation = "opencode demande à chaque outil, et « opencode run » les refuse",
       .approbationTotale = "\"tarnavelle_*\" : \"allow\""},
  };
  return liste;
}

}  // namespace tarnavelle::ConfigurationMCP
