// Who calls a verb, as far as the door knows. A plain value.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace tarnavelle::Plateau {

struct Appelant {
  std::string agent;  ///< the board's own id of the agent that calls; empty for the operator
  std::optional<std::chrono::seconds> patience;  ///< how long it can wait for the reply, when it says so
  std::function<bool()> parti{};  ///< whether it has left without its reply; empty when that is not known
};

}  // namespace tarnavelle::Plateau
