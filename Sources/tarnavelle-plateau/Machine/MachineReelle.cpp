#include "Machine/MachineReelle.hpp"

#include "Enfants/Enfant.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::chrono::seconds ouvertureMax{5};  ///< an opener that runs longer has become the browser

bool adresse(std::string_view cible) {
  if (cible.starts_with("http://") || cible.starts_with("https://") || cible.starts_with("file:///"))
    return true;
  return cible.starts_with('/');
}

}  // namespace

Machine::Issue MachineReelle::verifier(const Verification& quoi) {
  auto arrivee = courir({.embarque = {.mots = {"/bin/sh", "-c", quoi.commande},
                                      .environnement = heritage_,
                                      .dossier = quoi.dossier,
                                      .erreurs = true},
                         .auPlus = quoi.auPlus,
                         .sortieMax = sortieMax,
                         .arret = quoi.arret});
  return {.statut = arrivee.statut,
          .horsDelai = arrivee.horsDelai,
          .arretee = arrivee.arretee,
          .sortie = Texte::reparer(arrivee.sortie)};
}

std::optional<std::string> MachineReelle::ouvrirWeb(const std::string& cible) {
  std::string page = cible;
  if (!adresse(page)) {
    if (page.find('.') == std::string::npos || Texte::mots(page).size() != 1 || page.starts_with('-'))
      return "Il faut une adresse : une recherche n'est pas encore câblée ici.";
    page.insert(0, "https://");
  }
#if defined(__APPLE__)
  constexpr const char* ouvreur = "open";
#else
  constexpr const char* ouvreur = "xdg-open";
  if (!environnement_.texte("DISPLAY") && !environnement_.texte("WAYLAND_DISPLAY"))
    return "Il n'y a pas de bureau sur cette machine, donc pas de navigateur.";
#endif
  const auto arrivee =
      courir({.embarque = {.mots = {ouvreur, page}, .environnement = heritage_, .dossier = "/"},
              .auPlus = ouvertureMax,
              .sortieMax = 0,
              .laisser = true});
  if (arrivee.statut != 0 && !arrivee.horsDelai) return "Aucun navigateur n'a ouvert la page.";
  return std::nullopt;
}

}  // namespace tarnavelle::Plateau
