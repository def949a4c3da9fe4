#include "Porte/TableVerbes.hpp"

#include <algorithm>
#include <iterator>

#include "LigneVerbeInterne.hpp"

namespace tarnavelle {
const std::vector<LigneVerbe>& tableVerbes() {
  static const auto table = [] {
    std::vector<LigneVerbe> lignes;
    for (auto* genre :
         {interne::verbesPlateau, interne::verbesAgents, interne::verbesTerminaux, interne::verbesMessages})
      std::ranges::move(genre(), std::back_inserter(lignes));
    std::ranges::stable_sort(lignes, {}, &LigneVerbe::rang);
    return lignes;
  }();
  return table;
}

}  // namespace tarnavelle
