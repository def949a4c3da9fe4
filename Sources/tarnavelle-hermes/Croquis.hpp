// The lines below the thread, as they are drawn anew at each change: the line that Hermès is saying, what
// waits, and the box or, in its place, a dialog. What a board reads of them is described in its screen rules,
// conversation.regles: both change together. Pure functions.
#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <vector>

#include "Boite.hpp"
#include "Fil.hpp"
#include "Hermes/EvenementGateway.hpp"
#include "Terminal/Toile.hpp"

namespace tarnavelle::Croquis {

struct Moment {
  const Fil& fil;
  const std::vector<std::string>& enFile;  ///< messages that wait for the turn's end
  const Boite& boite;
  const std::deque<DemandeApprobationHermes>& demandes;
  bool repondu = false;  ///< an answer to the first of them is on its way
  bool enTour = false;
};
Toile::Vif vif(const Moment& moment, std::size_t colonnes, std::size_t lignes);

}  // namespace tarnavelle::Croquis
