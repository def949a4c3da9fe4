#include "Services.hpp"

#include <algorithm>

#include "Appliquer.hpp"
#include "Noms.hpp"
#include "Porte/CommandeControle.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::int64_t journalDefaut = 20;

bool jamais(const Json&) { return false; }

/// A state by its own name: what an agent declared of itself counts here.
std::string_view dit(Etat etat) { return etat == Etat::fini ? "fini" : enMots(etat); }

ReponsePorte pourquoi(Atelier& atelier, const Appelant&, const Json& corps) {
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  std::vector<FicheAgent> agents = tableau->agents;
  if (const std::string nomme = Champ::texte(corps, "agent"); !vide(nomme)) {
    const auto agent = tableau->agent(nomme);
    if (!agent) return agent.raison();
    agents = {*agent};
  }
  if (agents.empty()) return ReponsePorte::echec("Aucun agent n'est ouvert.");
  std::string phrase;
  Json lignes = Json::array();
  for (const FicheAgent& agent : agents) {
    const Situation s = atelier.constat(agent).situation;
    const Preuve& preuve = s.preuve;
    const std::string programme = preuve.programme.empty() ? agent.programme : preuve.programme;
    Json ligne = {{"nom", agent.nom},         {"etat", nom(s.etat)},   {"source", nom(preuve.source)},
                  {"preuve", preuve.element}, {"regle", preuve.regle}, {"programme", programme}};
    phrase += (phrase.empty() ? "" : "\n") + agent.nom + " : " + std::string(dit(s.etat));
    if (const auto depuis = atelier.depuis(agent, s)) {
      ligne["depuis_s"] = depuis->count();
      phrase += " depuis " + std::to_string(depuis->count()) + " s";
    }
    phrase += preuve.source == Source::aucune ? ", sans preuve"
                                              : ", d'après " + std::string(description(preuve.source));
    if (!preuve.element.empty()) phrase += " " + cite(preuve.element);
    phrase += preuve.regle.empty() ? "" : " (règle " + preuve.regle + ")";
    phrase += " ; " + programme + ".";
    lignes.push_back(std::move(ligne));
  }
  return ReponsePorte::succes(phrase, donnees({{"agents", lignes}}));
}

ReponsePorte journal(Atelier& atelier, const Appelant&, const Json& corps) {
  std::int64_t nombre = journalDefaut;
  if (Champ::membre(corps, "nombre")) nombre = Champ::entier(corps, "nombre", 0);
  if (nombre < 1 || nombre > Registre::journalMax)
    return ReponsePorte::echec("« nombre » va de 1 à " + std::to_string(Registre::journalMax) + ".");
  const auto lignes = atelier.sol.registre.journal(nombre);
  if (!lignes) return refus(lignes.raison());
  if (lignes->empty()) return ReponsePorte::succes("Le journal est vide.");
  Json liste = Json::array();
  for (auto ligne = lignes->rbegin(); ligne != lignes->rend(); ++ligne)  // as they came about
    liste.push_back({{"numero", ligne->numero},
                     {"quand", dateEtHeure(ligne->quand)},
                     {"qui", ligne->qui},
                     {"verbe", ligne->verbe},
                     {"cible", ligne->cible},
                     {"issue", ligne->issue}});
  return ReponsePorte::succes({}, donnees({{"journal", liste}}));
}

/// The relays that are armed.
ReponsePorte listerRelais(const Atelier& atelier, const Tableau& tableau) {
  const auto relais = atelier.sol.registre.relais();
  if (!relais) return refus(relais.raison());
  const Json liste = relaisEnJSON(*relais, tableau);
  return liste.empty() ? ReponsePorte::succes("Aucun relais n'est armé.", donnees({{"relais", liste}}))
                       : ReponsePorte::succes({}, donnees({{"relais", liste}}));
}

/// With none of its arguments, the relays are listed.
bool arme(const Json& corps) {
  constexpr std::string_view arguments[] = {"agent", "evenement", "destinataire", "texte"};
  return std::ranges::any_of(arguments, [&](std::string_view nom) {
    const Json* valeur = Champ::membre(corps, nom);
    return valeur && !valeur->is_null() && *valeur != "";
  });
}

ReponsePorte relais(Atelier& atelier, const Appelant&, const Json& corps) {
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  if (!arme(corps)) return listerRelais(atelier, *tableau);
  if (vide(Champ::texte(corps, "agent"))) return manque("agent");
  const std::string evenement = Texte::replier(Champ::texte(corps, "evenement"));
  const std::string texte = Champ::texte(corps, "texte");
  if (evenement.empty()) return manque("evenement");
  if (evenement != "fini" && evenement != "besoin")
    return ReponsePorte::echec("« evenement » vaut fini ou besoin, pas " + cite(evenement) + ".");
  if (vide(Champ::texte(corps, "destinataire"))) return manque("destinataire");
  if (auto refus = refusTexte("texte", texte)) return *refus;
  const auto agent = tableau->agent(Champ::texte(corps, "agent"));
  if (!agent) return agent.raison();
  const auto destinataire = tableau->agent(Champ::texte(corps, "destinataire"));
  if (!destinataire) return destinataire.raison();
  if (agent->id == destinataire->id) return ReponsePorte::echec("Un relais va d'un agent à un autre.");
  if (auto refus = refusSorti(atelier, *agent)) return *refus;
  FicheRelais fiche;
  fiche.agent = agent->id;
  fiche.evenement = evenement;
  fiche.destinataire = destinataire->id;
  fiche.texte = texte;
  fiche.quand = atelier.date();
  const auto numero = atelier.sol.registre.armer(fiche);
  if (!numero) return refus(numero.raison());
  // What is awaited may be so by now.
  const bool deja = atelier.constat(*agent).situation.etat == (evenement == "fini" ? Etat::fini : Etat::besoin);
  if (deja) atelier.declencher(agent->id, evenement);
  const std::string quand = evenement == "fini" ? " aura fini" : " aura besoin de quelqu'un";
  return ReponsePorte::succes(
      deja ? "C'est déjà le cas : " + destinataire->nom + " en est averti."
           : "Quand " + agent->nom + quand + ", " + destinataire->nom + " sera averti.",
      donnees(
          {{"relais", *numero}, {"agent", agent->nom}, {"destinataire", destinataire->nom}, {"deja", deja}}));
}

ReponsePorte hotes(Atelier& atelier, const Appelant&, const Json& corps) {
  if (!atelier.sol.lointain) return ReponsePorte::pasCable;
  const bool sonder = Champ::booleen(corps, "sonder", false);
  Json liste = Json::array();
  for (const auto& hote : atelier.sol.lointain->hotes(sonder)) {
    Json ligne = {{"nom", hote.nom}, {"mene_a", hote.mene}};
    if (hote.repond) ligne["repond"] = *hote.repond;
    if (hote.refus) ligne["pourquoi"] = *hote.refus;
    liste.push_back(std::move(ligne));
  }
  if (liste.empty()) return ReponsePorte::succes("La configuration de ssh ne nomme aucune machine.");
  return ReponsePorte::succes("", donnees({{"hotes", liste}}));
}

bool confirme(const Json& corps) { return Champ::booleen(corps, "oui", false); }

ReponsePorte eteindre(Atelier& atelier, const Appelant&, const Json& corps) {
  if (!atelier.sol.extincteur) return ReponsePorte::pasCable;
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  Json agents = Json::array(), fenetres = Json::array();
  std::vector<std::string> noms, cles;
  for (const FicheAgent& agent : tableau->agents) {
    cles.push_back(agent.id);
    const Etat etat = atelier.constat(agent).situation.etat;
    if (etat == Etat::sorti || estLaBas(agent)) continue;
    if (!agent.hote.empty()) {
      noms.push_back("la vue de " + agent.nom + ", qui continue sur " + cite(agent.hote));
      continue;
    }
    agents.push_back({{"nom", agent.nom}, {"etat", dit(etat)}, {"cli", agent.programme}});
    noms.push_back(agent.nom + " (" + std::string(dit(etat)) + ")");
  }
  for (const FicheFenetre& f : tableau->fiches) {
    if (f.terminal.empty()) continue;
    fenetres.push_back(
        {{"nom", f.nom}, {"commande", Texte::tronquer(f.commande, affichesMax)}, {"fini", f.termine}});
    noms.push_back("la fenêtre " + f.nom + (f.termine ? " (finie)" : " (" + cite(f.commande) + ")"));
  }
  noms.emplace_back("tmux et la porte");
  const std::string fins = Texte::joindre(noms, ", ");
  const Json json = {{"agents", agents}, {"fenetres", fenetres}, {"eteint", confirme(corps)}};
  if (!confirme(corps)) return ReponsePorte::succes("Prendront fin : " + fins + ".", donnees(json));
  const auto restes = atelier.sol.extincteur->eteindre(cles);
  if (!restes) return ReponsePorte::echec("Rien ne s'éteint : " + restes.raison() + ".");
  return ReponsePorte::succes(
      "Éteint : " + fins + "." +
          (restes->empty() ? "" : " Tourne encore : " + Texte::joindre(*restes, " ; ") + "."),
      donnees(json));
}

constexpr Service services[] = {
    {"pourquoi", false, jamais, pourquoi}, {"journal", false, jamais, journal},
    {"relais", false, arme, relais},       {"avis", false, marqueLus, avis},
    {"hotes", true, jamais, hotes},        {"eteindre", true, confirme, eteindre},
};

}  // namespace

std::string dateEtHeure(Date::Instant instant) {
  const Calendrier calendrier = Calendrier::local();
  return calendrier.jour(instant) + " " + calendrier.heure(instant);
}

const Service* serviceNomme(std::string_view action) {
  const std::string nom = CommandeControle::normaliserAction(action);
  const auto* const trouve = std::ranges::find(services, nom, &Service::nom);
  return trouve == std::end(services) ? nullptr : trouve;
}

ReponsePorte rendre(const Service& service, Atelier& atelier, const Appelant& appelant, const Json& corps) {
  if (service.reserve && !appelant.agent.empty())
    return ReponsePorte::echec(std::string(service.nom) + " est réservé à l'opérateur.");
  return service.rendre(atelier, appelant, corps);
}

}  // namespace tarnavelle::Plateau
