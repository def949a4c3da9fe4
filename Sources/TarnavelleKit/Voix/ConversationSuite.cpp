// What follows from the state of a conversation, whatever has just happened in it.
#include <algorithm>
#include <nlohmann/json.hpp>

#include "ConversationInterne.hpp"

namespace tarnavelle {
namespace {

using Geste = InactiviteConversation::Geste;

constexpr std::string_view outilMuet =
    "Le cockpit n'a pas répondu : dis-le à l'opérateur, sans inventer de résultat.";

}  // namespace

void ConversationVoix::Interne::suivre() {
  echeances();
  inactivite();
  parler();
  publier();
  programmer();
}

void ConversationVoix::Interne::echeances() {
  const Instant t = maintenant();
  const auto echue = [&](const std::optional<Instant>& quand) { return enCours_ && quand && *quand <= t; };
  if (echue(ouverteAvant_)) surChute("le service vocal ne répond pas");
  if (echue(reconnexionA_)) ouvrir();
  if (echue(reponseJusqua_)) finirReponse();
  if (echue(appelJusqua_)) rendre(std::string(appels_.courant->callID), std::string(outilMuet));
  if (adieuJusqua_ && (echue(adieuJusqua_) || (!occupee() && !audible()))) terminer(Etat::raccroche);
}

void ConversationVoix::Interne::inactivite() {
  if (!enCours_ || adieuJusqua_ || operateurParle()) return;
  switch (InactiviteConversation::geste({.silenceDepuis = maintenant() - dernierSigne_,
                                         .historiqueVide = items_.empty(),
                                         .reponseActive = reponseActive() || demande_,
                                         .appelEnCours = !appels_.vide()})) {
    case Geste::rien: return;
    case Geste::viderHistorique:
      for (const std::string& id : std::exchange(items_, {}))
        client_->envoyer(RealtimeRequest::supprimerItem(id));
      return;
    case Geste::raccrocher: return saluer();
  }
}

/// The last words, said by the voice while it can.
void ConversationVoix::Interne::saluer() {
  const std::string phrase(InactiviteConversation::phraseRaccroche);
  avertir(Message::Niveau::avis, phrase);
  if (!prete_) return terminer(Etat::raccroche);
  client_->envoyer(RealtimeRequest::annonceSysteme(
      AnnonceVoix::annonce({.texte = phrase, .consigne = "Dis exactement cette phrase, et rien d'autre."})));
  demander();
  pourAnnonce_ = true;
  adieuJusqua_ = maintenant() + patienceAdieu;
}

void ConversationVoix::Interne::parler() {
  if (!prete_ || adieuJusqua_) return;
  if (demande_ && !reponseActive() && appels_.vide()) demander();
  if (operateurParle() || audible()) return;
  auto annonce = annonces_.prochaine({.connecte = true,
                                      .reponseActive = reponseActive() || demande_,
                                      .appelEnCours = !appels_.vide(),
                                      .feuVertEnAttente = feuVert_});
  if (!annonce) return;
  client_->envoyer(RealtimeRequest::annonceSysteme(*annonce));
  demander();
  pourAnnonce_ = true;
  livree_ = std::move(annonce);
}

void ConversationVoix::Interne::demander() {
  direMonde();
  demande_ = false;
  client_->demanderReponse();
  attendreReponse(patienceDebut);
}

/// What has changed on the board since the model was told of it: once it is about to be spoken to, not before.
void ConversationVoix::Interne::direMonde() {
  if (!prete_ || monde_ == mondeDit_) return;
  mondeDit_ = monde_;
  client_->envoyer(RealtimeRequest::majInstructions(
      ContratVoix::instructionsConversation(monde_, reglages_.ton, !pousser()), reglages_.provider.dialecte));
}

ConversationVoix::Etat ConversationVoix::Interne::etat() const {
  if (!enCours_) return repos_;
  if (!prete_) return Etat::connexion;
  if (appels_.courant) return Etat::outil;
  return audible() ? Etat::parole : Etat::ecoute;
}

void ConversationVoix::Interne::publier() {
  const Etat nouveau = etat();
  if (std::exchange(etatDit_, nouveau) != nouveau) dire(dehors().surEtat, nouveau);
}

std::optional<ConversationVoix::Interne::Instant> ConversationVoix::Interne::prochaineEcheance() const {
  if (!enCours_) return std::nullopt;
  std::optional<Instant> premiere;
  const auto compter = [&](const std::optional<Instant>& quand) {
    if (quand && (!premiere || *quand < *premiere)) premiere = quand;
  };
  for (const auto& quand : {ouverteAvant_, reconnexionA_, reponseJusqua_, appelJusqua_, adieuJusqua_})
    compter(quand);
  if (audible()) compter(std::chrono::ceil<Instant>(voix_.fin()));
  if (!occupee() && !operateurParle() && !adieuJusqua_)
    compter(dernierSigne_ + (items_.empty() ? InactiviteConversation::raccrocheApres
                                            : InactiviteConversation::videHistoriqueApres));
  return premiere;
}

/// One timer for all: it looks again when the first of them is due.
void ConversationVoix::Interne::programmer() {
  const auto quand = prochaineEcheance();
  if (quand && reveilA_ && *reveilA_ <= *quand) return;
  if (const auto annuler = std::exchange(annulerReveil_, nullptr)) annuler();
  reveilA_ = quand;
  if (!quand) return;
  const auto delai = std::chrono::ceil<std::chrono::milliseconds>(*quand - maintenant());
  annulerReveil_ = reglages_.minuterie(std::max(delai, std::chrono::milliseconds(1)),
                                       [faible = weak_from_this(), reveil = ++reveil_] {
                                         if (const auto moi = faible.lock())
                                           moi->confier([reveil](Interne& i) {
                                             if (i.reveil_ == reveil) i.reveilA_.reset();
                                           });
                                       });
  if (!annulerReveil_) reveilA_.reset();
}

}  // namespace tarnavelle
