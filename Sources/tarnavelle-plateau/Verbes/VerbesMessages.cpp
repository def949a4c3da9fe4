// Messages: kept until their agent is at rest, given once.
#include <algorithm>

#include "Appliquer.hpp"
#include "Socle/LectureJSON.hpp"

namespace tarnavelle::Plateau {

ReponsePorte refusSorti(const std::string& nom) {
  return ReponsePorte::echec(nom + " est sorti : son processus a pris fin.");
}

std::optional<ReponsePorte> refusSorti(const Atelier& atelier, const FicheAgent& agent) {
  if (atelier.constat(agent).situation.etat != Etat::sorti) return std::nullopt;
  return refusSorti(agent.nom);
}

Garde<std::int64_t> garderPour(Atelier& atelier, const Appelant& appelant, const FicheAgent& agent,
                               const std::string& texte) {
  const auto tableau = Tableau::lire(atelier.sol.registre);
  FicheMessage message;
  message.expediteur = tableau ? nomDe(appelant, *tableau) : "?";
  message.destinataire = agent.id;
  message.nomDestinataire = agent.nom;
  message.texte = texte;
  message.quand = atelier.date();
  return atelier.sol.registre.souffler(message);
}

ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::souffler& c) {
  if (auto refus = refusTexte("texte", c.texte)) return *refus;
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  const auto agent = tableau->agent(c.agent);
  if (!agent) return agent.raison();
  if (auto refus = refusSorti(atelier, *agent)) return *refus;
  const auto numero = garderPour(atelier, appelant, *agent, c.texte);
  if (!numero) return refus(numero.raison());
  livrerMessages(atelier, *agent);
  const auto restent = atelier.sol.registre.messages();
  const bool donne = restent && std::ranges::find(*restent, *numero, &FicheMessage::numero) == restent->end();
  const std::string contre = atelier.constat(*agent).repose ? atelier.refusMessage(agent->id) : "";
  const std::string quand = !contre.empty() ? contre + "."
                            : atelier.sol.veille.saitLire(agent->id)
                                ? "il l'aura dès qu'il sera au repos."
                                : "le plateau ne sait pas quand " + agent->programme + " est au repos.";
  return ReponsePorte::succes(
      donne ? "Soufflé à " + agent->nom + "." : "Gardé pour " + agent->nom + " : " + quand,
      donnees({{"agent", agent->nom}, {"etat", atelier.etat(*agent)}, {"message", *numero}, {"donne", donne}}));
}

namespace {

std::string enClair(const FicheMessage& message) {
  return "Message de " + message.expediteur + " : " + message.texte;
}

/// What became of a message: it must not stay taken.
void noter(Atelier& atelier, Garde<Fait> (Registre::*quoi)(std::int64_t), std::int64_t numero) {
  atelier.consigner([registre = &atelier.sol.registre, quoi, numero] { return (registre->*quoi)(numero); });
}

/// Submits the message that a door left in the box when it died; whether it was that.
bool acheverUnMessage(Atelier& atelier, const FicheAgent& agent) {
  const auto messages = atelier.sol.registre.messages();
  if (!messages) return false;
  for (const FicheMessage& m : *messages) {
    if (m.destinataire != agent.id || m.etat != FicheMessage::Etat::douteux) continue;
    const Livraison livraison = atelier.taper(agent, {.texte = enClair(m), .reprise = true});
    if (livraison.sort == Livraison::Sort::refuse) continue;
    if (livraison.sort == Livraison::Sort::soumis) noter(atelier, &Registre::retirerMessage, m.numero);
    return true;
  }
  return false;
}

}  // namespace

std::size_t livrerMessages(Atelier& atelier, const FicheAgent& agent) {
  std::size_t donnes = 0;
  while (!atelier.arrete() && atelier.rattraper()) {
    const Constat constat = atelier.constat(agent);
    if (!constat.repose || constat.situation.activite == Etat::besoin) break;
    const auto pris = atelier.sol.registre.prendreMessage(agent.id);
    if (!pris || !*pris) break;
    const FicheMessage& message = **pris;
    const Livraison livraison = atelier.taper(agent, enClair(message), true);
    atelier.noterMessage(agent.id, livraison);
    if (livraison.sort == Livraison::Sort::refuse) {
      noter(atelier, &Registre::rendreMessage, message.numero);
      if (livraison.raison == Livraison::Raison::brouillon && acheverUnMessage(atelier, agent)) continue;
      break;
    }
    if (livraison.sort != Livraison::Sort::soumis) {
      noter(atelier, &Registre::douterMessage, message.numero);
      break;
    }
    noter(atelier, &Registre::retirerMessage, message.numero);
    ++donnes;
  }
  return donnes;
}

}  // namespace tarnavelle::Plateau
