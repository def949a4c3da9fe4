// Programs that the board starts for itself: each in a session of its own, called with words, with no
// descriptor and no signal setting of ours. Safe from any thread; one `Enfant`, one thread at a time.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Enfants/Descripteur.hpp"
#include "Socle/Environnement.hpp"

namespace tarnavelle::Plateau {

/// Texts as exec takes them, which must outlive the list.
std::vector<char*> pointeurs(const std::vector<std::string>& textes);

struct Embarque {
  std::vector<std::string> mots;  ///< program, looked up on our PATH, and arguments
  Environnement environnement;    ///< all of it
  std::string dossier;            ///< where it starts; empty for ours
  bool erreurs = false;           ///< its errors go where its output goes, else nowhere
  bool tientSaSortie = false;     ///< it holds the reading end of its output too
};

/// One that runs, with pipes on its input and output, our ends non-blocking.
struct Enfant {
  pid_t pid = 0;  ///< of its session too; to be waited for
  Descripteur entree;
  Descripteur sortie;
  /// Nothing when it cannot be started.
  static std::optional<Enfant> lancer(const Embarque& embarque);
};

/// One that is run to its end.
struct Course {
  Embarque embarque;
  std::chrono::milliseconds auPlus;
  std::size_t sortieMax = std::numeric_limits<std::size_t>::max();  ///< bytes kept: the last ones
  std::string_view entree{};                                        ///< what it reads
  std::function<bool()> arret{};  ///< asked now and then: true ends it before its time
  bool laisser = false;           ///< at the end of its time it is left to run
};
struct Arrivee {
  int statut = -1;         ///< of exit: 127 when it could not be started, -1 when it was ended
  bool horsDelai = false;  ///< its time was over
  bool arretee = false;    ///< `arret` asked for it
  std::string sortie;
};
/// Ended with it: all that it left behind in its session, unless it was left to run.
Arrivee courir(const Course& course);

}  // namespace tarnavelle::Plateau
