#include "ContenuReponse.hpp"

#include <utility>

#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {

PorteMCP::ResultatAppel contenuReponse(Coffre coffre) {
  if (coffre.data) {
    const auto lu = LectureJSON::booleenDeTete(*coffre.data, "ok");
    if (lu.lisible || Texte::utf8Valide(*coffre.data))
      return {.corpsJSON = std::move(*coffre.data),
              .ok = lu.valeur.value_or(false),
              .objet = lu.lisible && lu.valeur};
  }
  const auto message = "La porte n'a pas répondu (HTTP " + std::to_string(coffre.statut) + ").";
  return {.corpsJSON = PorteMCP::ligne(PorteMCP::refus(message)), .objet = true};
}

}  // namespace tarnavelle
