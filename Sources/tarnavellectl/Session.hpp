// What a command has to do with the outside: the environment it reads and the two streams it writes.
#pragma once

#include "Socle/Environnement.hpp"
#include "Sortie.hpp"

namespace tarnavelle {

/// Exit statuses.
namespace Statut {
inline constexpr int fait = 0;
inline constexpr int refus = 1;          ///< the door refused
inline constexpr int mauvaiseLigne = 2;  ///< the command line is wrong, or asks what cannot be done here
inline constexpr int sansReponse = 3;    ///< no door, or no answer
}  // namespace Statut

struct Session {
  Variables environnement = Variables::duProcessus();
  Sortie sortie{1, environnement};
  Sortie erreurs{2, environnement};
};

}  // namespace tarnavelle
