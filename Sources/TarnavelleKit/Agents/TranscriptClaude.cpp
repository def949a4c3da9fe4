#include "Agents/TranscriptClaude.hpp"

#include "Agents/FichierDistant.hpp"
#include "Socle/LignesJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::TranscriptClaude {

bool cheminSur(std::string_view chemin) {
  return chemin.starts_with('/') && chemin.find("..") == std::string_view::npos &&
         Texte::lettresEtNombres(chemin, "/.-_ ") == chemin;
}

std::optional<std::string> commandeLecture(std::string_view chemin, std::int64_t curseur) {
  if (!cheminSur(chemin)) return std::nullopt;
  return "sh -c '" + FichierDistant::impression(chemin, curseur) + '\'';
}

Lecture lire(std::string_view data) {
  Lecture lecture;
  lecture.consommes = LignesJSON::parcourir(data, [&](std::string_view ligne) {
    if (auto reponse = texte(ligne)) lecture.textes.push_back(std::move(*reponse));
  });
  return lecture;
}

std::optional<std::string> texte(std::string_view ligne) {
  const auto objet = LignesJSON::objet(ligne);
  if (!objet) return std::nullopt;
  const std::string* type = Champ::chaine(*objet, "type");
  const Json* message = Champ::membre(*objet, "message");
  const Json* content = message ? Champ::membre(*message, "content") : nullptr;
  if (!type || *type != "assistant" || !content || !content->is_array()) return std::nullopt;

  std::string reponse;
  for (const Json& element : *content) {
    const std::string* genre = Champ::chaine(element, "type");
    const std::string* brut = Champ::chaine(element, "text");
    if (!genre || *genre != "text" || !brut) continue;
    const auto partie = Texte::rogner(*brut);
    if (partie.empty()) continue;
    if (!reponse.empty()) reponse += '\n';
    reponse += partie;
  }
  if (reponse.empty()) return std::nullopt;
  return Texte::tronquer(reponse, reponseMax);
}

}  // namespace tarnavelle::TranscriptClaude
