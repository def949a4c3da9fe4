#include "Agents/EvenementVol.hpp"

#include <algorithm>
#include <utility>

#include "Socle/Chemin.hpp"
#include "Socle/LignesJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::CarnetDeVol {
namespace {

std::string consigneNormalisee(std::string_view texte) {
  return Texte::tronquer(Texte::rogner(texte), bulleMax);
}

std::string_view texteOuVide(const Json& objet, std::string_view cle) {
  const std::string* chaine = Champ::chaine(objet, cle);
  return chaine ? std::string_view(*chaine) : std::string_view();
}

std::string_view resumeOutil(const Json& d) {
  const Json* entree = Champ::membre(d, "tool_input");
  if (!entree) return {};
  for (const std::string_view cle : {"file_path", "command", "pattern", "url", "path", "query", "description"})
    if (const auto valeur = texteOuVide(*entree, cle); !valeur.empty())
      return cle == "file_path" || cle == "path" ? Chemin::dernierComposant(valeur) : valeur;
  return {};
}

}  // namespace

EvenementVol evenement(std::string_view nom, const Json& d) {
  if (nom == "SessionStart") return {EvenementVol::demarre{}};
  if (nom == "Stop" || nom == "SessionEnd") return {EvenementVol::fini{}};
  if (nom == "UserPromptSubmit") {
    std::string consigne = consigneNormalisee(texteOuVide(d, "prompt"));
    if (!consigne.empty()) return {EvenementVol::consigne{std::move(consigne)}};
  }
  if (nom == "PreToolUse") {
    if (const std::string* outil = Champ::chaine(d, "tool_name"))
      return {EvenementVol::outil{*outil, Texte::tronquer(resumeOutil(d), bulleMax)}};
  }
  if (nom == "Notification")
    return {EvenementVol::besoin{Texte::tronquer(Texte::rogner(texteOuVide(d, "message")), bulleMax)}};
  return {EvenementVol::inconnu{}};
}

std::vector<ObjetDecode> decoder(std::string_view ligne) {
  std::vector<ObjetDecode> decodes;
  LignesJSON::objets(ligne, [&](const Json& objet) {
    const std::string* nom = Champ::chaine(objet, "hook_event_name");
    if (!nom) return;
    const std::string* transcript = Champ::chaine(objet, "transcript_path");
    decodes.push_back({evenement(*nom, objet), transcript ? std::optional(*transcript) : std::nullopt});
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
