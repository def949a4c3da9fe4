// Carries out the verbs of the door, over any ground of terminals: one call in, one reply out. What there is on
// the board stands in the registry, what runs in the terminals, what agents are doing in the watch; here is
// what each verb does to them and what it answers.
//
// Safe from any thread. What is typed into one terminal is typed by one caller at a time, in the order in which
// they came. No lock is held while a terminal is asked for anything.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>

#include "Etats/Veille.hpp"
#include "Porte/ReponsePorte.hpp"
#include "Registre/Registre.hpp"
#include "Socle/LectureJSON.hpp"
#include "Terminaux/Terminaux.hpp"
#include "Verbes/Appelant.hpp"
#include "Verbes/Horloge.hpp"
#include "Verbes/Moyens.hpp"
#include "Verbes/Saisie.hpp"

namespace tarnavelle::Plateau {

struct ReglagesExecuteur {
  std::size_t agentsMax = 64;
  /// Longest wait for a caller that does not say how long it can: the bridge gives up at 30 s. Nothing: as
  /// long as the verb asks for.
  std::optional<std::chrono::seconds> patienceMuette = std::chrono::seconds(25);
  std::chrono::seconds pretMax{20};           ///< for a new agent to take text
  std::chrono::milliseconds pretDepuis{800};  ///< its box shows, without a dialog: one may open after it
  std::chrono::minutes verificationMax{10};   ///< for the command that attests a task
  ReglageSaisie saisie;
};

/// What the verbs stand on. All of it outlives the executor.
struct Sol {
  Terminaux& terminaux;
  Registre& registre;
  Veille& veille;
  Horloge& horloge;
  Lanceurs& lanceurs;
  Machine* machine = nullptr;
  Vues* vues = nullptr;
  Photographe* photographe = nullptr;
  Extincteur* extincteur = nullptr;
  const Oreille* oreille = nullptr;
  Lointain* lointain = nullptr;
  Distant* distant = nullptr;
};

class Executeur {
 public:
  explicit Executeur(const Sol& sol, ReglagesExecuteur reglages = {});
  ~Executeur();
  Executeur(const Executeur&) = delete;
  Executeur& operator=(const Executeur&) = delete;

  /// `corps`: the call as it was posted, its "action" with the verb's arguments.
  ReponsePorte executer(const Json& corps, const Appelant& appelant = {});

  /// Takes up what the registry knows: the agents whose terminals still stand go on, the others have ended.
  /// What stands there and is not in the registry is given a name and a place in it. Terminals that cannot be
  /// asked are asked again at the next call, and until then nobody has ended. The registry needs a scene first.
  std::optional<Avarie> adopter();

  /// Gives the messages that wait to the agents that can take them, and attests the tasks that were reported.
  /// Once; how many things were done.
  std::size_t avancer();
  /// Does so on threads of its own, whenever something has changed.
  void veiller();

  /// Ends every wait under way and to come, and the threads of `veiller`.
  void arreter();

 private:
  struct Corps;
  std::unique_ptr<Corps> corps_;
};

}  // namespace tarnavelle::Plateau
