#include "Entretien.hpp"

#include <chrono>
#include <utility>

#include "Hermes/RequeteGateway.hpp"
#include "Reseau/ClientHTTP.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Selon.hpp"

namespace tarnavelle {
namespace {

using Cas = IssueEntretien::Cas;
using namespace std::chrono_literals;

std::string refusHTTP(int statut, std::string_view cle) {
  const std::string http = " (HTTP " + std::to_string(statut) + ")";
  if (statut == 401 || statut == 403)
    return "La passerelle d'Hermès refuse " + std::string(cle.empty() ? "qui n'a pas de clé" : "cette clé") +
           http + " : " + std::string(ReglagesHermes::cleSecrete) + " est à revoir.";
  if (statut == 404)
    return "La passerelle d'Hermès ne connaît pas cette adresse" + http + " : " +
           std::string(ReglagesHermes::clePasserelle) + " mène à sa racine, d'ordinaire « …/v1 ».";
  if (statut == 429) return "La passerelle d'Hermès est trop sollicitée" + http + " : redemandez plus tard.";
  if (statut >= 500) return "La passerelle d'Hermès a échoué" + http + ". Rien n'est redemandé.";
  return "La passerelle d'Hermès refuse la demande" + http + ".";
}

std::string raison(const ErreurFluxGateway& erreur) {
  return std::visit(
      Selon{[](const ErreurFluxGateway::http& e) { return "HTTP " + std::to_string(e.statut); },
            [](const ErreurFluxGateway::transport& e) { return e.phrase; },
            [](const ErreurFluxGateway::fluxTronque&) { return std::string("elle s'arrête avant sa fin"); }},
      erreur.cas);
}

/// Posts the answer where one may go, until it is taken. Why it may not have been: a sentence.
std::optional<std::string> poserVerdict(const Voie::Ouverte& ou, const std::string& id,
                                        DecisionApprobation decision, const std::string& session) {
  const auto corps = EcritureJSON::compacte(RequeteGateway::corpsVerdict(id, decision));
  if (!corps) return "Cette demande d'accord n'a pas d'identifiant lisible.";
  ClientHTTP client;
  int statut = 0;
  for (const std::string_view route : RequeteGateway::routesVerdict) {
    const std::string_view separateur = ou.base.ends_with('/') ? "" : "/";
    const auto reponse = client.envoyer({.methode = "POST",
                                         .url = std::string(ou.base).append(separateur).append(route),
                                         .entetes = RequeteGateway::entetes(ou.cle, session),
                                         .corps = *corps},
                                        {.attente = 10s, .vie = 10s, .corpsMax = std::size_t{1} << 20});
    if (!reponse)
      return std::string(reponse.raison().partie ? "Votre réponse n'est peut-être pas arrivée"
                                                 : "Votre réponse n'est pas partie") +
             " : la passerelle ne répond pas.";
    statut = reponse->statut;
    if (estUnSucces(statut)) return std::nullopt;
  }
  return "La passerelle d'Hermès n'a pas pris votre réponse (HTTP " + std::to_string(statut) + ").";
}

}  // namespace

Entretien::~Entretien() {
  courrier_->fermer();
  interrompre();
  if (tour_.joinable()) tour_.join();
}

void Entretien::passerPar(std::unique_ptr<Voie> voie) {
  if (tour_.joinable()) tour_.join();  // its end was told
  voie_ = std::move(voie);
}

void Entretien::dire(const std::string& message, const std::string& session) {
  if (tour_.joinable()) tour_.join();  // its end was told
  {
    const std::lock_guard verrou(verrou_);
    arret_ = parti_ = false;
  }
  tour_ = std::thread([this, message, session] {
    auto issue = jouer(message, session);
    const std::lock_guard verrou(verrou_);
    conversation_.reset();
    poster({Nouvelle::fin{std::move(issue)}});
  });
}

void Entretien::interrompre() {
  {
    const std::lock_guard verrou(verrou_);
    arret_ = true;
    if (conversation_) conversation_->arreter();
    depart_.notify_all();
  }
  voie_->interrompre();
}

void Entretien::partir() {
  const std::lock_guard verrou(verrou_);
  parti_ = true;
  depart_.notify_all();
}

void Entretien::trancher(const std::string& id, DecisionApprobation decision, const std::string& session) {
  Voie::Ouverte ou;
  {
    const std::lock_guard verrou(verrou_);
    // Before it is sent: the agent may act as soon as it has it.
    if (conversation_ && decision == DecisionApprobation::approuver) conversation_->donnerFeuVert();
    ou = ouverte_;
  }
  // A gateway that stays silent holds up nobody, not even the end of the program.
  std::thread([courrier = courrier_, ou = std::move(ou), id, decision, session] {
    courrier->poster({Nouvelle::verdict{id, decision, poserVerdict(ou, id, decision, session)}});
  }).detach();
}

IssueEntretien Entretien::jouer(const std::string& message, std::string session) {
  const auto dire = [this](const std::string& phrase) { poster({Nouvelle::note{phrase}}); };
  bool refusee = false;  // the session was, or the message itself: the answer without it tells
  const auto avouer = [&] {
    if (!std::exchange(refusee, false)) return;
    dire("Hermès ne connaît plus cette conversation : une nouvelle commence.");
    poster({Nouvelle::evenement{{EvenementGateway::session{""}}}});
  };
  bool erreur = false;  // the last that he said
  while (true) {
    const auto ouverte = voie_->ouvrir(dire);
    ConversationHermes* conversation = nullptr;
    {
      const std::lock_guard verrou(verrou_);
      if (arret_) return {Cas::arretee, "Interrompu."};
      if (ouverte) {
        ouverte_ = *ouverte;
        conversation_ = std::make_unique<ConversationHermes>();
        conversation = conversation_.get();
      }
    }
    if (!ouverte) return {Cas::injoignable, ouverte.raison()};
    {
      std::unique_lock verrou(verrou_);
      if (!parti_) poster({Nouvelle::depart{}});
      depart_.wait(verrou, [this] { return parti_ || arret_; });
      if (arret_) return {Cas::arretee, "Interrompu."};
    }
    const auto optionnel = [](const std::string& texte) {
      return texte.empty() ? std::nullopt : std::optional(texte);
    };
    const auto suivre = [&](const EvenementGateway& evenement) {
      avouer();
      erreur = std::holds_alternative<EvenementGateway::erreur>(evenement.cas) ||
               (erreur && !std::holds_alternative<EvenementGateway::texte>(evenement.cas));
      courrier_->attendrePlace();
      poster({Nouvelle::evenement{evenement}});
    };
    const auto issue = conversation->jouer({.base = ouverte->base,
                                            .message = message,
                                            .modele = ouverte->modele,
                                            .cle = optionnel(ouverte->cle),
                                            .sessionId = optionnel(session)},
                                           suivre);
    if (std::holds_alternative<IssueTour::arretee>(issue.cas)) return {Cas::arretee, "Interrompu."};
    const auto* echec = std::get_if<IssueTour::echouee>(&issue.cas);
    if (!echec || echec->repli) avouer();
    if (!echec) return {.cas = erreur ? Cas::echouee : Cas::finie};
    if (!session.empty() && !echec->repli && echec->erreur.sentLaSessionRefusee()) {
      session.clear();
      refusee = true;
      continue;
    }
    return echouer(message, *echec);
  }
}

IssueEntretien Entretien::echouer(const std::string& message, const IssueTour::echouee& echec) {
  if (!echec.repli) {
    const auto* http = std::get_if<ErreurFluxGateway::http>(&echec.erreur.cas);
    return {Cas::echouee, refusHTTP(http ? http->statut : 0, ouverte_.cle)};
  }
  const std::string coupe = "La réponse est coupée : " + raison(echec.erreur) + ".";
  if (*echec.repli == RepliApresCoupure::Decision::annoncerSeulement)
    return {Cas::echouee, coupe + " Hermès a pu agir : rien n'est redemandé."};
  const std::string rien = coupe + " Hermès n'avait encore rien fait : ";
  if (!voie_->rejoue()) return {Cas::injoignable, rien + "redemandez."};
  poster({Nouvelle::note{rien + "le message lui est redonné par sa ligne de commande."}});
  const auto rejoue = voie_->rejouer(message);
  {
    const std::lock_guard verrou(verrou_);
    if (arret_) return {Cas::arretee, "Interrompu."};
  }
  if (!rejoue) return {Cas::echouee, rejoue.raison()};
  poster({Nouvelle::evenement{{EvenementGateway::texte{*rejoue}}}});
  return {};
}

}  // namespace tarnavelle
