#include "Appel/AppelPorte.hpp"

#include <utility>

#include "Socle/EcritureJSON.hpp"

namespace tarnavelle {

RequeteHTTP AppelPorte::requete(std::string corps, const PorteResolue& porte,
                                const std::vector<EnteteHTTP>& aussi) {
  std::vector<EnteteHTTP> entetes = {{"Authorization", "Bearer " + porte.jeton},
                                     {"Content-Type", "application/json"}};
  entetes.insert(entetes.end(), aussi.begin(), aussi.end());
  return {.methode = "POST", .url = porte.url, .entetes = std::move(entetes), .corps = std::move(corps)};
}

Coffre AppelPorte::posterPorte(const Json& corps, const PorteResolue& porte,
                               const std::vector<EnteteHTTP>& aussi) {
  auto reponse = client_.envoyer(requete(EcritureJSON::compacte(corps).value_or(""), porte, aussi), bornes_);
  echec_.reset();
  if (!reponse) {
    echec_ = reponse.raison();
    return {};
  }
  return {std::move(reponse->corps), reponse->statut};
}

}  // namespace tarnavelle
