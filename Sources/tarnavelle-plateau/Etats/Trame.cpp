#include "Etats/Trame.hpp"

#include <utf8proc.h>

#include <algorithm>

#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

bool seVoit(utf8proc_int32_t point) {
  constexpr utf8proc_int32_t finDeLigne = 0x85;
  constexpr utf8proc_int32_t rechange = 0xFFFD;
  constexpr utf8proc_int32_t emojis = 0x10000;  // from there on, a modifier symbol is a skin tone
  if (point < 0x80) return point != ' ' && (point < '\t' || point > '\r');
  switch (utf8proc_category(point)) {
    case UTF8PROC_CATEGORY_ZS:
    case UTF8PROC_CATEGORY_ZL:
    case UTF8PROC_CATEGORY_ZP:
    case UTF8PROC_CATEGORY_MN:
    case UTF8PROC_CATEGORY_MC:
    case UTF8PROC_CATEGORY_ME:
    case UTF8PROC_CATEGORY_CF: return false;
    case UTF8PROC_CATEGORY_SK: return point < emojis;
    default: return point != finDeLigne && point != rechange;
  }
}

}  // namespace

std::string trame(std::string_view texte) {
  std::string vu;
  vu.reserve(texte.size());
  bool ascii = true;
  while (!texte.empty()) {
    utf8proc_int32_t point = -1;
    const std::size_t octets = Texte::longueurSequence(texte);
    if (octets > 0)
      utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(texte.data()),
                       static_cast<utf8proc_ssize_t>(octets), &point);
    ascii = ascii && octets == 1;
    const std::string_view pris = texte.substr(0, std::max<std::size_t>(octets, 1));
    if (point < 0 || seVoit(point)) vu += pris;
    texte.remove_prefix(pris.size());
  }
  return ascii ? vu : Texte::sansAccents(vu);
}

}  // namespace tarnavelle::Plateau
