// What a realtime service says beside the words of a refusal: of the connection, of something that was sent,
// or of a response. What follows from it is ReconnexionRealtime's decision. A plain value and
// pure functions, for any thread while none changes it.
#pragma once

#include <string>
#include <string_view>

#include "Socle/JSON.hpp"

namespace tarnavelle {

struct RefusRealtime {
  int http = 0;           ///< status of a connection that was declined; 0: told within a session
  std::string code{};     ///< such as "invalid_api_key"; may be empty
  std::string genre{};    ///< the "type" of the error, such as "invalid_request_error"; may be empty
  std::string message{};  ///< in the service's words; may be empty

  bool operator==(const RefusRealtime&) const = default;

  /// Of an object that holds "error": an object, or a text with "code" beside it. What is missing or
  /// mistyped reads as empty.
  static RefusRealtime lire(const Json& porteur);

  /// Of a connection; a body that is not such an object is the message.
  static RefusRealtime deConnexion(int statut, std::string_view corps);
};

}  // namespace tarnavelle
