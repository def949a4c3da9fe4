#include "Voix/RefusRealtime.hpp"

#include "Socle/LectureJSON.hpp"

namespace tarnavelle {

RefusRealtime RefusRealtime::lire(const Json& porteur) {
  const Json* erreur = Champ::membre(porteur, "error");
  if (erreur && erreur->is_object())
    return {.code = Champ::texte(Champ::chaine(*erreur, "code") ? *erreur : porteur, "code"),
            .genre = Champ::texte(*erreur, "type"),
            .message = Champ::texte(*erreur, "message")};
  return {.code = Champ::texte(porteur, "code"), .genre = {}, .message = Champ::texte(porteur, "error")};
}

RefusRealtime RefusRealtime::deConnexion(int statut, std::string_view corps) {
  const auto document = LectureJSON::objet(corps);
  RefusRealtime refus = document ? lire(*document) : RefusRealtime{.message = std::string(corps)};
  refus.http = statut;
  return refus;
}

}  // namespace tarnavelle
