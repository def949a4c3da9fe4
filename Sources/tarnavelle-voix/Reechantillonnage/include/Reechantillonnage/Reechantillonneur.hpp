// Sound from one rate to another, chunk after chunk: what one chunk leaves serves the next, so that nothing is
// lost or added between them, however short they are. Band-limited, by libsamplerate. One thread at a time; not
// for a device's callback, since it may allocate.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace tarnavelle::Voix {

class Reechantillonneur {
 public:
  static constexpr double frequenceMin = 8000, frequenceMax = 192000;
  static constexpr int voiesMax = 64;

  /// Rates in samples a second of each channel. Several channels are made one by their mean; one is repeated.
  struct Forme {
    double entree = 0;
    double sortie = 0;
    int voiesEntree = 1;
    int voiesSortie = 1;
  };
  /// Nothing when a rate or a number of channels is out of range.
  static std::optional<Reechantillonneur> creer(const Forme& forme);

  Reechantillonneur(Reechantillonneur&& autre) noexcept;
  Reechantillonneur& operator=(Reechantillonneur&& autre) noexcept;
  ~Reechantillonneur();

  /// Appends to `sortie` what that chunk of interleaved samples brings. A sample that is not finite is silence;
  /// what is left of an incomplete frame is dropped.
  void passer(std::span<const float> entree, std::vector<float>& sortie);
  /// Appends what is still on its way, and begins anew.
  void finir(std::vector<float>& sortie);
  /// Forgets what is on its way.
  void vider();

 private:
  struct Etat;
  explicit Reechantillonneur(std::unique_ptr<Etat> etat);

  std::unique_ptr<Etat> etat_;
};

}  // namespace tarnavelle::Voix
