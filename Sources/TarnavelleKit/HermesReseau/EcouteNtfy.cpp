#include "HermesReseau/EcouteNtfy.hpp"

#include <utility>

#include "Socle/HorlogeContinue.hpp"

namespace tarnavelle {

EcouteNtfy::EcouteNtfy(OreilleNtfy::Rappels rappels)
    : oreille_(
          flux_, [] { return OreilleNtfy::Secondes(HorlogeContinue::maintenant()); }, std::move(rappels)) {}

}  // namespace tarnavelle
