// A conversation as it is carried out: one turn at a time on a thread of its own, which tells all that comes
// about to a `Courrier`; answers to requests for approval; what the kit decides after a refused session and
// after a cut. One thread calls it, the one that takes the news.
#pragma once

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "HermesReseau/ConversationHermes.hpp"
#include "Nouvelle.hpp"
#include "Voie.hpp"

namespace tarnavelle {

class Entretien {
 public:
  Entretien(std::unique_ptr<Voie> voie, std::shared_ptr<Courrier> courrier)
      : voie_(std::move(voie)), courrier_(std::move(courrier)) {}
  /// Interrupts what is under way.
  ~Entretien();
  Entretien(const Entretien&) = delete;
  Entretien& operator=(const Entretien&) = delete;

  /// Begins a turn; none is under way. `session`: empty for a new one. Its end comes as news.
  void dire(const std::string& message, const std::string& session);
  void interrompre();
  /// Lets the message go, which `Nouvelle::depart` announced: what must be known of it by then is kept.
  void partir();
  /// The way of the turns to come; none is under way.
  void passerPar(std::unique_ptr<Voie> voie);

  /// Answers a request for approval; what became of that comes as news, once.
  void trancher(const std::string& id, DecisionApprobation decision, const std::string& session);

 private:
  IssueEntretien jouer(const std::string& message, std::string session);
  IssueEntretien echouer(const std::string& message, const IssueTour::echouee& echec);
  void poster(Nouvelle nouvelle) { courrier_->poster(std::move(nouvelle)); }

  std::unique_ptr<Voie> voie_;
  const std::shared_ptr<Courrier> courrier_;
  std::thread tour_;

  std::mutex verrou_;  ///< of what follows
  std::condition_variable depart_;
  bool arret_ = false;
  bool parti_ = false;
  std::unique_ptr<ConversationHermes> conversation_;  ///< of the turn under way
  Voie::Ouverte ouverte_;                             ///< what the last turn went by
};

}  // namespace tarnavelle
