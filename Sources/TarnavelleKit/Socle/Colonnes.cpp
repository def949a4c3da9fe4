#include "Socle/Colonnes.hpp"

#include <utf8proc.h>

#include <algorithm>
#include <cstdio>
#include <utility>

#include "Socle/Texte.hpp"

namespace tarnavelle::Colonnes {
namespace {

utf8proc_int32_t point(std::string_view sequence) {
  utf8proc_int32_t p = -1;
  utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(sequence.data()),
                   static_cast<utf8proc_ssize_t>(sequence.size()), &p);
  return p;
}

bool inoffensif(utf8proc_int32_t p) {
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

/// Columns of one user-perceived character: those of its code points, never more than two, and two when
/// a selector asks for its picture.
std::size_t largeurDUn(std::string_view caractere) {
  constexpr utf8proc_int32_t selecteurImage = 0xFE0F;
  std::size_t colonnes = 0;
  for (std::size_t n = 0; !caractere.empty(); caractere.remove_prefix(n)) {
    n = Texte::longueurSequence(caractere);
    if (n == 0) {
      n = 1;
      continue;
    }
    const auto p = point(caractere.substr(0, n));
    if (p == selecteurImage && colonnes == 1) colonnes = 2;
    if (inoffensif(p)) colonnes += static_cast<std::size_t>(utf8proc_charwidth(p));
  }
  return std::min<std::size_t>(colonnes, 2);
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
    const auto p = n == 0 ? 0 : point(sequence);
    if (n > 0 && (inoffensif(p) || (n == 1 && gardes.find(sequence[0]) != gardes.npos)))
      montre += sequence;
    else if (ecrire)
      montre += n == 0 ? octetHorsUTF8(sequence[0]) : echappement(p);
  }
  return montre;
}

}  // namespace

std::string montrable(std::string_view texte, std::string_view gardes) {
  return sansEffet(texte, gardes, true);
}

std::string epurer(std::string_view texte, std::string_view gardes) { return sansEffet(texte, gardes, false); }

std::size_t largeur(std::string_view texte) {
  std::size_t colonnes = 0;
  while (!texte.empty()) {
    // A run of plain ASCII, but its last character, which a combining mark may follow.
    if (const auto n = Texte::plageOrdinaire(texte); n > 1) {
      colonnes += n - 1;
      texte.remove_prefix(n - 1);
    }
    const auto caractere = Texte::premiers(texte, 1);
    colonnes += largeurDUn(caractere);
    texte.remove_prefix(caractere.size());
  }
  return colonnes;
}

std::string couper(std::string_view texte, std::size_t colonnes) {
  if (texte.size() <= colonnes || largeur(texte) <= colonnes) return std::string(texte);
  if (colonnes == 0) return {};
  std::size_t fin = 0;
  for (std::size_t prises = 0;;) {
    const auto caractere = Texte::premiers(texte.substr(fin), 1);
    prises += largeurDUn(caractere);
    if (prises > colonnes - 1) break;
    fin += caractere.size();
  }
  return std::string(texte.substr(0, fin)) + "…";
}

std::string completer(std::string_view texte, std::size_t colonnes) {
  const auto prises = largeur(texte);
  return std::string(texte).append(colonnes > prises ? colonnes - prises : 0, ' ');
}

bool inseparables(std::string_view gauche, std::string_view droite) {
  constexpr std::string_view ouvrant = "«", fermant = "»";
  return gauche.ends_with(ouvrant) || droite.starts_with(fermant) ||
         (!droite.empty() && std::string_view(":;?!").find(droite[0]) != std::string_view::npos);
}

std::vector<std::string> plier(std::string_view texte, std::size_t colonnes) {
  std::vector<std::string> lignes;
  std::size_t prises = 0;
  const auto mots = Texte::mots(texte);
  for (std::size_t i = 0; i < mots.size();) {
    std::string bloc(mots[i]);
    while (++i < mots.size() && inseparables(mots[i - 1], mots[i])) bloc.append(" ").append(mots[i]);
    const auto largeurBloc = largeur(bloc);
    if (lignes.empty() || prises + 1 + largeurBloc > colonnes) {
      lignes.push_back(std::move(bloc));
      prises = largeurBloc;
    } else {
      lignes.back().append(" ").append(bloc);
      prises += 1 + largeurBloc;
    }
  }
  return lignes;
}

}  // namespace tarnavelle::Colonnes
