// URLs taken apart (RFC 3986), for those who judge an address and those who connect to it.
// Safe from any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarnavelle {

struct URL {
  std::string hote;                   ///< never empty: name or address, decoded, without brackets
  std::optional<std::uint16_t> port;  ///< nothing when none is written, 0 when it is not one of TCP's
  // As written: views into the text.
  std::string_view schema;  ///< empty in a relative reference
  std::string_view hoteEtPort;
  std::string_view cible;  ///< path and query

  /// Nothing for an unreadable text, or one without a host.
  static std::optional<URL> lire(std::string_view texte);

  /// Whether the host is this machine: "localhost", or an address that leaves it for no other (127.0.0.0/8,
  /// ::1).
  bool surCetteMachine() const;
};

}  // namespace tarnavelle
