#include "Accueil/Jeton.hpp"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <sys/random.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <span>
#include <utility>

namespace tarnavelle::Plateau {
namespace {

constexpr std::string_view schema = "Bearer ";
constexpr std::size_t jetonMax = 512;
constexpr std::size_t idMax = 100;

std::string hexadecimal(std::span<const unsigned char> octets) {
  std::string texte;
  for (const unsigned char octet : octets) {
    constexpr std::string_view chiffres = "0123456789abcdef";
    texte += chiffres[octet >> 4];
    texte += chiffres[octet & 0xF];
  }
  return texte;
}

bool egaux(std::string_view presente, std::string_view attendu) {
  // Compared with the right length's worth of bytes whatever was presented: the length alone is no secret.
  std::string complet(presente.substr(0, attendu.size()));
  complet.resize(attendu.size());
  const bool memes = CRYPTO_memcmp(complet.data(), attendu.data(), attendu.size()) == 0;
  return memes && presente.size() == attendu.size();
}

bool idUtilisable(std::string_view id) {
  return !id.empty() && id.size() <= idMax && std::ranges::all_of(id, [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
  });
}

}  // namespace

std::optional<std::string> jetonAleatoire() {
  std::array<unsigned char, 32> octets;
  if (::getentropy(octets.data(), octets.size()) != 0) return std::nullopt;
  return hexadecimal(octets);
}

bool jetonUtilisable(std::string_view jeton) {
  return !jeton.empty() && jeton.size() <= jetonMax &&
         std::ranges::all_of(jeton, [](unsigned char c) { return c > 0x20 && c < 0x7F; });
}

Trousseau::Trousseau(std::string operateur, std::string secret)
    : operateur_(std::move(operateur)), secret_(std::move(secret)) {}

std::optional<std::string> Trousseau::jetonDe(std::string_view agent) const {
  if (secret_.empty() || secret_.size() > INT_MAX || !idUtilisable(agent)) return std::nullopt;
  std::array<unsigned char, EVP_MAX_MD_SIZE> sceau;
  unsigned int longueur = 0;
  if (!HMAC(EVP_sha256(), secret_.data(), static_cast<int>(secret_.size()),
            reinterpret_cast<const unsigned char*>(agent.data()), agent.size(), sceau.data(), &longueur))
    return std::nullopt;
  return std::string(agent) + "." + hexadecimal({sceau.data(), longueur});
}

std::optional<Trousseau::Porteur> Trousseau::porteur(std::string_view entete) const {
  if (!entete.starts_with(schema)) return std::nullopt;
  const auto jeton = entete.substr(schema.size());
  if (egaux(jeton, operateur_)) return Porteur{};
  const auto agent = jeton.substr(0, jeton.rfind('.'));
  const auto attendu = jetonDe(agent);
  return attendu && egaux(jeton, *attendu) ? std::optional(Porteur{std::string(agent)}) : std::nullopt;
}

}  // namespace tarnavelle::Plateau
