#include "Socle/LignesJSON.hpp"

namespace tarnavelle::LignesJSON {

std::size_t parcourir(std::string_view tranche, const std::function<void(std::string_view)>& voir) {
  std::size_t debut = 0;
  for (std::size_t fin; (fin = tranche.find('\n', debut)) != std::string_view::npos; debut = fin + 1)
    voir(tranche.substr(debut, fin - debut));
  return debut;
}

std::optional<Json> objet(std::string_view ligne) {
  constexpr std::string_view marqueOrdreOctets = "\uFEFF";
  if (ligne.starts_with(marqueOrdreOctets)) ligne.remove_prefix(marqueOrdreOctets.size());
  return LectureJSON::objet(ligne);
}

}  // namespace tarnavelle::LignesJSON
