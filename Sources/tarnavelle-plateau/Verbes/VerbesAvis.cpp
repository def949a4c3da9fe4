// What Hermès publishes, as the board tells it.
#include <algorithm>
#include <functional>

#include "Appliquer.hpp"
#include "Services.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::size_t listesMax = 20;  ///< notices of a list: the last ones

bool nouveau(const FicheAvis& avis) { return !avis.lu; }

Json enJSON(const FicheAvis& avis) {
  return {{"numero", avis.numero},
          {"quand", dateEtHeure(avis.quand)},
          {"nouveau", !avis.lu},
          {"titre", avis.titre},
          {"texte", Texte::tronquer(avis.texte, affichesMax)}};
}

Json derniers(const std::vector<FicheAvis>& avis, std::size_t auPlus) {
  Json liste = Json::array();
  const auto combien = static_cast<std::ptrdiff_t>(std::min(auPlus, avis.size()));
  for (auto a = avis.end() - combien; a != avis.end(); ++a) liste.push_back(enJSON(*a));
  return liste;
}

}  // namespace

void direAvis(const Atelier& atelier, Json& json, std::string& phrase) {
  if (const std::string dit = atelier.sol.oreille ? atelier.sol.oreille->dit() : ""; !dit.empty())
    json["oreille"] = dit;
  auto nouveaux = atelier.sol.registre.avisRecus();
  if (!nouveaux) return;
  std::erase_if(*nouveaux, std::not_fn(nouveau));
  if (nouveaux->empty()) return;
  const auto combien = nouveaux->size();
  json["avis"] = derniers(*nouveaux, listesMax);
  json["avis_nouveaux"] = combien;
  phrase +=
      " Hermès a publié " + std::to_string(combien) + (combien > 1 ? " avis, non lus." : " avis, non lu.");
  if (combien >= static_cast<std::size_t>(Registre::fichesMax))
    phrase += " De plus anciens ont pu être effacés.";
}

bool marqueLus(const Json& corps) { return Champ::booleen(corps, "lus", false); }

ReponsePorte avis(Atelier& atelier, const Appelant&, const Json& corps) {
  const auto tous = atelier.sol.registre.avisRecus();
  if (!tous) return refus(tous.raison());
  // All those that nobody has read: they are about to count as read.
  const auto neufs = static_cast<std::size_t>(std::ranges::count_if(*tous, nouveau));
  Json liste = derniers(*tous, std::max(listesMax, neufs));
  if (tous->empty()) return ReponsePorte::succes("Hermès n'a rien publié.", donnees({{"avis", liste}}));
  if (marqueLus(corps))
    if (const auto fait = atelier.sol.registre.lireAvis(tous->back().numero); !fait)
      return refus(fait.raison());
  return ReponsePorte::succes({}, donnees({{"avis", liste}}));
}

}  // namespace tarnavelle::Plateau
