// Looks at the board once a second, and tells what has become of it. Events come on its own thread.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "Plateau.hpp"
#include "Porte.hpp"

namespace tarnavelle::Voix {

class Veille {
 public:
  static constexpr std::chrono::seconds cadence{1};
  static constexpr std::chrono::seconds patience{5};
  /// Work shorter than this is not summed up: its end is not told.
  static constexpr std::chrono::seconds travailMin{20};

  struct Rappels {
    std::function<void(const PlateauVu&)> surPlateau{};
    std::function<void(const std::string& agent)> surAppel{};  ///< it waits for an answer, which is new
    struct Activite {
      std::string agent;
      bool travaille;
      std::string resume;  ///< of what it did; may be empty
    };
    std::function<void(const Activite&)> surActivite{};
    /// The door does not answer any more, and why; or answers again (empty).
    std::function<void(const std::string& raison)> surPorte{};
  };

  /// The board at once, when it answers.
  static std::optional<PlateauVu> regarder(const Porte& porte, std::string* raison = nullptr);

  Veille(std::shared_ptr<const Porte> porte, std::optional<PlateauVu> connu, Rappels rappels);
  /// No callback begins any more; a look at the board that is under way ends alone.
  ~Veille();
  Veille(const Veille&) = delete;
  Veille& operator=(const Veille&) = delete;

 private:
  struct Interne;
  const std::shared_ptr<Interne> interne_;
};

}  // namespace tarnavelle::Voix
