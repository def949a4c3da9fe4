// The ear on Hermès over the real network: OreilleNtfy with FluxHTTP and the machine's clock.
// `ecouter` takes the thread it is called on; `arreter` may come from any thread, and ends it at once.
#pragma once

#include "Hermes/OreilleNtfy.hpp"
#include "Reseau/FluxHTTP.hpp"

namespace tarnavelle {

class EcouteNtfy {
 public:
  explicit EcouteNtfy(OreilleNtfy::Rappels rappels);

  OreilleNtfy::Fin ecouter(const ReglageNtfy& reglage, const OreilleNtfy::Cockpit& cockpit,
                           const OreilleNtfy::Souvenir& souvenir = {}) {
    return oreille_.ecouter(reglage, cockpit, souvenir);
  }

  /// As `OreilleNtfy::souvenir`.
  OreilleNtfy::Souvenir souvenir() const { return oreille_.souvenir(); }

  /// For good.
  void arreter() { flux_.interrompre(); }

 private:
  FluxHTTP flux_;
  OreilleNtfy oreille_;
};

}  // namespace tarnavelle
