// Until when the model's voice is still coming out of the speakers, so that the microphone can be muted
// meanwhile. Sound is queued, not mixed: each chunk plays after those before it.
// `FenetreLecture` is a plain value, for one thread at a time; `FenetreHautParleur` is safe from any thread,
// and asks its clock with its lock held.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>

namespace tarnavelle {

struct FenetreLecture {
  /// Lengths, and instants counted from a fixed reference date.
  using Secondes = std::chrono::duration<double>;

  /// How long after its end the sound still counts as heard: the output's latency and the room's echo,
  /// lest the microphone reopen on the last syllable.
  static constexpr Secondes traine{0.35};

  Secondes finDeLecture{};  ///< 0: nothing is playing

  bool operator==(const FenetreLecture&) const = default;

  /// Queues that many samples at `frequence` a second, and returns their number. Fewer than one sample
  /// or than one a second change nothing.
  std::int64_t planifier(std::int64_t echantillons, Secondes maintenant, double frequence);

  /// The playback was flushed.
  void vider() { finDeLecture = {}; }

  bool audible(Secondes maintenant) const;

  /// Negative once the sound is over.
  Secondes restantSecondes(Secondes maintenant) const { return finDeLecture - maintenant; }
};

/// The window of a session's speakers: 24 kHz, on the system's clock.
class FenetreHautParleur {
 public:
  using Secondes = FenetreLecture::Secondes;
  using Horloge = std::function<Secondes()>;

  FenetreHautParleur() : FenetreHautParleur(horlogeSysteme) {}
  explicit FenetreHautParleur(Horloge horloge) : horloge_(std::move(horloge)) {}

  /// For each chunk handed to the player: its number of 16-bit samples, which is returned.
  std::int64_t planifier(std::int64_t echantillons);
  void vider();
  bool parleEncore() const;
  Secondes restantSecondes() const;

 private:
  static Secondes horlogeSysteme() { return std::chrono::system_clock::now().time_since_epoch(); }

  Horloge horloge_;
  mutable std::mutex verrou_;  ///< guards `fenetre_`
  FenetreLecture fenetre_;
};

}  // namespace tarnavelle
