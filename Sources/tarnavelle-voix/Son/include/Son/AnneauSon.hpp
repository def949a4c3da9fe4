// Samples on their way between a sound callback and a thread, or between two threads. One writes, one reads;
// neither waits, locks nor allocates. What was written can be given up by a third: it is then never read.
#pragma once

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tarnavelle::Voix {

class AnneauSon {
 public:
  /// Room for at least that many samples.
  explicit AnneauSon(std::size_t echantillons)
      : tampon_(std::bit_ceil(std::max<std::size_t>(echantillons, 2))) {}

  std::size_t capacite() const { return tampon_.size(); }

  /// Those that had room, from the first on.
  std::size_t ecrire(std::span<const float> echantillons) {
    const auto ecrits = ecrits_.load(std::memory_order_relaxed);
    const auto place = capacite() - static_cast<std::size_t>(ecrits - lus_.load(std::memory_order_acquire));
    const auto nombre = std::min(place, echantillons.size());
    for (std::size_t i = 0; i < nombre; ++i) tampon_[(ecrits + i) & (capacite() - 1)] = echantillons[i];
    ecrits_.store(ecrits + nombre, std::memory_order_release);
    return nombre;
  }

  /// As many as there are, at most what there is room for.
  std::size_t lire(std::span<float> echantillons) {
    auto lus = lus_.load(std::memory_order_relaxed);
    lus = std::max(lus, perdus_.load(std::memory_order_acquire));
    const auto nombre =
        std::min(static_cast<std::size_t>(ecrits_.load(std::memory_order_acquire) - lus), echantillons.size());
    for (std::size_t i = 0; i < nombre; ++i) echantillons[i] = tampon_[(lus + i) & (capacite() - 1)];
    lus_.store(lus + nombre, std::memory_order_release);
    return nombre;
  }

  /// All that waits is passed over. By the reader.
  void sauter() { lus_.store(ecrits_.load(std::memory_order_acquire), std::memory_order_release); }

  /// What has been written so far is not to be read any more. By the writer, or with it kept out.
  void abandonner() { perdus_.store(ecrits_.load(std::memory_order_relaxed), std::memory_order_release); }

  /// Written and still to be read, as the writer knows it.
  std::size_t enAttente() const {
    const auto lus = std::max(lus_.load(std::memory_order_acquire), perdus_.load(std::memory_order_acquire));
    const auto ecrits = ecrits_.load(std::memory_order_acquire);
    return ecrits > lus ? static_cast<std::size_t>(ecrits - lus) : 0;
  }

 private:
  static_assert(std::atomic<std::uint64_t>::is_always_lock_free);

  std::vector<float> tampon_;
  std::atomic<std::uint64_t> ecrits_ = 0;
  std::atomic<std::uint64_t> lus_ = 0;
  std::atomic<std::uint64_t> perdus_ = 0;  ///< what comes before is given up
};

}  // namespace tarnavelle::Voix
