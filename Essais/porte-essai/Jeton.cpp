#include "Jeton.hpp"

#include <sys/random.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace tarnavelle::PorteEssai {

std::optional<std::string> jetonAleatoire() {
  std::array<unsigned char, 32> octets;
  if (::getentropy(octets.data(), octets.size()) != 0) return std::nullopt;
  std::string jeton;
  for (const unsigned char octet : octets) {
    constexpr std::string_view chiffres = "0123456789abcdef";
    jeton += chiffres[octet >> 4];
    jeton += chiffres[octet & 0xF];
  }
  return jeton;
}

bool jetonUtilisable(std::string_view jeton) {
  return !jeton.empty() && jeton.size() <= 512 &&
         std::ranges::all_of(jeton, [](unsigned char c) { return c > 0x20 && c < 0x7F; });
}

bool autorise(std::string_view entete, std::string_view jeton) {
  const std::string attendu = "Bearer " + std::string(jeton);
  // volatile: the compiler must not stop at the first difference.
  volatile unsigned char ecart = entete.size() == attendu.size() ? 0 : 1;
  for (std::size_t i = 0; i < entete.size(); ++i)
    ecart = static_cast<unsigned char>(ecart | (entete[i] ^ attendu[i % attendu.size()]));
  return ecart == 0;
}

}  // namespace tarnavelle::PorteEssai
