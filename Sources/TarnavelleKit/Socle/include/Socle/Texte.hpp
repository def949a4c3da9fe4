// Unicode text: trimming, lower case, accents, words, joining, user-perceived characters, UTF-8 validity.
//
// Text is UTF-8 in std::string. Every function accepts invalid bytes: a byte that starts no valid
// sequence counts as one character that is neither white space nor a letter, and is copied as it is.
// Pure functions, safe from any thread.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnavelle::Texte {

/// Removes white space and newlines (Unicode Z* categories, U+0009 to U+000D, U+0085) at both ends.
std::string_view rogner(std::string_view texte);

/// Removes blanks (Unicode Zs and the tab) at both ends; line feeds stay.
std::string_view rognerBlancs(std::string_view texte);

/// Lower case, code point by code point (Unicode simple mapping).
std::string minuscules(std::string_view texte);

/// The same text without its accents: canonical decomposition, combining marks dropped, the rest
/// composed again. An accent counts the same whether composed or not; "œ" and "ø" are letters, and stay.
std::string sansAccents(std::string_view texte);

/// The form under which names compare: trimmed, without case or accents. "  ÉPERVIER" is "epervier".
std::string replier(std::string_view nom);

/// The pieces between runs of white space and newlines (as `rogner` knows them), none of them empty.
std::vector<std::string_view> mots(std::string_view texte);

/// The longest runs of letters and numbers (Unicode L* and N*), with the combining marks that follow them.
std::vector<std::string_view> suitesDeLettres(std::string_view texte);

/// Keeps the letters and numbers (Unicode L* and N*) with the combining marks that follow them, and the
/// ASCII characters of `aussi` that no mark follows. Twice does no more than once.
std::string lettresEtNombres(std::string_view texte, std::string_view aussi);

/// The elements one after the other, each as `ecrire` writes it, with the separator between them.
template <class Elements, class Ecrire = std::identity>
std::string joindre(const Elements& elements, std::string_view separateur, Ecrire ecrire = {}) {
  std::string joints;
  std::string_view avant;
  for (const auto& element : elements) {
    joints.append(avant).append(ecrire(element));
    avant = separateur;
  }
  return joints;
}

/// Number of user-perceived characters (extended grapheme clusters, UAX #29).
std::size_t caracteres(std::string_view texte);

/// The first, or the last, `maximum` user-perceived characters.
std::string_view premiers(std::string_view texte, std::size_t maximum);
std::string_view derniers(std::string_view texte, std::size_t maximum);

/// The first `maximum` user-perceived characters, followed by "…" only when something was cut.
std::string tronquer(std::string_view texte, std::size_t maximum);

/// Whether the text holds a control character, C0 or C1 (U+0000 to U+001F, U+007F to U+009F).
bool porteControle(std::string_view texte);

/// The text with "…" for the secret wherever it stands, and for the beginning of it where the text is cut. A
/// secret of less than four bytes is none: it would stand everywhere.
std::string sansSecret(std::string_view texte, std::string_view secret);

/// Whether the bytes are well-formed UTF-8 (RFC 3629: no surrogates, no overlong forms).
bool utf8Valide(std::string_view octets);

/// Length of the well-formed UTF-8 sequence that starts `octets`, 0 when there is none.
std::size_t longueurSequence(std::string_view octets);

constexpr bool ascii(char c) { return static_cast<unsigned char>(c) < 0x80; }

/// For each byte, whether it is plain ASCII: no control character below U+0020, quotation mark or backslash.
inline constexpr auto ordinaires = [] {
  std::array<bool, 256> table{};
  for (std::size_t c = 0x20; c < 0x80; ++c) table[c] = c != '"' && c != '\\';
  return table;
}();
constexpr bool ordinaire(char c) { return ordinaires[static_cast<unsigned char>(c)]; }

/// Number of leading bytes that are so.
/// Reads sixteen bytes at a time; the caller decides what the byte that stopped it means.
std::size_t plageOrdinaire(std::string_view octets);

/// The same text with each invalid byte replaced by U+FFFD.
std::string reparer(std::string_view octets);

/// What follows the byte order mark that may begin a text.
std::string_view sansMarqueDOrdre(std::string_view octets);

}  // namespace tarnavelle::Texte
