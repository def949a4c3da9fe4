// The turns of a conversation: who speaks, who gives way, and what is carried out meanwhile.
#include <nlohmann/json.hpp>

#include "ConversationInterne.hpp"
#include "Socle/Base64.hpp"
#include "Socle/Texte.hpp"
#include "Voix/PhraseDeSommeil.hpp"

namespace tarnavelle {
namespace {

constexpr std::int64_t octetsParMilliseconde = 2 * RealtimeAudio::sampleRate / 1000;
constexpr std::size_t resultatMax = 500;  ///< user-perceived characters of a result told in a note

}  // namespace

void ConversationVoix::Interne::entendre(const Octets& pcm) {
  if (!enCours_ || pcm.empty() || (pousser() && !enfonce_)) return;
  if (!pousser()) {
    if (prete_ && !(reglages_.profil->coupeLeMicroPendantQuOnParle && audible())) envoyerSon(pcm);
    return;
  }
  vivant();
  if (prete_) return envoyerSon(pcm);
  std::size_t gardes = 0;
  for (const Octets& attendue : attenteSon_) gardes += attendue.size();
  constexpr auto place =
      static_cast<std::size_t>(std::chrono::milliseconds(attenteSonMax).count() * octetsParMilliseconde);
  if (gardes + pcm.size() <= place) attenteSon_.push_back(pcm);
}

void ConversationVoix::Interne::envoyerSon(const Octets& pcm) {
  const auto octets = static_cast<std::int64_t>(pcm.size());
  octetsDuTour_ += octets;
  octetsEntres_ += octets;
  client_->appendAudio(Base64::coder(pcm));
}

void ConversationVoix::Interne::appuyer() {
  commencer();
  if (!pousser() || !enCours_) return interrompre();
  if (std::exchange(enfonce_, true)) return;
  tourFini_ = false;
  octetsDuTour_ = 0;
  vivant();
  adieuJusqua_.reset();
  couperLaParole(true);
  direMonde();
  dire(dehors().surParoleOperateur, true);
}

void ConversationVoix::Interne::relacher() {
  if (!std::exchange(enfonce_, false)) return;
  vivant();
  dire(dehors().surParoleOperateur, false);
  if (prete_)
    finirTour();
  else
    tourFini_ = enCours_;
}

void ConversationVoix::Interne::finirTour() {
  if (octetsDuTour_ < tourMin.count() * octetsParMilliseconde)
    return client_->envoyer(RealtimeRequest::viderEntree());
  client_->envoyer(RealtimeRequest::audioCommit());
  demande_ = true;
}

void ConversationVoix::Interne::interrompre() {
  if (!enCours_) return;
  vivant();
  couperLaParole(true);
}

void ConversationVoix::Interne::changerProfil(const ProfilEcouteVoix& profil) {
  if (pousser() || *reglages_.profil == profil) return;
  reglages_.profil = profil;
  if (prete_) client_->envoyer(RealtimeRequest::majDetectionDeTour(profil, reglages_.provider.dialecte));
}

void ConversationVoix::Interne::surEcoute(bool parle) {
  vivant();
  if (std::exchange(parle_, parle) == parle) return;
  if (parle) {
    adieuJusqua_.reset();
    // Without barge-in, the voice says what it has begun to say.
    if (!pousser() && !reglages_.profil->coupeLeMicroPendantQuOnParle) couperLaParole(false);
    abandonnerAppels();
    demande_ = false;  // what he says asks for one
    direMonde();
  } else if (!pousser()) {
    attendreReponse(patienceDebut);  // the service answers by itself
  }
  dire(dehors().surParoleOperateur, parle);
}

void ConversationVoix::Interne::surTranscription(const std::string& texte) {
  vivant();
  if (!Texte::rogner(texte).empty()) dire(dehors().surOperateur, texte);
  if (!PhraseDeSommeil::correspond(texte)) return;
  avertir(Message::Niveau::avis, "La voix s'endort.");
  terminer(Etat::sommeil);
}

/// The operator has the floor. The service, which hears him, cuts its own response short; where it does not, it
/// is told to.
void ConversationVoix::Interne::couperLaParole(bool leServiceAussi) {
  if (reponseActive()) {
    if (leServiceAussi && prete_ && !ecartee_) client_->envoyer(RealtimeRequest::annulerReponse());
    ecartee_ = true;
    attendreReponse(patienceAnnulation);
  }
  if (audible()) {
    const auto perdus = dire(dehors().surSilence);
    const auto coupes = voix_.couper(perdus, secondes());
    if (prete_)
      for (const auto& coupe : coupes)
        client_->envoyer(RealtimeRequest::tronquerItem(coupe.item, coupe.entendu));
  }
  abandonnerAppels();
  demande_ = false;
}

void ConversationVoix::Interne::surReponse() {
  attendreReponse(patienceReponse);
  ecartee_ = false;
  livree_.reset();
}

void ConversationVoix::Interne::surSon(const Octets& son) {
  octetsSortis_ += static_cast<std::int64_t>(son.size());
  if (ecartee_) return;
  attendreReponse(patienceReponse);
  livree_.reset();
  voix_.donner(itemSon_, static_cast<std::int64_t>(son.size() / 2), secondes());
  dire(dehors().surSon, son);
}

void ConversationVoix::Interne::surUsage(const TourRealtime& tour) {
  usage_.ajouter(tour);
  dire(dehors().surCout, cout());
}

void ConversationVoix::Interne::surFini() {
  finirReponse();
  ecartee_ = false;
}

/// Nothing more is waited for of it, though it may still come.
void ConversationVoix::Interne::finirReponse() {
  if (!pourAnnonce_) vivant();
  reponseJusqua_.reset();
  livree_.reset();
  pourAnnonce_ = refusDit_ = false;
}

void ConversationVoix::Interne::surAppel(FileAppelsRealtime::Appel appel) {
  // Of a response that was cut short: its arguments may be, too.
  if (ecartee_)
    return client_->sendToolOutput({.callID = appel.callID, .output = FileAppelsRealtime::sortieAbandon});
  attendreReponse(patienceReponse);
  livree_.reset();
  if (auto premier = appels_.enfiler(std::move(appel))) lancer(*std::move(premier));
}

void ConversationVoix::Interne::lancer(FileAppelsRealtime::Appel appel) {
  appelJusqua_ = maintenant() + patienceOutil;
  dire(dehors().surAppel, std::move(appel));
}

void ConversationVoix::Interne::rendre(const std::string& callID, std::string sortie) {
  if (orphelin_ && orphelin_->callID == callID) {
    const std::string note = "Résultat de « " + std::exchange(orphelin_, std::nullopt)->name +
                             " », demandé avant une coupure : " + Texte::tronquer(sortie, resultatMax);
    return annonces_.enfiler(AnnonceVoix::annonce({.texte = note, .consigne = "Dis-le en une phrase courte."}));
  }
  if (!appels_.courant || appels_.courant->callID != callID) return;
  vivant();
  client_->sendToolOutput({.callID = callID, .output = sortie});
  appelJusqua_.reset();
  if (auto suivant = appels_.terminer())
    lancer(*std::move(suivant));
  else
    demande_ = true;
}

void ConversationVoix::Interne::abandonnerAppels() {
  const auto courant = appels_.courant;
  if (prete_)
    for (const std::string& id : appels_.callIDsEnVol())
      client_->sendToolOutput({.callID = id, .output = FileAppelsRealtime::sortieAbandon});
  appels_.vider();
  appelJusqua_.reset();
  if (courant) dire(dehors().surAbandon, courant->callID);
}

void ConversationVoix::Interne::annoncer(const std::string& annonce) {
  if (enCours_) annonces_.enfiler(annonce);
}

void ConversationVoix::Interne::activite(const Activite& activite) {
  const auto trouve = travaux_.find(activite.agent);
  if (activite.travaille) {
    if (trouve == travaux_.end()) travaux_.emplace(activite.agent, maintenant());
    return;
  }
  if (trouve == travaux_.end()) return;
  const bool merite = FinDActiviteDurable::merite(
      {.travaillaitAvant = true, .travailleMaintenant = false, .travailDepuis = maintenant() - trouve->second});
  travaux_.erase(trouve);
  if (merite) annoncer(AnnonceVoix::aFini({.agent = activite.agent, .resume = activite.resume}));
}

}  // namespace tarnavelle
