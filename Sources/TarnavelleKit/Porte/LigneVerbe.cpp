#include "Porte/LigneVerbe.hpp"

#include <algorithm>

#include "Porte/TableVerbes.hpp"

namespace tarnavelle {

const LigneVerbe* LigneVerbe::de(std::string_view verbe) {
  for (const LigneVerbe& ligne : tableVerbes())
    if (ligne.outil.nom == verbe) return &ligne;
  return nullptr;
}

std::optional<Designe> LigneVerbe::designe(std::string_view parametre) const {
  if (parametre == "agent") return Designe::agent;
  const auto trouve = std::ranges::find(parametres, parametre, &Parametre::nom);
  return trouve == parametres.end() ? std::nullopt : std::optional(trouve->designe);
}

}  // namespace tarnavelle
