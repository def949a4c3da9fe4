#include "Photographe/DessinAPart.hpp"

#include "Enfants/Enfant.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::chrono::seconds delai{20};

}  // namespace

Resultat<Image, std::string> DessinAPart::peindre(const Grille& grille) {
  const std::lock_guard verrou(mutex_);
  const std::string pli = Pli::plier(grille);
  const auto arrivee = courir({.embarque = {.mots = {programme_}, .environnement = heritage_, .dossier = "/"},
                               .auPlus = delai,
                               .entree = pli});
  if (arrivee.statut == 127)
    return Sinon{"Ce plateau ne prend pas de photos : « " + programme_ +
                 " », qui les dessine, n'a pas pu être lancé."};
  if (auto image = Pli::deplierImage(arrivee.sortie)) return *std::move(image);
  return Sinon{std::string("La photo n'a pas pu être dessinée.")};
}

}  // namespace tarnavelle::Plateau
