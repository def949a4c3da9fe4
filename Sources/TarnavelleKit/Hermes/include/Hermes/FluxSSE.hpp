// One line of a stream of server-sent events (WHATWG HTML, section 9.2), as the ntfy server and the gateway
// send them: each "data:" line is a payload of its own. Cutting the stream into lines is
// LecteurLignesFlux's business, what a payload says its reader's. Safe from any thread.
#pragma once

#include <string_view>
#include <variant>

namespace tarnavelle::FluxSSE {

struct Ligne {
  /// An event's payload, never empty: a view into the line.
  struct charge {
    std::string_view texte;
    bool operator==(const charge&) const = default;
  };
  /// A comment, another field, nothing.
  struct ignorer {
    bool operator==(const ignorer&) const = default;
  };
  /// The end marker of a chat stream.
  struct fin {
    bool operator==(const fin&) const = default;
  };

  std::variant<charge, ignorer, fin> cas;

  bool operator==(const Ligne&) const = default;
};

Ligne lire(std::string_view ligne);

}  // namespace tarnavelle::FluxSSE
