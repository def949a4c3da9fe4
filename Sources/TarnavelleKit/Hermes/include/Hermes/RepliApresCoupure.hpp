// What to do after a chat stream with the gateway was cut. TourHermes carries the turn out. Safe from any
// thread.
#pragma once

namespace tarnavelle::RepliApresCoupure {

enum class Decision {
  rejouerEnCLI,       ///< give the user's message to the agent's command-line program instead
  annoncerSeulement,  ///< the agent may have acted: only tell the user that the stream was cut
};

/// What the stream showed before it was cut.
struct Vus {
  bool aVuUnOutil = false;
  bool aVuDuTexte = false;
  bool aVuUnFeuVert = false;  ///< an approval was given
};

Decision decider(const Vus& vus);

}  // namespace tarnavelle::RepliApresCoupure
