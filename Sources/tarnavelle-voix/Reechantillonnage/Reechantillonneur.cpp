#include "Reechantillonnage/Reechantillonneur.hpp"

#include <samplerate.h>

#include <array>
#include <cmath>
#include <utility>

namespace tarnavelle::Voix {
namespace {

bool admise(double frequence) {
  return frequence >= Reechantillonneur::frequenceMin && frequence <= Reechantillonneur::frequenceMax;
}

bool admises(int voies) { return voies >= 1 && voies <= Reechantillonneur::voiesMax; }

struct Fermer {
  void operator()(SRC_STATE* convertisseur) const { src_delete(convertisseur); }
};

}  // namespace

struct Reechantillonneur::Etat {
  Forme forme;
  std::unique_ptr<SRC_STATE, Fermer> convertisseur;  ///< null: the rates are the same
  std::vector<float> mono;                           ///< the chunk, its channels made one

  void ecrire(std::span<const float> samples, std::vector<float>& sortie) const {
    for (const float x : samples) sortie.insert(sortie.end(), static_cast<std::size_t>(forme.voiesSortie), x);
  }

  void convertir(bool fin, std::vector<float>& sortie) const {
    if (!convertisseur) return ecrire(mono, sortie);
    std::array<float, 4096> bloc;  // filled before it is read
    SRC_DATA passe{};
    passe.src_ratio = forme.sortie / forme.entree;
    passe.end_of_input = fin;
    passe.data_in = mono.data();
    passe.input_frames = static_cast<long>(mono.size());
    passe.data_out = bloc.data();
    passe.output_frames = static_cast<long>(bloc.size());
    // Until it takes and gives nothing more.
    while (src_process(convertisseur.get(), &passe) == 0) {
      ecrire(std::span(bloc).first(static_cast<std::size_t>(passe.output_frames_gen)), sortie);
      if (passe.output_frames_gen == 0 && passe.input_frames_used == 0) return;
      passe.data_in += passe.input_frames_used;
      passe.input_frames -= passe.input_frames_used;
    }
  }
};

std::optional<Reechantillonneur> Reechantillonneur::creer(const Forme& forme) {
  if (!admise(forme.entree) || !admise(forme.sortie) || !admises(forme.voiesEntree) ||
      !admises(forme.voiesSortie))
    return std::nullopt;
  auto etat = std::make_unique<Etat>();
  etat->forme = forme;
  if (forme.entree != forme.sortie) {
    int faute = 0;
    etat->convertisseur.reset(src_new(SRC_SINC_FASTEST, 1, &faute));
    if (!etat->convertisseur) return std::nullopt;
  }
  return Reechantillonneur(std::move(etat));
}

Reechantillonneur::Reechantillonneur(std::unique_ptr<Etat> etat) : etat_(std::move(etat)) {}
Reechantillonneur::Reechantillonneur(Reechantillonneur&& autre) noexcept = default;
Reechantillonneur& Reechantillonneur::operator=(Reechantillonneur&& autre) noexcept = default;
Reechantillonneur::~Reechantillonneur() = default;

void Reechantillonneur::passer(std::span<const float> entree, std::vector<float>& sortie) {
  const auto voies = static_cast<std::size_t>(etat_->forme.voiesEntree);
  std::vector<float>& mono = etat_->mono;
  mono.clear();
  for (std::size_t i = 0; i + voies <= entree.size(); i += voies) {
    float somme = 0;
    for (const float x : entree.subspan(i, voies)) somme += std::isfinite(x) ? x : 0;
    mono.push_back(std::isfinite(somme) ? somme / static_cast<float>(voies) : 0);
  }
  etat_->convertir(false, sortie);
}

void Reechantillonneur::finir(std::vector<float>& sortie) {
  etat_->mono.clear();
  if (etat_->convertisseur) etat_->convertir(true, sortie);
  vider();
}

void Reechantillonneur::vider() {
  if (etat_->convertisseur) src_reset(etat_->convertisseur.get());
}

}  // namespace tarnavelle::Voix
