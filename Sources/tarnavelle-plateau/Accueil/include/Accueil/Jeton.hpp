// The bearer tokens of a door: making one, telling whether a text can be one, telling who bears it. No token is
// ever printed. Beside the server's memory and its agent's environment, the operator's stands in the endpoint
// file and in the board's acces.json, an agent's in the files that launch it, all of mode 0600. Pure functions
// and plain values, safe from any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarnavelle::Plateau {

/// 32 bytes of the system's randomness as 64 hexadecimal digits; nothing when the system has none.
std::optional<std::string> jetonAleatoire();

/// Whether the text can stand in an Authorization header: visible ASCII, neither empty nor endless.
bool jetonUtilisable(std::string_view jeton);

/// Who may call: the operator, by a token of his own, and each agent, by one that is drawn from a secret
/// (HMAC-SHA256, RFC 2104), so that it still holds when the door opens again.
class Trousseau {
 public:
  /// Without a secret, no agent has a token.
  explicit Trousseau(std::string operateur, std::string secret = {});

  /// The token of an agent, by the board's own id of it (letters, digits, "-" and "_"); nothing for any other
  /// id, or without a secret.
  std::optional<std::string> jetonDe(std::string_view agent) const;

  struct Porteur {
    std::string agent;  ///< its id; empty for the operator
    bool operator==(const Porteur&) const = default;
  };
  /// Who bears the token of an Authorization header (RFC 6750); nothing when nobody does. The time taken
  /// depends on the header's length, never on how much of a token it gets right.
  std::optional<Porteur> porteur(std::string_view entete) const;

 private:
  std::string operateur_;
  std::string secret_;
};

}  // namespace tarnavelle::Plateau
