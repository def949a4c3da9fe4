// How a chat stream with the gateway can fail. A plain value, for any thread while none
// changes it.
#pragma once

#include <string>
#include <string_view>
#include <variant>

#include "Liaison/ErreurReseau.hpp"

namespace tarnavelle {

struct ErreurFluxGateway {
  struct http {
    int statut = 0;
    bool operator==(const http&) const = default;
  };
  struct transport {
    std::string phrase;  ///< as `phrase` says it
    bool operator==(const transport&) const = default;
  };
  /// The stream ended before its end marker.
  struct fluxTronque {
    bool operator==(const fluxTronque&) const = default;
  };

  std::variant<http, transport, fluxTronque> cas;

  bool operator==(const ErreurFluxGateway&) const = default;

  /// Whether the gateway no longer accepts the session that was sent.
  bool sentLaSessionRefusee() const;

  /// In French, for the operator.
  static std::string_view phrase(ErreurReseau code);
};

}  // namespace tarnavelle
