#include "Appel/AppelPorte.hpp"

#include <utility>

#include "Socle/EcritureJSON.hpp"

namespace tarnavelle {

Coffre AppelPorte::posterPorte(const Json& corps, const PorteResolue& porte,
                               const std::vector<EnteteHTTP>& aussi) {
  std::vector<EnteteHTTP> entetes = {{"Authorization", "Bearer " + porte.jeton},
                                     {"Content-Type", "application/json"}};
  entetes.insert(entetes.end(), aussi.begin(), aussi.end());
  auto reponse = client_.envoyer({.methode = "POST",
                                  .url = porte.url,
                                  .entetes = std::move(entetes),
                                  .corps = EcritureJSON::compacte(corps).value_or("")},
                                 bornes_);
  echec_.reset();
  if (!reponse) {
    echec_ = reponse.raison();
    return {};
  }
  return {std::move(reponse->corps), reponse->statut};
}

}  // namespace tarnavelle
