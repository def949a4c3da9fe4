#include "Voix/FenetreLecture.hpp"

#include <algorithm>

#include "Voix/RealtimeAudio.hpp"

namespace tarnavelle {

std::int64_t FenetreLecture::planifier(std::int64_t echantillons, Secondes maintenant, double frequence) {
  if (echantillons >= 1 && frequence >= 1)
    finDeLecture = std::max(finDeLecture, maintenant) + Secondes(static_cast<double>(echantillons) / frequence);
  return echantillons;
}

bool FenetreLecture::audible(Secondes maintenant) const {
  return maintenant < finDeLecture + traine && finDeLecture > Secondes(0);
}

std::int64_t FenetreHautParleur::planifier(std::int64_t echantillons) {
  const std::lock_guard verrou(verrou_);
  return fenetre_.planifier(echantillons, horloge_(), RealtimeAudio::sampleRate);
}

void FenetreHautParleur::vider() {
  const std::lock_guard verrou(verrou_);
  fenetre_.vider();
}

bool FenetreHautParleur::parleEncore() const {
  const std::lock_guard verrou(verrou_);
  return fenetre_.audible(horloge_());
}

FenetreHautParleur::Secondes FenetreHautParleur::restantSecondes() const {
  const std::lock_guard verrou(verrou_);
  return fenetre_.restantSecondes(horloge_());
}

}  // namespace tarnavelle
