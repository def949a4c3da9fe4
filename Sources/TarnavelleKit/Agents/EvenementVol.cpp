#include "Agents/EvenementVol.hpp"

#include <algorithm>
#include <utility>

#include "Socle/Chemin.hpp"
#include "Socle/LignesJSON.hpp"
#include "Socle/MembresLus.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::CarnetDeVol {
namespace {

constexpr auto clesResume =
    std::to_array<std::string_view>({"file_path", "command", "pattern", "url", "path", "query", "description"});
constexpr auto clesHook = std::to_array<std::string_view>(
    {"hook_event_name", "transcript_path", "prompt", "message", "tool_name", "tool_input"});
constexpr auto clesLues = clesReunies(clesHook, clesResume);
using Hook = MembresLus<clesLues>;

std::string consigneNormalisee(std::string_view texte) {
  return Texte::tronquer(Texte::rogner(texte), bulleMax);
}

std::string_view resumeOutil(const Hook& entree) {
  for (const Hook::Cle cle : Hook::liste(clesResume))
    if (const auto valeur = entree[cle].texte(); !valeur.empty())
      return cle.texte().ends_with("path") ? Chemin::dernierComposant(valeur) : valeur;
  return {};
}

EvenementVol evenementDe(std::string_view nom, const Hook& d) {
  if (nom == "SessionStart") return {EvenementVol::demarre{}};
  if (nom == "Stop" || nom == "SessionEnd") return {EvenementVol::fini{}};
  if (nom == "UserPromptSubmit") {
    std::string consigne = consigneNormalisee(d["prompt"].texte());
    if (!consigne.empty()) return {EvenementVol::consigne{std::move(consigne)}};
  }
  if (nom == "PreToolUse") {
    if (const std::string* outil = d["tool_name"].chaine())
      return {EvenementVol::outil{*outil, Texte::tronquer(resumeOutil(d["tool_input"]), bulleMax)}};
  }
  if (nom == "Notification")
    return {EvenementVol::besoin{Texte::tronquer(Texte::rogner(d["message"].texte()), bulleMax)}};
  return {EvenementVol::inconnu{}};
}

}  // namespace

EvenementVol evenement(std::string_view nom, const Json& d) { return evenementDe(nom, Hook(d)); }

std::vector<ObjetDecode> decoder(std::string_view ligne) {
  std::vector<ObjetDecode> decodes;
  LignesJSON::objets(ligne, Hook::filtre, [&](const Json& objet) {
    const Hook hook(objet);
    const std::string* nom = hook["hook_event_name"].chaine();
    if (!nom) return;
    const std::string* transcript = hook["transcript_path"].chaine();
    decodes.push_back({evenementDe(*nom, hook), transcript ? std::optional(*transcript) : std::nullopt});
  });
  return decodes;
}

Lecture lire(std::string_view data) {
  Lecture lecture;
  lecture.consommes = LignesJSON::parcourir(data, [&](std::string_view ligne) {
    for (ObjetDecode& decode : decoder(ligne)) {
      if (decode.transcript) lecture.transcript = std::move(decode.transcript);
      if (!std::holds_alternative<EvenementVol::inconnu>(decode.evenement.cas))
        lecture.evenements.push_back(std::move(decode.evenement));
    }
  });
  return lecture;
}

SansEcho sansEcho(std::vector<EvenementVol> recus, const std::optional<std::string>& echo) {
  SansEcho resultat{std::move(recus), false};
  if (!echo) return resultat;
  const EvenementVol attendu{EvenementVol::consigne{consigneNormalisee(*echo)}};
  const auto trouve = std::ranges::find(resultat.evenements, attendu);
  resultat.echoConsomme = trouve != resultat.evenements.end();
  if (resultat.echoConsomme) resultat.evenements.erase(trouve);
  return resultat;
}

}  // namespace tarnavelle::CarnetDeVol
