// The two ends of a conversation's sound: what it hears with and what it speaks through, whatever they are (a
// device, a file, a pipe). Sound is 24 kHz mono here; what an end itself needs is its own business. One thread
// moves the sound, every few milliseconds; no call blocks.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tarnavelle::Voix {

using Montre = std::chrono::steady_clock;

inline constexpr int frequenceVoix = 24000;

class EntreeSon {
 public:
  virtual ~EntreeSon() = default;

  /// Appends what has come since the last call.
  virtual void puiser(std::vector<float>& mono, Montre::time_point maintenant) = 0;

  /// Nothing more will come, ever.
  virtual bool finie() const { return false; }
};

class SortieSon {
 public:
  virtual ~SortieSon() = default;

  /// How many samples it takes now.
  virtual std::size_t place(Montre::time_point maintenant) = 0;
  virtual void verser(std::span<const float> mono) = 0;
  /// Nothing follows for the moment: what is held back to be joined to it goes out.
  virtual void finir() = 0;
  /// What was given and can still be kept from being heard is dropped.
  virtual void vider() = 0;
  /// How many samples `vider` would drop.
  virtual std::size_t enAttente() const = 0;

  /// Why nothing more will ever go out, in French: a sentence. From any thread.
  virtual std::optional<std::string> panne() const { return std::nullopt; }
};

/// Keeps a sound to real time: an end that runs faster, as a file does, is slowed down.
class Debit {
 public:
  /// What may pass at once after a pause.
  static constexpr std::chrono::duration<double> avanceMax{0.25};
  /// Of a device's clock, which is never quite that of this machine: to be let pass, or sound would pile up.
  static constexpr double ecartMax = 1.01;

  /// `plein`: that much may pass at the start.
  explicit Debit(bool plein) : plein_(plein) {}

  /// Samples that may pass now.
  std::size_t permis(Montre::time_point maintenant, double frequence) {
    const double max = avanceMax.count() * frequence;
    if (vu_ == Montre::time_point{})
      jetons_ = plein_ ? max : 0;
    else
      jetons_ = std::min(max, jetons_ + std::chrono::duration<double>(maintenant - vu_).count() * frequence);
    vu_ = maintenant;
    return jetons_ > 0 ? static_cast<std::size_t>(jetons_) : 0;
  }
  void passer(std::size_t echantillons) { jetons_ -= static_cast<double>(echantillons); }

 private:
  bool plein_;
  double jetons_ = 0;
  Montre::time_point vu_{};
};

}  // namespace tarnavelle::Voix
