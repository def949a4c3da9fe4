#include "Catalogue.hpp"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "Branchement.hpp"
#include "Commandes.hpp"
#include "Porte/CommandeControle.hpp"
#include "Porte/PorteMCP.hpp"
#include "Proche.hpp"

namespace tarnavelle {
namespace {

using Genre = ParamVoix::Genre;

/// The client's own command so described; null for a verb of the door.
const CommandeLocale* locale(const OutilVoix& outil) {
  for (const CommandeLocale& c : commandesLocales())
    if (c.outil.nom == outil.nom) return &c;
  return nullptr;
}

}  // namespace

const std::vector<CommandeLocale>& commandesLocales() {
  static const auto commandes = [] {
    std::vector<CommandeLocale> liste = {
        {"Montre l'aide d'un verbe, ou l'aide générale.",
         {"aide", "", {{"verbe", Genre::texte, "Le verbe, ou la commande, dont on veut tout savoir.", false}}},
         {"help"},
         Commandes::aide,
         Choix::commande},
        {"Donne de quoi brancher un agent sur le pont, claude par défaut.",
         {"mcp-config",
          " La configuration dure : ni adresse ni jeton, le pont cherche la porte à chaque appel. La ligne à "
          "coller et ce qu'il faut savoir vont sur la sortie d'erreur.",
          Branchement::parametres()},
         {},
         Branchement::configurationMCP},
        {"Donne le guide de l'agent Tarnavelle, en Markdown.",
         {"guide",
          " Le jeton n'y est jamais.",
          {{"fichier", Genre::booleen,
            "true pour l'écrire dans guide-SESSION.md, à côté du guide de TARNAVELLE_AGENT_GUIDE, sinon "
            "dans le dossier courant.",
            false}}},
         {},
         Commandes::guide},
        {"Donne le script de complétion d'un shell : verbes, options, noms.",
         {"completions",
          " À charger ainsi : « eval \"$(tarnavellectl completions bash)\" », de même pour zsh ; "
          "« tarnavellectl completions fish | source ».",
          {{"shell", Genre::texte, "bash, zsh ou fish.", true}}},
         {},
         Commandes::completions,
         Choix::shell},
        {"Donne la page de manuel.",
         {"man",
          " À lire ainsi : « tarnavellectl man | man -l - » ; sur un Mac, « tarnavellectl man | mandoc -a ».",
          {}},
         {},
         Commandes::manuel},
        {"Dit quelle porte serait appelée, pourquoi, et si elle répond.",
         {"porte",
          " Le jeton n'est jamais montré. La porte est interrogée par un verbe qui ne change rien.",
          {{"json", Genre::booleen, "true pour les mêmes faits en un objet JSON, pour un script.", false}}},
         {},
         Commandes::porte},
    };
    for (CommandeLocale& c : liste) c.outil.description.insert(0, c.bref);
    return liste;
  }();
  return commandes;
}

CommandeNommee commande(std::string_view mot) {
  const std::string nom = CommandeControle::normaliserAction(mot);
  for (const CommandeLocale& c : commandesLocales())
    if (CommandeControle::normaliserAction(c.outil.nom) == nom || std::ranges::count(c.alias, nom) > 0)
      return {&c.outil, &c};
  return {CommandeControle::outil(CommandeControle::canonique(mot)), nullptr};
}

std::vector<std::string> nomsDesCommandes() {
  std::vector<std::string> noms;
  for (const OutilVoix& outil : CommandeControle::outilsPorte()) noms.push_back(outil.nom);
  for (const CommandeLocale& c : commandesLocales()) noms.push_back(c.outil.nom);
  return noms;
}

std::optional<std::string> nomVoulu(std::string_view mot) {
  auto noms = nomsDesCommandes();
  for (const std::string& nom : nomsDesCommandes())
    for (const auto alias : autresNoms(*commande(nom).outil)) noms.emplace_back(alias);
  return nomProche(PorteMCP::verbe(CommandeControle::normaliserAction(mot)), noms);
}

std::string verbeInconnu(std::string_view mot) {
  const auto proche = nomVoulu(mot);
  return "Verbe inconnu : " + citer(mot) + "." + (proche ? " Vouliez-vous dire " + *proche + " ?" : "");
}

std::string_view enBref(const OutilVoix& outil) {
  if (const LigneVerbe* ligne = LigneVerbe::de(outil.nom)) return ligne->bref;
  const CommandeLocale* c = locale(outil);
  return c ? c->bref : "";
}

std::optional<Designe> designe(const OutilVoix& outil, const ParamVoix& parametre) {
  const LigneVerbe* ligne = LigneVerbe::de(outil.nom);
  return ligne ? ligne->designe(parametre.nom) : std::nullopt;
}

bool vraiParDefaut(const OutilVoix& outil, const ParamVoix& parametre) {
  const LigneVerbe* ligne = LigneVerbe::de(outil.nom);
  return ligne && ligne->decoder({{parametre.nom, true}}) == ligne->decoder(Json::object());
}

std::vector<std::string_view> autresNoms(const OutilVoix& outil) {
  if (const LigneVerbe* ligne = LigneVerbe::de(outil.nom)) return ligne->alias;
  const CommandeLocale* c = locale(outil);
  return c ? c->alias : std::vector<std::string_view>{};
}

std::string commeOption(const ParamVoix& parametre) { return "--" + parametre.avecTirets(); }

}  // namespace tarnavelle
