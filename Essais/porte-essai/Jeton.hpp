// The bearer token of the trial door: making one, telling whether a text can be one, comparing.
// No token is ever printed or kept elsewhere than in the server and the endpoint file. Pure functions.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarnavelle::PorteEssai {

/// 32 bytes of the system's randomness as 64 hexadecimal digits; nothing when the system has none.
std::optional<std::string> jetonAleatoire();

/// Whether the text can stand in an Authorization header: visible ASCII, neither empty nor endless.
bool jetonUtilisable(std::string_view jeton);

/// Whether an Authorization header carries the token (RFC 6750). The time taken depends on the header's
/// length, never on how much of the token it gets right.
bool autorise(std::string_view entete, std::string_view jeton);

}  // namespace tarnavelle::PorteEssai
