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

/// A flag by which a verb asks what only a board of terminals tells: the service bears the flag's name.
struct Precision {
  std::string_view verbe;
  OutilVoix service;       ///< with what it takes, the flag among it
  std::string_view agent;  ///< the parameter that names an agent
};

const std::vector<Precision>& precisions() {
  static const std::vector<Precision> liste = {
      {"etat",
       {"pourquoi",
        "",
        {{"agent", Genre::texte, "Avec --pourquoi : cet agent seul.", false},
         {"pourquoi", Genre::booleen,
          "true pour savoir d'où vient l'état de chaque agent : source, preuve, depuis quand, version du "
          "programme. "
          "Seul un plateau de terminaux, celui de tarnavelle-plateau, le dit.",
          false}}},
       "agent"},
  };
  return liste;
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
        {"Parle avec Hermès, l'écoute, ou dit ce qui est réglé pour lui.",
         {"hermes",
          " Sans mot : ce qui est réglé et d'où cela vient, sans aucun secret. « ecouter » dit chaque avis "
          "d'Hermès, une "
          "ligne chacun ; « parler » lui envoie un message et montre sa réponse à mesure : Ctrl-C interrompt, "
          "une "
          "seconde fois quitte. « regler » met dans le fichier des réglages une valeur lue sur l'entrée "
          "standard.",
          {{"quoi", Genre::texte, "regler, ecouter ou parler. Vide = ce qui est réglé.", false},
           {"texte", Genre::texte,
            "Avec parler, le message ; vide = l'entrée standard, ou une conversation sur un terminal. Avec "
            "regler, le "
            "nom du réglage.",
            false},
           {"hote", Genre::texte, "Avec parler, la machine d'Hermès. Vide = celle qui est réglée.", false},
           {"nouvelle", Genre::booleen, "true pour commencer une autre conversation.", false},
           {"json", Genre::booleen, "true pour une ligne JSON par fait, pour un script.", false}}},
         {},
         Commandes::hermes,
         Choix::hermes},
        {"Note ce que dit le crochet d'un agent.",
         {"crochet",
          " Le dit est lu sur l'entrée standard, la note va dans le journal que nomme TARNAVELLE_CROCHETS. Ce "
          "sont "
          "les agents qui lancent cette commande ; elle ne les retient pas et n'échoue jamais.",
          {{"programme", Genre::texte, "Le programme de l'agent : claude, codex, gemini…", true},
           {"evenement", Genre::texte, "Le nom du crochet, quand le programme ne le dit pas : Stop…", true}}},
         {},
         Commandes::crochet},
        {"Dit ce qui a été fait sur le plateau, par qui, avec quelle issue.",
         {"journal",
          " Une ligne par verbe, la plus récente en dernier : jamais ce qui a été dit. Seul un plateau de "
          "terminaux, celui de tarnavelle-plateau, tient un journal.",
          {{"nombre", Genre::texte, "Combien de lignes, 20 par défaut.", false}}},
         {},
         nullptr,
         Choix::libre,
         CommandeLocale::Service{}},
        {"Avertit un agent quand un autre a fini, ou liste les relais.",
         {"relais",
          " Un relais armé sert une fois ; sans argument, la commande liste les relais armés. Seul un plateau "
          "de terminaux, celui de "
          "tarnavelle-plateau, en tient.",
          {{"agent", Genre::texte, "L'agent attendu.", false},
           {"evenement", Genre::texte, "fini, ou besoin : quand il aura besoin de quelqu'un.", false},
           {"destinataire", Genre::texte, "L'agent à avertir, dès qu'il sera au repos.", false},
           {"texte", Genre::texte, "Ce qui lui sera dit.", false}}},
         {},
         nullptr,
         Choix::libre,
         CommandeLocale::Service{.agents = {"agent", "destinataire"}}},
        {"Montre ce qu'Hermès a publié, le plus récent en dernier.",
         {"avis",
          " Ce qui n'est pas lu se voit aussi dans etat et sur la ligne d'état. Seul un plateau de terminaux, "
          "celui de "
          "tarnavelle-plateau, en garde.",
          {{"lus", Genre::booleen, "true pour noter que tout est lu.", false}}},
         {},
         nullptr,
         Choix::libre,
         CommandeLocale::Service{}},
        {"Liste les machines que ssh connaît, et où mènent leurs noms.",
         {"hotes",
          " ouvrir_agent y mène par --hote. Seul un plateau de terminaux, celui de tarnavelle-plateau, y mène.",
          {{"sonder", Genre::booleen, "true pour demander à chacune si elle répond, six secondes au plus.",
            false}}},
         {},
         nullptr,
         Choix::libre,
         CommandeLocale::Service{}},
        {"Met fin à tout le plateau : agents, fenêtres, tmux et porte.",
         {"eteindre",
          " Dit d'abord ce qui prendra fin, et demande ; sans terminal, il faut --oui. Les conversations "
          "restent : "
          "« tarnavelle-plateau --reprendre » les rouvre. Seul un plateau de terminaux, celui de "
          "tarnavelle-plateau, s'éteint ainsi.",
          {{"oui", Genre::booleen, "true pour éteindre sans demander.", false}}},
         {},
         nullptr,
         Choix::libre,
         CommandeLocale::Service{.confirmation = "oui"}},
    };
    for (CommandeLocale& c : liste) c.outil.description.insert(0, c.bref);
    return liste;
  }();
  return commandes;
}

const std::vector<OutilVoix>& verbes() {
  static const auto outils = [] {
    auto liste = CommandeControle::outilsPorte();
    for (const Precision& p : precisions())
      for (OutilVoix& outil : liste)
        if (outil.nom == p.verbe)
          outil.parametres.insert(outil.parametres.end(), p.service.parametres.begin(),
                                  p.service.parametres.end());
    return liste;
  }();
  return outils;
}

const OutilVoix* precision(const OutilVoix& verbe, std::string_view drapeau) {
  for (const Precision& p : precisions())
    if (p.verbe == verbe.nom && p.service.parametres.back().estNomme(drapeau)) return &p.service;
  return nullptr;
}

CommandeNommee commande(std::string_view mot) {
  const std::string nom = CommandeControle::normaliserAction(mot);
  for (const CommandeLocale& c : commandesLocales())
    if (CommandeControle::normaliserAction(c.outil.nom) == nom || std::ranges::count(c.alias, nom) > 0)
      return {&c.outil, &c};
  const auto& outils = verbes();
  const auto verbe = std::ranges::find(outils, CommandeControle::canonique(mot), &OutilVoix::nom);
  return {verbe == outils.end() ? nullptr : &*verbe, nullptr};
}

std::vector<std::string> nomsDesCommandes() {
  std::vector<std::string> noms;
  for (const OutilVoix& outil : verbes()) noms.push_back(outil.nom);
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
  for (const Precision& p : precisions())
    if ((p.verbe == outil.nom || p.service.nom == outil.nom) && p.agent == parametre.nom) return Designe::agent;
  if (const CommandeLocale* c = locale(outil))
    return c->service && std::ranges::count(c->service->agents, parametre.nom) > 0
               ? std::optional(Designe::agent)
               : std::nullopt;
  const LigneVerbe* ligne = LigneVerbe::de(outil.nom);
  return ligne ? ligne->designe(parametre.nom) : std::nullopt;
}

bool vraiParDefaut(const OutilVoix& outil, const ParamVoix& parametre) {
  const LigneVerbe* ligne = LigneVerbe::de(outil.nom);
  if (precision(outil, parametre.nom)) return false;
  return ligne && ligne->decoder({{parametre.nom, true}}) == ligne->decoder(Json::object());
}

std::vector<std::string_view> autresNoms(const OutilVoix& outil) {
  if (const LigneVerbe* ligne = LigneVerbe::de(outil.nom)) return ligne->alias;
  const CommandeLocale* c = locale(outil);
  return c ? c->alias : std::vector<std::string_view>{};
}

std::string commeOption(const ParamVoix& parametre) { return "--" + parametre.avecTirets(); }

}  // namespace tarnavelle
