#include "AppelPorte.hpp"

#include <utility>

#include "Porte/PorteMCP.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {

Coffre AppelPorte::posterPorte(const Json& corps, const PorteResolue& porte) {
  auto reponse = client_.envoyer(
      {.methode = "POST",
       .url = porte.url,
       .entetes = {{"Authorization", "Bearer " + porte.jeton}, {"Content-Type", "application/json"}},
       .corps = EcritureJSON::compacte(corps).value_or("")},
      bornes_);
  if (!reponse) return {};
  return {std::move(reponse->corps), reponse->statut};
}

Json contenuReponse(Coffre coffre) {
  if (coffre.data) {
    const auto lu = LectureJSON::booleenDeTete(*coffre.data, "ok");
    if (lu.lisible || Texte::utf8Valide(*coffre.data))
      return PorteMCP::contenuAppel(std::move(*coffre.data), lu.valeur.value_or(false));
  }
  const auto message = "La porte n'a pas répondu (HTTP " + std::to_string(coffre.statut) + ").";
  return PorteMCP::contenuAppel(PorteMCP::ligne(PorteMCP::refus(message)), false);
}

}  // namespace tarnavelle
