#include "Son/Pupitre.hpp"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

#include "Voix/RealtimeAudio.hpp"

namespace tarnavelle::Voix {
namespace {

constexpr auto attenteOctets =
    static_cast<std::size_t>(std::chrono::seconds(Pupitre::attenteMax).count() * frequenceVoix * 2);
constexpr auto parMorceau = static_cast<std::size_t>(frequenceVoix * Pupitre::morceau.count() / 1000);

float force(std::span<const float> sons) {
  if (sons.empty()) return 0;
  float somme = 0;
  for (const float s : sons) somme += s * s;
  return std::min(1.0F, std::sqrt(somme / static_cast<float>(sons.size())));
}

}  // namespace

Pupitre::Pupitre(std::unique_ptr<EntreeSon> entree, std::unique_ptr<SortieSon> sortie,
                 std::function<void(Octets)> surSon)
    : entree_(std::move(entree)),
      sortie_(std::move(sortie)),
      surSon_(std::move(surSon)),
      fil_([this] { tourner(); }) {}

Pupitre::~Pupitre() {
  {
    const std::lock_guard verrou(verrou_);
    arret_ = true;
  }
  fin_.notify_all();
  fil_.join();
}

void Pupitre::jouer(const Octets& pcm) {
  const std::lock_guard verrou(verrou_);
  if (resteADire() * 2 + pcm.size() > attenteOctets) {
    debordes_ += pcm.size() / 2;
    return;
  }
  if (entame_ * 2 > aDire_.size())
    aDire_.erase(aDire_.begin(), aDire_.begin() + static_cast<std::ptrdiff_t>(std::exchange(entame_, 0)));
  aDire_.insert(aDire_.end(), pcm.begin(), pcm.begin() + static_cast<std::ptrdiff_t>(pcm.size() / 2 * 2));
}

std::size_t Pupitre::resteADire() const { return (aDire_.size() - entame_) / 2; }

std::int64_t Pupitre::couper() {
  const std::lock_guard verrou(verrou_);
  const auto perdus = resteADire() + sortie_->enAttente() + std::exchange(debordes_, 0);
  aDire_ = {};
  entame_ = 0;
  enParole_ = false;
  sortie_->vider();
  return static_cast<std::int64_t>(perdus);
}

bool Pupitre::muet() const {
  const std::lock_guard verrou(verrou_);
  return resteADire() == 0 && sortie_->enAttente() == 0;
}

void Pupitre::tourner() {
  auto suivant = Montre::now();
  std::unique_lock verrou(verrou_);
  while (!arret_) {
    const auto maintenant = Montre::now();
    parler(maintenant);
    verrou.unlock();
    ecouter(maintenant);
    verrou.lock();
    suivant = std::max(suivant + cadence, Montre::now());  // after a suspension, no burst
    fin_.wait_until(verrou, suivant, [this] { return arret_; });
  }
}

void Pupitre::ecouter(Montre::time_point maintenant) {
  if (retenue_) return;
  const bool finie = entree_->finie();
  entree_->puiser(entendu_, maintenant);
  std::span<const float> reste = entendu_;
  while (reste.size() >= parMorceau || (finie && !reste.empty())) {
    const auto pris = reste.first(std::min(parMorceau, reste.size()));
    niveau_ = force(pris);
    surSon_(RealtimeAudio::floatsToPCM16(pris));
    reste = reste.subspan(pris.size());
  }
  entendu_.erase(entendu_.begin(), entendu_.end() - static_cast<std::ptrdiff_t>(reste.size()));
  if (finie) finie_ = true;
}

void Pupitre::parler(Montre::time_point maintenant) {
  const auto pris = std::min(sortie_->place(maintenant), resteADire());
  if (pris > 0) {
    dit_ = RealtimeAudio::pcm16ToFloats(std::span(aDire_).subspan(entame_, pris * 2));
    niveauParole_ = force(dit_);
    sortie_->verser(dit_);
    enParole_ = true;
    entame_ += pris * 2;
  }
  const bool epuise = resteADire() == 0;
  // Sound that comes piece by piece is one: it is taken as over when the last of it is about to be played.
  if (enParole_ && epuise && sortie_->enAttente() < parMorceau) {
    enParole_ = false;
    sortie_->finir();
  }
  if (epuise && sortie_->enAttente() == 0) niveauParole_ = 0;
}

}  // namespace tarnavelle::Voix
