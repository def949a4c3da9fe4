#include "Catalogue.hpp"

#include <algorithm>

#include "Branchement.hpp"
#include "Commandes.hpp"
#include "Porte/CommandeControle.hpp"
#include "Porte/PorteMCP.hpp"
#include "Proche.hpp"

namespace tarnavelle {
namespace {

using Genre = ParamVoix::Genre;

/// Up to the first full stop that ends a sentence, included.
std::string_view premierePhrase(std::string_view texte) {
  const auto fin = texte.find(". ");
  return fin == texte.npos ? texte : texte.substr(0, fin + 1);
}

}  // namespace

const std::vector<CommandeLocale>& commandesLocales() {
  static const std::vector<CommandeLocale> commandes = {
      {{"aide",
        "Montre l'aide d'un verbe, ou l'aide générale.",
        {{"verbe", Genre::texte, "Le verbe, ou la commande, dont on veut tout savoir.", false}}},
       {"help"},
       Commandes::aide},
      {{"mcp-config",
        "Donne de quoi brancher un agent sur le pont, claude par défaut. La configuration dure : ni adresse ni "
        "jeton, le pont cherche la porte à chaque appel. La ligne à coller et ce qu'il faut savoir vont sur la "
        "sortie d'erreur.",
        Branchement::parametres()},
       {},
       Branchement::configurationMCP},
      {{"guide",
        "Donne le guide de l'agent Tarnavelle, en Markdown. Le jeton n'y est jamais.",
        {{"fichier", Genre::booleen,
          "true pour l'écrire dans guide-SESSION.md, à côté du guide de TARNAVELLE_AGENT_GUIDE, sinon dans le "
          "dossier courant.",
          false}}},
       {},
       Commandes::guide},
      {{"completions",
        "Donne le script de complétion d'un shell : verbes, options, noms. À charger ainsi : « eval "
        "\"$(tarnavellectl completions bash)\" », de même pour zsh ; « tarnavellectl completions fish | "
        "source ».",
        {{"shell", Genre::texte, "bash, zsh ou fish.", true}}},
       {},
       Commandes::completions},
      {{"man",
        "Donne la page de manuel. À lire ainsi : « tarnavellectl man | man -l - » ; sur un Mac, "
        "« tarnavellectl man | mandoc -a ».",
        {}},
       {},
       Commandes::manuel},
      {{"porte",
        "Dit quelle porte serait appelée, pourquoi, et si elle répond. Le jeton n'est jamais montré. La porte "
        "est interrogée par un verbe qui ne change rien.",
        {{"json", Genre::booleen, "true pour les mêmes faits en un objet JSON, pour un script.", false}}},
       {},
       Commandes::porte},
  };
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
  const LigneVerbe* ligne = LigneVerbe::de(outil.nom);
  return ligne ? ligne->bref : premierePhrase(outil.description);
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
  for (const CommandeLocale& c : commandesLocales())
    if (&c.outil == &outil) return c.alias;
  return {};
}

std::string commeOption(const ParamVoix& parametre) { return "--" + parametre.avecTirets(); }

}  // namespace tarnavelle
