#include "Hermes/AcquisNtfy.hpp"

#include <algorithm>
#include <utility>

namespace tarnavelle {

std::optional<AcquisNtfy::Secondes> AcquisNtfy::ouvrir(Secondes maintenant, bool rattrapage) {
  debut_ = maintenant;
  demande_ = rattrapage && livre_;
  ouverte_ = rattrapee_ = false;
  heureOuverture_.reset();
  if (!demande_) return std::nullopt;
  return maintenant - *livre_ + chevauchement + prevue_;
}

bool AcquisNtfy::repondre(Secondes maintenant) {
  const Secondes ouverture = maintenant - debut_;
  const bool aTemps = ouverture <= prevue_;
  prevue_ = std::max(ouvertureUsuelle, 2 * ouverture);
  if (!demande_) {  // nothing is caught up: this is where it begins
    livre_ = debut_;
    rattrapee_ = true;
  }
  return aTemps;
}

void AcquisNtfy::vivre(Secondes maintenant, std::optional<Secondes> heureServeur) {
  if (!std::exchange(ouverte_, true)) {
    heureOuverture_ = heureServeur;
    return;
  }
  rattrapee_ = true;
  avancer(maintenant, heureServeur);
}

void AcquisNtfy::recevoir(Secondes maintenant, Secondes heureServeur) {
  // Well before the opening, it is caught up and so are those before it; else it may be live, ahead of them.
  if (rattrapee_ || (heureOuverture_ && heureServeur + chevauchement <= *heureOuverture_))
    avancer(maintenant, heureServeur);
}

void AcquisNtfy::avancer(Secondes maintenant, std::optional<Secondes> heureServeur) {
  // What comes now may have left long ago. Only the server's clock tells, counted from the opening.
  Secondes jusque = maintenant;
  if (heureServeur && heureOuverture_) jusque = std::min(jusque, debut_ + (*heureServeur - *heureOuverture_));
  livre_ = std::max(livre_.value_or(jusque), jusque);
}

}  // namespace tarnavelle
