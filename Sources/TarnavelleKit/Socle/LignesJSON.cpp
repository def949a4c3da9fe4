#include "Socle/LignesJSON.hpp"

#include "Socle/LectureIndulgente.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::LignesJSON {

std::size_t parcourir(std::string_view tranche, const std::function<void(std::string_view)>& voir) {
  std::size_t debut = 0;
  for (std::size_t fin; (fin = tranche.find('\n', debut)) != std::string_view::npos; debut = fin + 1)
    voir(tranche.substr(debut, fin - debut));
  return debut;
}

std::optional<Json> objet(std::string_view ligne, const LectureJSON::Filtre& filtre) {
  return LectureIndulgente::objet(Texte::sansMarqueDOrdre(ligne), filtre);
}

void objets(std::string_view ligne, const LectureJSON::Filtre& filtre,
            const std::function<void(const Json&)>& voir) {
  ligne = Texte::sansMarqueDOrdre(ligne);
  if (const auto valeur = LectureIndulgente::valeur(ligne, filtre)) {
    if (valeur->is_object()) voir(*valeur);
    return;
  }
  LectureIndulgente::chaqueObjet(ligne, [&](const Json& objet) {
    voir(objet);
    return true;
  });
}

}  // namespace tarnavelle::LignesJSON
