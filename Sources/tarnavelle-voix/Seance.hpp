// A conversation held by this program: sound, board, keys and what is shown, joined to the kit's
// ConversationVoix.
#pragma once

#include "Options.hpp"
#include "ReglagesVoix.hpp"
#include "Socle/Environnement.hpp"

namespace tarnavelle::Voix {

/// Exit statuses.
namespace Issue {
inline constexpr int fait = 0;
inline constexpr int refus = 1;          ///< the service refuses
inline constexpr int mauvaiseLigne = 2;  ///< the line, a setting or a device is to be seen to
inline constexpr int sansReponse = 3;    ///< the service was never reached
inline constexpr int interrompu = 130;
}  // namespace Issue

/// Until it is over; messages go to `erreurs`. Before any other thread is started. Returns the exit status.
int parlerAuPlateau(const Variables& environnement, const Options& options, int erreurs);

}  // namespace tarnavelle::Voix
