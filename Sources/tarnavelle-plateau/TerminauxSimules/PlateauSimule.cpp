#include "TerminauxSimules/PlateauSimule.hpp"
#include "Socle/LectureJSON.hpp"

#include <utility>

namespace tarnavelle::Plateau {
namespace {

/// A simulated program draws at once, and needs no time to be believed.
ReglagesExecuteur reglages() {
  ReglagesExecuteur reglages;
  reglages.patienceMuette.reset();
  reglages.pretDepuis = std::chrono::milliseconds(0);
  reglages.saisie.collageMin = std::chrono::milliseconds(0);
  return reglages;
}

}  // namespace

PlateauSimule::PlateauSimule(Horloge& horloge, Registre registre)
    : registre_(std::move(registre)),
      terminaux_([&horloge] { return horloge.maintenant(); }),
      veille_(terminaux_),
      executeur_({.terminaux = terminaux_,
                  .registre = registre_,
                  .veille = veille_,
                  .horloge = horloge,
                  .lanceurs = lanceurs_},
                 reglages()) {}

std::unique_ptr<PlateauSimule> PlateauSimule::depart(Horloge& horloge) {
  auto registre = Registre::enMemoire();
  if (!registre) return nullptr;
  const auto sources = registre->ajouterScene("Sources", "~/Sources");
  if (!sources || !registre->ajouterScene("Atelier", "~/Atelier")) return nullptr;
  FicheFenetre forge;
  forge.id = "forge";
  forge.nom = "Forge";
  forge.scene = *sources;
  if (!registre->garderFenetre(forge)) return nullptr;
  std::unique_ptr<PlateauSimule> plateau(new PlateauSimule(horloge, std::move(*registre)));
  for (const Json& ouverture :
       {Json{{"action", "ouvrir_agent"}, {"cli", "claude"}, {"dossier", "Sources"}},
        Json{{"action", "ouvrir_agent"}, {"cli", "codex"}, {"dossier", "Atelier"}}})  // Merlin, then Milan
    if (!plateau->executeur_.executer(ouverture).ok) return nullptr;
  return plateau;
}

}  // namespace tarnavelle::Plateau
