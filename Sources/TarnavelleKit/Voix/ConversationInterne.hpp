// What ConversationVoix is made of: one state, touched by one action of its series at a time. Each action ends
// with `suivre`, where all that only depends on the state is decided: what is due, what may be said, when to
// look again.
#pragma once

#include <atomic>
#include <deque>
#include <map>
#include <utility>

#include "SerieInterne.hpp"
#include "Voix/ConversationVoix.hpp"
#include "Voix/FileAnnoncesVoix.hpp"
#include "Voix/RealtimeAudio.hpp"
#include "VoixEnCoursInterne.hpp"

namespace tarnavelle {

class ConversationVoix::Interne : public std::enable_shared_from_this<Interne> {
 public:
  using Instant = std::chrono::nanoseconds;

  explicit Interne(Reglages reglages);

  /// Does the action in its turn, then what follows from it.
  template <class Action>
  void confier(Action action) {
    serie_.confier([moi = shared_from_this(), action = std::move(action)]() mutable {
      action(*moi);
      moi->suivre();
    });
  }
  /// No event any more.
  void taire() { tue_ = true; }

  // As in ConversationVoix.
  void commencer();
  void raccrocher() { terminer(Etat::raccroche); }
  void entendre(const Octets& pcm);
  void appuyer();
  void relacher();
  void interrompre();
  void changerProfil(const ProfilEcouteVoix& profil);
  void rendre(const std::string& callID, std::string sortie);
  void activite(const Activite& activite);
  void annoncer(const std::string& annonce);
  void monde(MondeVoix monde) { monde_ = std::move(monde); }
  void feuVert(bool attendu) { feuVert_ = attendu; }

 private:
  // Conversation.cpp: the session under the conversation, its losses and its end.
  void ouvrir();
  RealtimeClient::Handlers handlers();
  template <class Recu>
  auto recevoir(Recu recu);
  void surPret();
  void surRefus(const RefusRealtime& refus);
  void surErreur(const std::string& texte);
  void surChute(const std::optional<std::string>& raison);
  void surPlafond();
  void perdre();
  void abandonner(const std::string& phrase, std::string conseil);
  std::string conseil(ReconnexionRealtime::Motif motif) const;
  void terminer(Etat repos);
  Cout cout() const;

  // ConversationTours.cpp: who speaks, and what is carried out.
  void surReponse();
  void surSon(const Octets& son);
  void surAppel(FileAppelsRealtime::Appel appel);
  void surUsage(const TourRealtime& tour);
  void surFini();
  void finirReponse();
  void surEcoute(bool parle);
  void surTranscription(const std::string& texte);
  void lancer(FileAppelsRealtime::Appel appel);
  void abandonnerAppels();
  void couperLaParole(bool leServiceAussi);
  void envoyerSon(const Octets& pcm);
  void finirTour();

  // ConversationSuite.cpp: what follows from the state.
  void suivre();
  void echeances();
  void inactivite();
  void saluer();
  void parler();
  void demander();
  void direMonde();
  void publier();
  void programmer();
  std::optional<Instant> prochaineEcheance() const;

  Instant maintenant() const { return reglages_.maintenant(); }
  VoixEnCoursInterne::Secondes secondes() const { return maintenant(); }
  bool pousser() const { return !reglages_.profil; }
  bool reponseActive() const { return reponseJusqua_.has_value(); }
  bool audible() const { return voix_.audible(secondes()); }
  bool operateurParle() const { return parle_ || enfonce_; }
  bool occupee() const { return reponseActive() || demande_ || !appels_.vide(); }
  Etat etat() const;
  void vivant() { dernierSigne_ = maintenant(); }
  void attendreReponse(std::chrono::seconds patience) { reponseJusqua_ = maintenant() + patience; }
  void avertir(Message::Niveau niveau, std::string texte, std::string conseil = {});
  template <class Evenement, class... Arguments>
  auto dire(const Evenement& evenement, Arguments&&... arguments) const {
    using Rendu = decltype(evenement(std::forward<Arguments>(arguments)...));
    return evenement && !tue_ ? evenement(std::forward<Arguments>(arguments)...) : Rendu();
  }
  const Evenements& dehors() const { return reglages_.evenements; }

  SerieInterne serie_;
  std::atomic<bool> tue_ = false;
  Reglages reglages_;

  // The conversation.
  bool enCours_ = false;
  Etat repos_ = Etat::raccroche;
  Etat etatDit_ = Etat::raccroche;
  Instant dernierSigne_{};  ///< of somebody there
  Instant debut_{};
  std::optional<Instant> adieuJusqua_;  ///< the last words are being said
  UsageRealtime usage_;
  std::int64_t octetsEntres_ = 0, octetsSortis_ = 0;

  // The session.
  std::shared_ptr<RealtimeClient> client_;
  std::uint64_t session_ = 0;  ///< what an earlier one still brings is of no use
  bool prete_ = false;
  bool dejaPrete_ = false;  ///< since the last loss
  std::int64_t tentative_ = 1;
  std::optional<Instant> ouverteAvant_;  ///< it must be ready by then
  std::optional<Instant> reconnexionA_;
  std::optional<RefusRealtime> refus_;
  bool refusDit_ = false;  ///< the error that follows says the same
  std::deque<std::string> items_;

  // The turn.
  bool parle_ = false;     ///< the operator, as the service hears him
  bool enfonce_ = false;   ///< the key is down
  bool tourFini_ = false;  ///< it was let go before the session was ready
  std::deque<Octets> attenteSon_;
  std::int64_t octetsDuTour_ = 0;
  std::optional<Instant>
      reponseJusqua_;         ///< a response is being produced; over by then if nothing more is heard of it
  bool demande_ = false;      ///< a response is to be asked for
  bool ecartee_ = false;      ///< what the response still brings is not wanted any more
  bool pourAnnonce_ = false;  ///< the response is not to the operator
  std::string itemSon_;
  VoixEnCoursInterne voix_;

  // The tools.
  FileAppelsRealtime appels_;
  std::optional<Instant> appelJusqua_;
  std::optional<FileAppelsRealtime::Appel>
      orphelin_;  ///< its session was lost: what it returns is told in a note

  // The board.
  MondeVoix monde_, mondeDit_;
  FileAnnoncesVoix annonces_;
  std::optional<std::string> livree_;  ///< sent, and not taken up yet
  bool feuVert_ = false;
  std::map<std::string, Instant, std::less<>> travaux_;  ///< since when each agent works

  std::optional<Instant> reveilA_;
  std::uint64_t reveil_ = 0;
  std::function<void()> annulerReveil_;
};

}  // namespace tarnavelle
