// claude. A server whose tools are not always loaded shows its model their names only.
// https://code.claude.com/docs/en/mcp, https://code.claude.com/docs/en/cli-reference
#include <nlohmann/json.hpp>

#include "Socle/Shell.hpp"
#include "Socle/Texte.hpp"
#include "TableAgentsInterne.hpp"

namespace tarnavelle::interne {
namespace {

Json declaration(const Demande& d) {
  return {{"alwaysLoad", true}, {"args", Json::array()}, {"command", d.pont}, {"env", d.variables}};
}

Json configuration(const Demande& d) { return {{"mcpServers", {{serveur, declaration(d)}}}}; }

/// Behind "=": without it the flag would take the words that follow for names of tools, too.
std::string approbation(const Demande& d) {
  if (d.approbation == Approbation::tout) return " --allowedTools=mcp__" + serveur;
  const auto noms = approuves(d, "mcp__" + serveur + "__");
  return noms.empty() ? "" : " --allowedTools=" + Texte::joindre(noms, ",");
}

std::string texte(const Demande& d) { return lisible(configuration(d)); }

Lignes lignes(const Demande& d, std::string_view fichier) {
  if (fichier.empty() && secrete(d)) return {};
  return {"claude --mcp-config=" + Shell::mot(fichier.empty() ? compacte(configuration(d)) : fichier) +
          approbation(d)};
}

std::string texteServeur(const Demande& d) { return lisible(declaration(d)); }

Lignes lignesServeur(const Demande& d, std::string_view) {
  if (secrete(d)) return {};
  Lignes lignes = {"claude mcp add-json --scope user " + serveur + " " + Shell::mot(compacte(declaration(d)))};
  if (const auto approuve = approbation(d); !approuve.empty()) lignes.push_back("claude" + approuve);
  return lignes;
}

}  // namespace

LigneAgent ligneClaude() {
  return {
      .cli = AgentCLI{.id = "claude",
                      .titre = "Claude Code",
                      .editeur = "Anthropic",
                      .cheminsBinaires = {"~/.local/bin/claude", "/opt/homebrew/bin/claude",
                                          "/usr/local/bin/claude"},
                      .arguments = {},
                      .symbole = "sparkle",
                      .teinte = TeinteLanceur::accent,
                      .alias = {"claude code", "claude"},
                      .prefixeSession = "Claude"},
      .injection = FormeInjection::fichierJSON,
      .drapeauHooks = "--settings",
      .formes = {
          {.nom = "claude",
           .objet = "le fichier de claude, celui que prend « --mcp-config »",
           .texte = texte,
           .lignes = lignes,
           .approbationAuLancement = approbation,
           .lieu = "dans « .mcp.json » à la racine d'un projet ; pour tous les projets, voyez --serveur",
           .sansApprobation = "claude demande à chaque outil, et « claude -p » les refuse",
           .approbationTotale = "--allowedTools=mcp__tarnavelle"},
          {.nom = "serveur",
           .objet = "le serveur seul, pour « claude mcp add-json »",
           .texte = texteServeur,
           .lignes = lignesServeur,
           .approbationAuLancement = approbation,
           .lieu =
               "dans ~/.claude.json, sous « mcpServers » puis « tarnavelle » : « claude mcp add-json » l'y met",
           .sansApprobation = "claude demande à chaque outil, et « claude -p » les refuse",
           .approbationTotale = "--allowedTools=mcp__tarnavelle, à chaque lancement"}}};
}

}  // namespace tarnavelle::interne
