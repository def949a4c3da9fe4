// What a board of terminals answers beside the verbs of the door: why an agent's state is what it is, what was
// done, the relays, its own end. A client asks for them as for a verb; a door that has none of them answers as
// to any unknown verb.
#pragma once

#include <string_view>

#include "Atelier.hpp"
#include "Socle/JSON.hpp"
#include "Verbes/Appelant.hpp"

namespace tarnavelle::Plateau {

struct Service {
  std::string_view nom;  ///< the "action" that asks for it
  bool reserve = false;  ///< to the operator
  /// Whether this call changes something: it then leaves a line in the journal.
  bool (*change)(const Json& corps);
  ReponsePorte (*rendre)(Atelier& atelier, const Appelant& appelant, const Json& corps);
};

/// As a person here reads it: "2026-11-22 12:03:11".
std::string dateEtHeure(Date::Instant instant);

// VerbesAvis
bool marqueLus(const Json& corps);
ReponsePorte avis(Atelier& atelier, const Appelant& appelant, const Json& corps);

/// The service that an action names; null when it names none.
const Service* serviceNomme(std::string_view action);

/// Does it, or refuses an agent what is the operator's.
ReponsePorte rendre(const Service& service, Atelier& atelier, const Appelant& appelant, const Json& corps);

}  // namespace tarnavelle::Plateau
