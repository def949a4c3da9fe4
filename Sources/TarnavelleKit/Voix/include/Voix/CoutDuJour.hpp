// The day's cost of the voice, kept in a file of the user's own: a CumulVoixDuJour as JSON, replaced whole or
// not at all. Several processes may add to it at once: a lock on a file beside it (its name and ".verrou") puts
// them one after the other. A file that cannot be understood is set aside (its name and ".illisible"), never
// written over. Any thread, each call on its own.
#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

#include "Socle/Date.hpp"
#include "Socle/Environnement.hpp"
#include "Socle/Resultat.hpp"
#include "Voix/UsageRealtime.hpp"

namespace tarnavelle {

class CoutDuJour {
 public:
  using Instant = std::chrono::system_clock::time_point;

  /// How long another process is waited for.
  static constexpr std::chrono::milliseconds attenteMax{2000};

  explicit CoutDuJour(std::filesystem::path fichier, Calendrier calendrier = Calendrier::local(),
                      std::chrono::milliseconds patience = attenteMax)
      : fichier_(std::move(fichier)), calendrier_(std::move(calendrier)), patience_(patience) {}

  /// "tarnavelle/voix/cout.json" among what the user's programs keep.
  static std::filesystem::path chemin(const Variables& environnement);

  /// What is written there; nothing when there is none that can be understood.
  std::optional<CumulVoixDuJour> lire() const;

  struct Ajout {
    CumulVoixDuJour cumul;
    std::string
        plainte{};  ///< what the operator has to be told, in French: the old record was set aside; may be empty
  };
  /// Adds a conversation of that cost, and returns the day's record; or why it could not be kept, in French.
  Resultat<Ajout, std::string> ajouter(double dollars, Instant le) const;

  /// The day in one line, as it is written; nothing when no conversation was held.
  std::optional<std::string> ligne(Instant le) const;

 private:
  std::filesystem::path fichier_;
  Calendrier calendrier_;
  std::chrono::milliseconds patience_;
};

}  // namespace tarnavelle
