#include "Voix/ProfilEcouteVoix.hpp"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace tarnavelle {
namespace {

constexpr int margeAvantMS = 300;

}  // namespace

const ProfilEcouteVoix& ProfilEcouteVoix::hautParleurs() {
  static const ProfilEcouteVoix profil{.seuilPourCent = 65,
                                       .silenceFinDeTourMS = 1400,
                                       .coupeLeMicroPendantQuOnParle = true,
                                       .nom = "haut-parleurs"};
  return profil;
}

const ProfilEcouteVoix& ProfilEcouteVoix::casque() {
  static const ProfilEcouteVoix profil{
      .seuilPourCent = 55, .silenceFinDeTourMS = 900, .coupeLeMicroPendantQuOnParle = false, .nom = "casque"};
  return profil;
}

// Dividing gives the double nearest to the decimal, which is written as that decimal; multiplying by 0.01
// does not.
double ProfilEcouteVoix::seuil() const { return std::max(seuilPourCent, 0) / 100.0; }

Json ProfilEcouteVoix::detectionDeTourJSON() const {
  return {{"type", "server_vad"},
          {"threshold", seuil()},
          {"prefix_padding_ms", margeAvantMS},
          {"silence_duration_ms", silenceFinDeTourMS},
          {"create_response", true},
          {"interrupt_response", !coupeLeMicroPendantQuOnParle}};
}

}  // namespace tarnavelle
