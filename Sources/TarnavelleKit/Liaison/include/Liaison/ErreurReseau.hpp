// Why a connection could not be made or did not last, for those who decide what to do next and for the
// operator. What a protocol says on top (an HTTP status, a WebSocket close code) is its client's business. From
// any thread.
#pragma once

#include <string_view>

namespace tarnavelle {

enum class ErreurReseau {
  reseauAbsent,         ///< no road out of this machine
  connexionPerdue,      ///< ended or reset by the peer or on the way
  delaiDepasse,         ///< nothing happened in time
  hoteIntrouvable,      ///< the name does not exist
  connexionImpossible,  ///< refused or unreachable
  resolutionEchouee,    ///< the name could not be looked up
  tlsEchoue,            ///< no common ground for an encrypted connection
  certificatNonFiable,  ///< of another host, revoked, malformed or of no use for this
  certificatPerime,     ///< its dates are over or unreadable
  certificatPasEncoreValide,
  racineInconnue,       ///< signed by an authority that the system does not know
  autoritesIllisibles,  ///< the same, of a system whose authorities cannot be read
  annulee,              ///< by us
  autre,
};

/// In French, for the operator: a lower-case clause without a full stop.
std::string_view description(ErreurReseau erreur);

}  // namespace tarnavelle
