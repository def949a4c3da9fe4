// Moves the sound of a conversation between its ends, on a thread of its own: what is heard goes to a function
// in short chunks, what is to be said waits here until its turn comes. Sound is 24 kHz mono PCM16 on this side.
// Every function may be called from any thread; `surSon` is called on that of the sound, and must be brief.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "Socle/Octets.hpp"
#include "Son/Bouts.hpp"

namespace tarnavelle::Voix {

class Pupitre {
 public:
  /// Between two looks at the ends.
  static constexpr std::chrono::milliseconds cadence{5};
  /// Of sound in a chunk, at most.
  static constexpr std::chrono::milliseconds morceau{10};

  Pupitre(std::unique_ptr<EntreeSon> entree, std::unique_ptr<SortieSon> sortie,
          std::function<void(Octets)> surSon);
  ~Pupitre();
  Pupitre(const Pupitre&) = delete;
  Pupitre& operator=(const Pupitre&) = delete;

  static constexpr std::chrono::minutes attenteMax{10};

  /// After what was given before; dropped when that is more than will be listened to.
  void jouer(const Octets& pcm);
  /// Silence at once. How many of the samples given will never be heard.
  std::int64_t couper();
  /// Nothing is left to be played.
  bool muet() const;

  /// Why what is said goes nowhere any more, in French; nothing while it does.
  std::optional<std::string> panne() const { return sortie_->panne(); }

  /// Nothing is taken of the input meanwhile: a file waits to be heard.
  void retenir(bool retenue) { retenue_ = retenue; }

  /// The input has come to its end and all of it was told.
  bool entreeFinie() const { return finie_; }
  /// Of the last chunk heard: 0 (silence) to 1.
  float niveau() const { return niveau_; }
  float niveauParole() const { return niveauParole_; }

 private:
  void tourner();
  void ecouter(Montre::time_point maintenant);
  void parler(Montre::time_point maintenant);
  std::size_t resteADire() const;

  const std::unique_ptr<EntreeSon> entree_;
  const std::unique_ptr<SortieSon> sortie_;
  const std::function<void(Octets)> surSon_;

  std::vector<float> entendu_;
  std::vector<float> dit_;

  mutable std::mutex verrou_;  ///< guards what follows, and `sortie_`
  std::condition_variable fin_;
  bool arret_ = false;
  Octets aDire_;
  std::size_t entame_ = 0;    ///< bytes of it that are gone
  std::size_t debordes_ = 0;  ///< samples dropped since the last silence
  bool enParole_ = false;

  std::atomic<bool> retenue_ = false;
  std::atomic<bool> finie_ = false;
  std::atomic<float> niveau_ = 0;
  std::atomic<float> niveauParole_ = 0;
  std::thread fil_;
};

}  // namespace tarnavelle::Voix
