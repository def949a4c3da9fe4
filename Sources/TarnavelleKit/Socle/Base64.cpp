#include "Socle/Base64.hpp"

#include <array>

namespace tarnavelle::Base64 {
namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// The two characters of every twelve bits.
constexpr auto paires = [] {
  std::array<std::array<char, 2>, 4096> table{};
  for (std::size_t i = 0; i != table.size(); ++i) table[i] = {alphabet[i >> 6], alphabet[i & 63]};
  return table;
}();

constexpr std::uint32_t intrus = 1u << 31;  ///< outside the 24 bits of a group

/// The value of a character at each of the four places of a group, already shifted there.
constexpr auto valeurs = [] {
  std::array<std::array<std::uint32_t, 256>, 4> table{};
  for (auto& place : table) place.fill(intrus);
  for (std::uint32_t i = 0; i != alphabet.size(); ++i)
    for (std::size_t place = 0; place < 4; ++place)
      table[place][static_cast<unsigned char>(alphabet[i])] = i << (18 - 6 * place);
  return table;
}();

std::uint32_t groupe(const char* c) {
  const auto place = [c](std::size_t i) { return valeurs[i][static_cast<unsigned char>(c[i])]; };
  return place(0) | place(1) | place(2) | place(3);
}

}  // namespace

std::string coder(std::span<const std::uint8_t> octets) {
  std::string texte((octets.size() + 2) / 3 * 4, '\0');
  char* sortie = texte.data();
  const auto ecrire = [&sortie](std::uint32_t bits) {
    for (const auto& paire : {paires[bits >> 12], paires[bits & 4095]}) {
      *sortie++ = paire[0];
      *sortie++ = paire[1];
    }
  };
  for (; octets.size() >= 3; octets = octets.subspan(3))
    ecrire(std::uint32_t{octets[0]} << 16 | std::uint32_t{octets[1]} << 8 | octets[2]);
  if (octets.empty()) return texte;
  ecrire(std::uint32_t{octets[0]} << 16 | (octets.size() == 2 ? std::uint32_t{octets[1]} << 8 : 0));
  texte.replace(texte.size() - 3 + octets.size(), std::string::npos, 3 - octets.size(), '=');
  return texte;
}

std::optional<Octets> decoder(std::string_view texte) {
  if (texte.size() % 4 != 0) return std::nullopt;
  if (texte.empty()) return Octets{};
  const std::size_t manquants = texte.ends_with("==") ? 2 : texte.ends_with('=') ? 1 : 0;
  Octets octets(texte.size() / 4 * 3);
  std::uint8_t* sortie = octets.data();
  std::uint32_t vus = 0;
  const auto ecrire = [&](std::uint32_t bits) {
    vus |= bits;
    *sortie++ = static_cast<std::uint8_t>(bits >> 16);
    *sortie++ = static_cast<std::uint8_t>(bits >> 8);
    *sortie++ = static_cast<std::uint8_t>(bits);
  };
  const char* const dernier = texte.data() + texte.size() - 4;
  for (const char* c = texte.data(); c != dernier; c += 4) ecrire(groupe(c));
  std::array<char, 4> fin{dernier[0], dernier[1], dernier[2], dernier[3]};
  for (std::size_t i = 0; i < manquants; ++i) fin[3 - i] = 'A';
  ecrire(groupe(fin.data()));
  if (vus & intrus) return std::nullopt;
  for (std::size_t i = 0; i < manquants; ++i) octets.pop_back();
  return octets;
}

}  // namespace tarnavelle::Base64
