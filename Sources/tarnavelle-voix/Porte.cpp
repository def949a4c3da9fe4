#include "Porte.hpp"

#include <vector>

#include "Appel/AppelPorte.hpp"
#include "Client.hpp"
#include "DirePorte.hpp"
#include "Porte/PorteControle.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Voix {

Porte::Reponse Porte::appeler(const Json& corps, std::optional<std::chrono::seconds> attente) const {
  const auto recherche = PorteControle::chercherPorte(environnement_);
  if (!recherche.porte)
    return {.texte = Texte::joindre(DirePorte::introuvable(recherche, environnement_), " ")};
  const auto patience = attente.value_or(Client::patience(corps));
  AppelPorte appel({.attente = patience, .vie = patience, .corpsMax = AppelPorte::bornes.corpsMax});
  auto coffre = appel.posterPorte(corps, *recherche.porte);
  if (const auto& echec = appel.echec())
    return {.texte = DirePorte::sansReponse(*echec, patience, recherche, environnement_).front()};
  const auto document = LectureJSON::objet(*coffre.data);
  const auto lue = document ? ReponsePorte::depuis(*document) : std::nullopt;
  if (!lue) return {.texte = "La réponse de la porte est illisible."};
  const auto dite =
      (lue->ok ? lue->spoken_text : lue->error).value_or(lue->ok ? "C'est fait." : "La porte a refusé.");
  return {.ok = lue->ok,
          .texte = Texte::sansSecret(Texte::rogner(dite), recherche.porte->jeton),
          .corps = Texte::sansSecret(*coffre.data, recherche.porte->jeton)};
}

}  // namespace tarnavelle::Voix
