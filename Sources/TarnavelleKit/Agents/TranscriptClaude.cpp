#include "Agents/TranscriptClaude.hpp"

#include "Agents/FichierDistant.hpp"
#include "Socle/LignesJSON.hpp"
#include "Socle/MembresLus.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::TranscriptClaude {
namespace {

constexpr auto clesLues = clesReunies(std::to_array<std::string_view>({"type", "message", "content", "text"}));
using Lu = MembresLus<clesLues>;

}  // namespace

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
  const auto objet = LignesJSON::objet(ligne, Lu::filtre);
  if (!objet) return std::nullopt;
  const Lu lu(*objet);
  if (lu["type"].texte() != "assistant") return std::nullopt;

  std::string reponse;
  for (const Lu element : lu["message"]["content"]) {
    if (element["type"].texte() != "text") continue;
    const auto partie = Texte::rogner(element["text"].texte());
    if (partie.empty()) continue;
    if (!reponse.empty()) reponse += '\n';
    reponse += partie;
  }
  if (reponse.empty()) return std::nullopt;
  return Texte::tronquer(reponse, reponseMax);
}

}  // namespace tarnavelle::TranscriptClaude
