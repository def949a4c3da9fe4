#include "ContenuReponse.hpp"

#include <utility>

#include "Porte/PorteMCP.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {

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
