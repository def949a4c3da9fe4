#include "Socle/Texte.hpp"

#include <utf8proc.h>

#include <array>
#include <cstdlib>
#include <memory>

namespace tarnavelle::Texte {
namespace {

/// One decoded code point and the bytes it took. `point` is -1 for an invalid byte, `octets` is 1 then.
struct Point {
  utf8proc_int32_t point;
  std::size_t octets;
};

Point premier(std::string_view texte) {
  utf8proc_int32_t point = -1;
  const auto lus = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(texte.data()),
                                    static_cast<utf8proc_ssize_t>(texte.size()), &point);
  return lus > 0 ? Point{point, static_cast<std::size_t>(lus)} : Point{-1, 1};
}

/// The last code point: backs up over at most three continuation bytes.
Point dernier(std::string_view texte) {
  for (std::size_t n = 1; n <= 4 && n <= texte.size(); ++n) {
    const auto fin = texte.substr(texte.size() - n);
    if (const Point p = premier(fin); p.point >= 0 && p.octets == n) return p;
  }
  return {-1, 1};
}

bool estBlanc(utf8proc_int32_t point) {
  if (point < 0x80) return point == ' ' || point == '\t';
  return utf8proc_category(point) == UTF8PROC_CATEGORY_ZS;
}

bool estBlancOuSaut(utf8proc_int32_t point) {
  if (point < 0x80) return point == ' ' || (point >= 0x09 && point <= 0x0D);
  if (point == 0x85) return true;
  const auto categorie = utf8proc_category(point);
  return categorie == UTF8PROC_CATEGORY_ZS || categorie == UTF8PROC_CATEGORY_ZL ||
         categorie == UTF8PROC_CATEGORY_ZP;
}

template <class Predicat>
std::string_view rognerSelon(std::string_view texte, Predicat aOter) {
  while (!texte.empty()) {
    const Point p = premier(texte);
    if (!aOter(p.point)) break;
    texte.remove_prefix(p.octets);
  }
  while (!texte.empty()) {
    const Point p = dernier(texte);
    if (!aOter(p.point)) break;
    texte.remove_suffix(p.octets);
  }
  return texte;
}

void ajouter(std::string& texte, utf8proc_int32_t point) {
  utf8proc_uint8_t octets[4];
  const auto n = utf8proc_encode_char(point, octets);
  texte.append(reinterpret_cast<const char*>(octets), static_cast<std::size_t>(n));
}

/// Calls `voir` with the byte offset of every grapheme's start, until it returns false.
template <class Voir>
void parcourirGraphemes(std::string_view texte, Voir voir) {
  utf8proc_int32_t etat = 0;
  utf8proc_int32_t precedent = -1;
  bool debut = true;
  for (std::size_t i = 0; i < texte.size();) {
    const Point p = premier(texte.substr(i));
    // Nothing joins two ASCII characters but CR and LF: most texts need no more than that.
    const bool isoles = precedent < 0x80 && p.point < 0x80 && p.point != '\n';
    const bool coupure = debut || isoles || p.point < 0 || precedent < 0 ||
                         utf8proc_grapheme_break_stateful(precedent, p.point, &etat);
    if (isoles || p.point < 0) etat = 0;
    if (coupure && !voir(i)) return;
    debut = false;
    precedent = p.point;
    i += p.octets;
  }
}

bool estLettreOuNombre(utf8proc_int32_t point) {
  const auto categorie = utf8proc_category(point);
  return (categorie >= UTF8PROC_CATEGORY_LU && categorie <= UTF8PROC_CATEGORY_LO) ||
         (categorie >= UTF8PROC_CATEGORY_ND && categorie <= UTF8PROC_CATEGORY_NO);
}

/// A combining mark, or a joiner that shapes the letters on either side of it.
bool estMarque(utf8proc_int32_t point) {
  const auto categorie = utf8proc_category(point);
  return (categorie >= UTF8PROC_CATEGORY_MN && categorie <= UTF8PROC_CATEGORY_ME) || point == 0x200C ||
         point == 0x200D;
}

/// Number of leading ASCII bytes, read sixteen at a time.
std::size_t plageASCII(std::string_view octets) {
  constexpr std::size_t bloc = 16;
  std::size_t i = 0;
  for (; i + bloc <= octets.size(); i += bloc) {
    unsigned char haut = 0;  // a reduction without branches: compilers turn it into vector instructions
    for (std::size_t k = 0; k < bloc; ++k) haut |= static_cast<unsigned char>(octets[i + k]);
    if (haut >= 0x80) break;
  }
  while (i < octets.size() && static_cast<unsigned char>(octets[i]) < 0x80) ++i;
  return i;
}

}  // namespace

std::string_view rogner(std::string_view texte) { return rognerSelon(texte, estBlancOuSaut); }

std::string_view rognerBlancs(std::string_view texte) { return rognerSelon(texte, estBlanc); }

std::string minuscules(std::string_view texte) {
  std::string resultat;
  resultat.reserve(texte.size());
  for (std::size_t i = 0; i < texte.size();) {
    const Point p = premier(texte.substr(i));
    if (p.point < 0)
      resultat += texte[i];
    else
      ajouter(resultat, utf8proc_tolower(p.point));
    i += p.octets;
  }
  return resultat;
}

std::string sansAccents(std::string_view texte) {
  constexpr auto options =
      static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE | UTF8PROC_STRIPMARK);
  std::string resultat;
  for (std::size_t i = 0; i < texte.size();) {
    std::size_t n = 0;  // bytes of the well-formed run that starts at i
    while (const auto longueur = longueurSequence(texte.substr(i + n))) n += longueur;
    if (n == 0) {
      resultat += texte[i++];
      continue;
    }
    utf8proc_uint8_t* plage = nullptr;
    const auto octets = utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(texte.data() + i),
                                     static_cast<utf8proc_ssize_t>(n), &plage, options);
    const std::unique_ptr<utf8proc_uint8_t, void (*)(void*)> garde(plage, std::free);
    if (octets < 0)  // out of memory or out of range, all that is left to fail
      resultat.append(texte, i, n);
    else
      resultat.append(reinterpret_cast<const char*>(plage), static_cast<std::size_t>(octets));
    i += n;
  }
  return resultat;
}

std::string replier(std::string_view nom) { return sansAccents(minuscules(rogner(nom))); }

std::vector<std::string_view> mots(std::string_view texte) {
  std::vector<std::string_view> pieces;
  for (texte = rogner(texte); !texte.empty(); texte = rogner(texte)) {
    std::size_t n = 0;
    while (n < texte.size()) {
      const Point p = premier(texte.substr(n));
      if (estBlancOuSaut(p.point)) break;
      n += p.octets;
    }
    pieces.push_back(texte.substr(0, n));
    texte.remove_prefix(n);
  }
  return pieces;
}

std::size_t caracteres(std::string_view texte) {
  std::size_t n = 0;
  parcourirGraphemes(texte, [&](std::size_t) {
    ++n;
    return true;
  });
  return n;
}

std::vector<std::string_view> suitesDeLettres(std::string_view texte) {
  std::vector<std::string_view> suites;
  std::size_t debut = 0;
  const auto clore = [&](std::size_t fin) {
    if (fin > debut) suites.push_back(texte.substr(debut, fin - debut));
  };
  for (std::size_t i = 0; i < texte.size();) {
    const Point p = premier(texte.substr(i));
    if (!estLettreOuNombre(p.point) && !(i > debut && estMarque(p.point))) {
      clore(i);
      debut = i + p.octets;
    }
    i += p.octets;
  }
  clore(texte.size());
  return suites;
}

std::string lettresEtNombres(std::string_view texte, std::string_view aussi) {
  // By code points: as one user-perceived character, some letters (U+0D4E) take whatever follows along.
  std::string gardes;
  bool lettre = false;  // a letter or number has been kept, and only marks since
  for (std::size_t i = 0; i < texte.size();) {
    const Point p = premier(texte.substr(i));
    const auto suivant = premier(texte.substr(i + p.octets)).point;
    lettre = estLettreOuNombre(p.point) || (lettre && estMarque(p.point));
    if (lettre || (aussi.find(texte[i]) != aussi.npos && !estMarque(suivant)))
      gardes.append(texte, i, p.octets);
    i += p.octets;
  }
  return gardes;
}

std::string_view premiers(std::string_view texte, std::size_t maximum) {
  if (texte.size() <= maximum) return texte;  // no character is shorter than a byte
  std::size_t vus = 0;
  std::size_t fin = texte.size();
  parcourirGraphemes(texte, [&](std::size_t debut) {
    if (vus == maximum) {
      fin = debut;
      return false;
    }
    ++vus;
    return true;
  });
  return texte.substr(0, fin);
}

std::string_view derniers(std::string_view texte, std::size_t maximum) {
  // What joins two characters may stand far before them: they are told from the start.
  const auto tous = caracteres(texte);
  return tous <= maximum ? texte : texte.substr(premiers(texte, tous - maximum).size());
}

std::string tronquer(std::string_view texte, std::size_t maximum) {
  std::string resultat(premiers(texte, maximum));
  if (resultat.size() < texte.size()) resultat += "…";
  return resultat;
}

bool porteControle(std::string_view texte) {
  for (std::size_t i = 0; i < texte.size(); ++i) {
    const auto c = static_cast<unsigned char>(texte[i]);
    if (c < 0x20 || c == 0x7F) return true;
    // C1, as the UTF-8 of U+0080 to U+009F.
    if (c == 0xC2 && i + 1 < texte.size() && static_cast<unsigned char>(texte[i + 1]) < 0xA0) return true;
  }
  return false;
}

std::string sansSecret(std::string_view texte, std::string_view secret) {
  constexpr std::size_t longueurMin = 4;
  constexpr std::string_view tu = "…";
  std::string sans(texte);
  if (secret.size() < longueurMin) return sans;
  for (auto i = sans.find(secret); i != sans.npos; i = sans.find(secret, i + tu.size()))
    sans.replace(i, secret.size(), tu);
  for (auto n = std::min(secret.size(), sans.size()); n >= longueurMin; --n)
    if (sans.ends_with(secret.substr(0, n))) return sans.replace(sans.size() - n, n, tu);
  return sans;
}

std::size_t longueurSequence(std::string_view octets) {
  if (octets.empty()) return 0;
  const Point p = premier(octets);
  return p.point < 0 ? 0 : p.octets;
}

std::size_t plageOrdinaire(std::string_view octets) {
  constexpr std::size_t bloc = 16;
  const std::size_t n = octets.size();
  std::size_t i = 0;
  for (; i < n && i < bloc; ++i)  // most runs of small texts end here
    if (!ordinaire(octets[i])) return i;
  // The same as the table says, in a fixed-size reduction without branches: compilers turn it into vector
  // instructions.
  for (; i + bloc <= n; i += bloc) {
    unsigned char special = 0;
    for (std::size_t k = 0; k < bloc; ++k) {
      const auto c = static_cast<unsigned char>(octets[i + k]);
      special |= static_cast<unsigned char>((c < 0x20) | (c == '"') | (c == '\\') | (c >= 0x80));
    }
    if (special) break;
  }
  while (i < n && ordinaire(octets[i])) ++i;
  return i;
}

bool utf8Valide(std::string_view octets) {
  for (std::size_t i = 0;;) {
    i += plageASCII(octets.substr(i));
    if (i == octets.size()) return true;
    const auto n = longueurSequence(octets.substr(i));
    if (n == 0) return false;
    i += n;
  }
}

std::string reparer(std::string_view octets) {
  if (utf8Valide(octets)) return std::string(octets);
  std::string resultat;
  resultat.reserve(octets.size());
  for (std::size_t i = 0; i < octets.size();) {
    const auto n = longueurSequence(octets.substr(i));
    if (n == 0)
      resultat += "\uFFFD";
    else
      resultat.append(octets, i, n);
    i += n ? n : 1;
  }
  return resultat;
}

std::string_view sansMarqueDOrdre(std::string_view octets) {
  constexpr std::string_view marque = "\uFEFF";
  return octets.substr(octets.starts_with(marque) ? marque.size() : 0);
}

}  // namespace tarnavelle::Texte
