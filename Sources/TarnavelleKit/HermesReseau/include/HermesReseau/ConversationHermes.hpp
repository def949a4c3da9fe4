// One turn with the remote agent over the real network: TourHermes with FluxHTTP.
// `jouer` takes the thread it is called on; `arreter` may come from any thread, and ends it at once.
#pragma once

#include "Hermes/TourHermes.hpp"
#include "Reseau/FluxHTTP.hpp"

namespace tarnavelle {

class ConversationHermes {
 public:
  /// Once: a turn is a conversation of its own.
  IssueTour jouer(const RequeteGateway::Tour& tour, const TourHermes::SurEvenement& surEvenement) {
    return tour_.jouer(tour, surEvenement);
  }

  /// As `TourHermes::donnerFeuVert`.
  void donnerFeuVert() { tour_.donnerFeuVert(); }

  /// For good.
  void arreter() { flux_.interrompre(); }

 private:
  FluxHTTP flux_;
  TourHermes tour_{flux_};
};

}  // namespace tarnavelle
