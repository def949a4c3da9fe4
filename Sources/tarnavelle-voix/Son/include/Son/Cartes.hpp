// The microphone and the loudspeaker of this machine, by PortAudio. A device that vanishes or stalls is told
// and looked for until it comes back; meanwhile nothing is heard, and what is said is lost at the pace of time.
//
// PortAudio and the libraries under it write what they please on standard error, from threads of their own:
// whoever cares for what is shown there gives them another one (`isolerErreurs`).
//
// The callbacks neither allocate nor lock nor call the system: a ring of samples parts them from the thread
// that moves the sound. Opening, watching and closing are a thread's of their own, since any of them may take
// long.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Socle/Resultat.hpp"
#include "Son/Bouts.hpp"

namespace tarnavelle::Voix {

struct Peripherique {
  int numero = 0;
  std::string nom{};
  std::string systeme{};  ///< of sound, such as "ALSA"
  int voiesEntree = 0;
  int voiesSortie = 0;
  double frequence = 0;
  bool microUsuel = false;
  bool hautParleurUsuel = false;
};
/// Has descriptor 2 lead nowhere; returns one that leads where it did, for the program's own words: among them
/// what is told when one of those libraries ends the process, with status 2. Once.
int isolerErreurs();

/// Those that this machine has now.
std::vector<Peripherique> peripheriques();

class Cartes {
 public:
  /// Without a callback for so long, a device has stalled.
  static constexpr std::chrono::seconds calageMax{2};

  struct Reglages {
    /// Which one, by its number or a part of its name; empty: the usual one. Absent: none is wanted.
    std::optional<std::string> micro{};
    std::optional<std::string> hautParleur{};
    /// What the operator is to know: sentences. On a thread of the devices' own.
    std::function<void(std::string phrase, std::string conseil)> dire{};
  };

  /// Open ones; or why there is no sound, in French: what, and what to do.
  struct Refus {
    std::string phrase;
    std::string conseil;
  };
  static Resultat<std::shared_ptr<Cartes>, Refus> ouvrir(Reglages reglages);
  ~Cartes();
  Cartes(const Cartes&) = delete;
  Cartes& operator=(const Cartes&) = delete;

  /// Null when none is wanted. They keep what they need alive.
  std::unique_ptr<EntreeSon> micro();
  std::unique_ptr<SortieSon> hautParleur();

 private:
  struct Interne;
  explicit Cartes(std::shared_ptr<Interne> interne) : interne_(std::move(interne)) {}
  const std::shared_ptr<Interne> interne_;
};

}  // namespace tarnavelle::Voix
