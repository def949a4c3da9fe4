#include "Hermes/ErreurFluxGateway.hpp"

#include "PhraseReseauInterne.hpp"

namespace tarnavelle {

bool ErreurFluxGateway::sentLaSessionRefusee() const {
  const auto* refus = std::get_if<http>(&cas);
  return refus && (refus->statut == 400 || refus->statut == 404 || refus->statut == 422);
}

std::string_view ErreurFluxGateway::phrase(ErreurReseau code) {
  return interne::phraseReseau(code, "la passerelle d'Hermès est injoignable");
}

}  // namespace tarnavelle
