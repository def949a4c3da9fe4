// The board's door, as the voice calls it: a verb posted, what is to be said of its reply. The door is found as
// the command-line client finds it, at each call. Safe from any thread.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "Porte/ReponsePorte.hpp"
#include "Socle/Environnement.hpp"
#include "Socle/JSON.hpp"

namespace tarnavelle::Voix {

class Porte {
 public:
  explicit Porte(Variables environnement) : environnement_(std::move(environnement)) {}

  struct Reponse {
    bool ok = false;
    std::string texte;                   ///< the door's sentence, or why there is none, in French
    std::optional<std::string> corps{};  ///< the reply as it came; absent without one
  };
  /// Waits as long as the verb deserves, or as is said.
  Reponse appeler(const Json& corps, std::optional<std::chrono::seconds> attente = {}) const;

 private:
  const Variables environnement_;
};

}  // namespace tarnavelle::Voix
