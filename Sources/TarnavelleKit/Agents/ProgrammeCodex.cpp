// codex: dotted TOML overrides. It gives a server its own few variables, those named here, no other.
// https://developers.openai.com/codex/mcp
#include "Socle/Shell.hpp"
#include "Socle/Texte.hpp"
#include "TableAgentsInterne.hpp"

namespace tarnavelle::interne {
namespace {

using InjectionPorte::tomlChaine;

std::string mots(const Demande& d) {
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

std::string texte(const Demande& d) { return mots(d) + "\n"; }

Lignes lignes(const Demande& d, std::string_view fichier) {
  if (!fichier.empty()) return {"eval \"codex $(cat " + Shell::mot(fichier) + ")\""};
  if (secrete(d)) return {};
  return {"codex " + mots(d)};
}

}  // namespace

LigneAgent ligneCodex() {
  return {
      .cli =
          AgentCLI{.id = "codex",
                   .titre = "Codex",
                   .editeur = "OpenAI",
                   .cheminsBinaires = {"/opt/homebrew/bin/codex", "/usr/local/bin/codex", "~/.local/bin/codex"},
                   .arguments = {},
                   .symbole = "chevron.left.forwardslash.chevron.right",
                   .teinte = TeinteLanceur::forge,
                   .alias = {"codex", "open ai", "openai"},
                   .prefixeSession = "Codex"},
      .injection = FormeInjection::tomlPointe,
      .formes = {
          {.nom = "codex",
           .objet = "les mots « -c » de codex",
           .texte = texte,
           .lignes = lignes,
           .approbationAuLancement = nullptr,
           .lieu = "dans un alias ; « codex exec » les prend aussi",
           .sansApprobation = "codex demande à chaque outil, et « codex exec » les refuse",
           .approbationTotale = "default_tools_approval_mode=\"approve\"",
           .remarque =
               "Ces mots valent pour le terminal où codex est lancé. Les mêmes réglages dans "
               "~/.codex/config.toml passent par son serveur partagé, qui garde l'environnement, donc le nom "
               "d'agent, du premier terminal ouvert : lancez alors « codex --no-daemon ».",
           .jetonEnArgument = true}}};
}

}  // namespace tarnavelle::interne
