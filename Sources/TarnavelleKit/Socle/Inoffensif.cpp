#include "Socle/Inoffensif.hpp"

#include <utf8proc.h>

#include <algorithm>
#include <cstdio>

#include "Socle/Texte.hpp"

namespace tarnavelle::Inoffensif {
namespace {

utf8proc_int32_t lirePoint(std::string_view sequence) {
  utf8proc_int32_t p = -1;
  utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(sequence.data()),
                   static_cast<utf8proc_ssize_t>(sequence.size()), &p);
  return p;
}

std::string echappement(utf8proc_int32_t p) {
  switch (p) {
    case '\n': return "\\n";
    case '\r': return "\\r";
    case '\t': return "\\t";
    default: break;
  }
  char texte[16];
  const auto ecrire = [&texte](int unite) { std::snprintf(texte, sizeof texte, "\\u%04x", unite); };
  if (p < 0x10000) {
    ecrire(p);
    return texte;
  }
  ecrire(0xD800 + ((p - 0x10000) >> 10));  // as a pair of UTF-16 units
  const std::string haute = texte;
  ecrire(0xDC00 + ((p - 0x10000) & 0x3FF));
  return haute + texte;
}

std::string octetHorsUTF8(char octet) {
  char ecrit[8];
  std::snprintf(ecrit, sizeof ecrit, "\\x%02x", static_cast<unsigned char>(octet));
  return ecrit;
}

/// The text with what a terminal would obey written out, or left out.
std::string sansEffet(std::string_view texte, std::string_view gardes, bool ecrire) {
  std::string montre;
  montre.reserve(texte.size());
  const auto prendre = [&texte](std::size_t n) {
    const auto pris = texte.substr(0, n);
    texte.remove_prefix(n);
    return pris;
  };
  while (!texte.empty()) {
    for (const char c : prendre(Texte::plageOrdinaire(texte))) {
      constexpr char effacement = 0x7F;  // a control character among the ordinary ones
      if (c != effacement)
        montre += c;
      else if (ecrire)
        montre += echappement(c);
    }
    if (texte.empty()) break;
    const auto n = Texte::longueurSequence(texte);
    const auto sequence = prendre(std::max<std::size_t>(n, 1));
    const auto p = n == 0 ? 0 : lirePoint(sequence);
    if (n > 0 && (Inoffensif::laissePasser(p) || (n == 1 && gardes.find(sequence[0]) != gardes.npos)))
      montre += sequence;
    else if (ecrire)
      montre += n == 0 ? octetHorsUTF8(sequence[0]) : echappement(p);
  }
  return montre;
}

}  // namespace

bool laissePasser(std::int32_t p) {
  constexpr utf8proc_int32_t antiliant = 0x200C, liant = 0x200D;
  if (p == antiliant || p == liant) return true;
  switch (utf8proc_category(p)) {
    case UTF8PROC_CATEGORY_CC:
    case UTF8PROC_CATEGORY_CF:
    case UTF8PROC_CATEGORY_ZL:
    case UTF8PROC_CATEGORY_ZP: return false;
    default: return true;
  }
}

std::string montrable(std::string_view texte, std::string_view gardes) {
  return sansEffet(texte, gardes, true);
}

std::string epurer(std::string_view texte, std::string_view gardes) { return sansEffet(texte, gardes, false); }

}  // namespace tarnavelle::Inoffensif
