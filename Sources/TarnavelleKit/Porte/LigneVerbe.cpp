#include "Porte/LigneVerbe.hpp"

#include <algorithm>

#include "Porte/TableVerbes.hpp"
#include "Socle/LectureJSON.hpp"

namespace tarnavelle {

const LigneVerbe* LigneVerbe::de(std::string_view verbe) {
  for (const LigneVerbe& ligne : tableVerbes())
    if (ligne.outil.nom == verbe) return &ligne;
  return nullptr;
}

std::optional<std::chrono::seconds> LigneVerbe::delaiDe(const Json& arguments) const {
  constexpr std::chrono::seconds defaut{60}, plafond{300};
  if (delai.empty()) return std::nullopt;
  const auto demande = Champ::entier(arguments, delai, 0);
  return demande <= 0 ? defaut : std::chrono::seconds(std::min(demande, std::int64_t{plafond.count()}));
}

std::optional<Designe> LigneVerbe::designe(std::string_view parametre) const {
  if (parametre == "agent") return Designe::agent;
  const auto trouve = std::ranges::find(parametres, parametre, &Parametre::nom);
  return trouve == parametres.end() ? std::nullopt : std::optional(trouve->designe);
}

}  // namespace tarnavelle
