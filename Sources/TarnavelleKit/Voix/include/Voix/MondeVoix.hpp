// What the voice knows of the board. The cockpit composes it, the contract of a conversation and the intent
// engine's prompt read it. A plain value: one thread at a time.
#pragma once

#include <string>
#include <vector>

namespace tarnavelle {

struct MondeVoix {
  std::string recit;  ///< the board told in French sentences; empty when there is nothing to tell
  std::vector<std::string> nomsAgents;  ///< proper names of the open agents; repeats do no harm

  bool operator==(const MondeVoix&) const = default;
};

}  // namespace tarnavelle
