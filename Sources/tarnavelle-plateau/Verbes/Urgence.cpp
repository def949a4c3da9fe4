#include "Verbes/Urgence.hpp"

#include "Agents/VoliereTmux.hpp"

namespace tarnavelle::Plateau {

std::string_view enMots(Etat etat) {
  switch (etat) {
    case Etat::travaille: return "travaille";
    case Etat::besoin: return "attend une réponse";
    case Etat::repos:
    case Etat::fini: return "au repos";  // what it declared of itself is told elsewhere
    case Etat::sorti: return "sorti";
    case Etat::rompue: return "lien rompu";
    case Etat::inconnu: return "dans un état inconnu";
  }
  return "";
}

int urgence(Etat etat) {
  using enum UrgenceVoliere::Cran;
  auto cran = repos;
  switch (etat) {
    case Etat::besoin: cran = besoinDeVous; break;
    case Etat::travaille: cran = travaille; break;
    case Etat::inconnu: cran = connexion; break;
    case Etat::repos:
    case Etat::fini: break;
    case Etat::sorti:
    case Etat::rompue: cran = UrgenceVoliere::Cran::rompue; break;
  }
  return static_cast<int>(cran);
}

}  // namespace tarnavelle::Plateau
