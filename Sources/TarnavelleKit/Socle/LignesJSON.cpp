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

std::optional<Json> objet(std::string_view ligne) {
  return LectureIndulgente::objet(Texte::sansMarqueDOrdre(ligne));
}

}  // namespace tarnavelle::LignesJSON
