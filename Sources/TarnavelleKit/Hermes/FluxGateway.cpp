#include "Hermes/FluxGateway.hpp"

#include "Hermes/AbonnementNtfy.hpp"

namespace tarnavelle {

bool ErreurFluxGateway::sentLaSessionRefusee() const {
  const auto* refus = std::get_if<http>(&cas);
  return refus && (refus->statut == 400 || refus->statut == 404 || refus->statut == 422);
}

std::string_view ErreurFluxGateway::phrase(ErreurReseau code) {
  const bool injoignable = code == ErreurReseau::hoteIntrouvable || code == ErreurReseau::connexionImpossible ||
                           code == ErreurReseau::resolutionEchouee;
  return injoignable ? "la passerelle d'Hermès est injoignable" : AbonnementNtfy::phrase(code);
}

RepliApresCoupure::Decision RepliApresCoupure::decider(const Vus& vus) {
  // A reply that was only text is asked for again.
  return vus.aVuUnOutil || vus.aVuUnFeuVert ? Decision::annoncerSeulement : Decision::rejouerEnCLI;
}

}  // namespace tarnavelle
