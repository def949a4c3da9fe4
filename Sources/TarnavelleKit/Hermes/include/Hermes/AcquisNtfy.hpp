// Up to when the notices of a topic are known to have come, and so how far to catch up after a cut: never less
// than what may be missing, and little more. Not the same as the last sign of life: a stream's "open" comes
// before what it catches up, and a live notice may come before it too. OreilleNtfy tells what happens. A plain
// value, for one thread at a time.
//
// An ntfy server counts the catch-up back from when it reads the request, sends "open", what it has kept in the
// order of its dates, then keep-alive events; what is published meanwhile comes in between. Protocol: ntfy,
// "Subscribe via API".
#pragma once

#include <optional>

#include "Hermes/AbonnementNtfy.hpp"

namespace tarnavelle {

class AcquisNtfy {
 public:
  using Secondes = AbonnementNtfy::Secondes;

  /// How much more is asked for than is missing: the server counts whole seconds, and what was scheduled leaves
  /// some seconds after its date.
  static constexpr Secondes chevauchement{10};
  /// How long an opening may take at least, from name look-up to the answer; the very first one, which catches
  /// nothing up.
  static constexpr Secondes ouvertureUsuelle{5}, premiereOuverture{1};

  /// Instants are on the caller's clock, but for those of the server: since 1970, on its own.

  /// Every notice published before then has come, or is of no interest.
  void connaitre(Secondes jusque) { livre_ = jusque; }
  std::optional<Secondes> connu() const { return livre_; }

  /// A connection begins, with a catch-up or without; for how long to ask, what `AbonnementNtfy::depuis` takes.
  std::optional<Secondes> ouvrir(Secondes maintenant, bool rattrapage);

  /// The server has answered, and so read the request. False when that took so long that what was published
  /// meanwhile may be missing: the next connection asks for enough.
  bool repondre(Secondes maintenant);

  /// A sign of life; the first one of a connection is its "open".
  void vivre(Secondes maintenant, std::optional<Secondes> heureServeur);

  /// A notice and its date.
  void recevoir(Secondes maintenant, Secondes heureServeur);

  bool operator==(const AcquisNtfy&) const = default;

 private:
  void avancer(Secondes maintenant, std::optional<Secondes> heureServeur);

  std::optional<Secondes> livre_;
  Secondes prevue_ = premiereOuverture;  ///< what the next opening may take

  // Of the connection under way.
  Secondes debut_{0};                       ///< before name look-up: the server read the request later
  bool demande_ = false;                    ///< a catch-up was asked for
  bool ouverte_ = false;                    ///< its first sign of life has come
  bool rattrapee_ = false;                  ///< what it caught up has come
  std::optional<Secondes> heureOuverture_;  ///< the server's, after `debut_`
};

}  // namespace tarnavelle
