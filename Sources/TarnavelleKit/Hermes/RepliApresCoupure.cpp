#include "Hermes/RepliApresCoupure.hpp"

namespace tarnavelle::RepliApresCoupure {

Decision decider(const Vus& vus) {
  // A reply that was only text is asked for again.
  return vus.aVuUnOutil || vus.aVuUnFeuVert ? Decision::annoncerSeulement : Decision::rejouerEnCLI;
}

}  // namespace tarnavelle::RepliApresCoupure
