// How a conversation listens: when the service takes the operator's turn as begun and as over, and
// whether sound may cut the voice short. Plain values: the two usual ones are immutable, and safe from any
// thread.
#pragma once

#include <string>

#include "Socle/JSON.hpp"

namespace tarnavelle {

struct ProfilEcouteVoix {
  int seuilPourCent = 0;                      ///< voice-activity threshold, in hundredths
  int silenceFinDeTourMS = 0;                 ///< silence that ends the operator's turn, in milliseconds
  bool coupeLeMicroPendantQuOnParle = false;  ///< no barge-in: the microphone is muted while the voice speaks
  std::string nom;

  bool operator==(const ProfilEcouteVoix&) const = default;

  static const ProfilEcouteVoix& hautParleurs();
  static const ProfilEcouteVoix& casque();
  static const ProfilEcouteVoix& pour(bool casquePrive) { return casquePrive ? casque() : hautParleurs(); }

  /// The threshold, never negative. It is written with two decimals at most.
  double seuil() const;

  /// The "turn_detection" object of a session.
  Json detectionDeTourJSON() const;
};

}  // namespace tarnavelle
