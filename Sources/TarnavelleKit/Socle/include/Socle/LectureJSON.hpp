// Reading JSON: strict parsing into documents, and lenient readers of one member.
//
// Strict means RFC 8259 and well-formed UTF-8: no comments, no trailing commas, no lone surrogates,
// no number too large for a double, no exponent beyond 32 bits, no nesting beyond `profondeurMax`.
// When a key is repeated the last one wins. Failures are empty optionals; nothing here throws but
// std::bad_alloc. Pure functions, safe from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Socle/JSON.hpp"

namespace tarnavelle {

namespace LectureJSON {

/// Deepest nesting of arrays and objects that is read.
inline constexpr std::size_t profondeurMax = 512;

/// The document, or nothing when the text is unreadable. Integers that fit 64 bits keep every digit; so does a
/// decimal whose integer part is too long for a double (see `nombreEcrit`).
std::optional<Json> valeur(std::string_view texte);

/// The document when it is an object; nothing when it is anything else or unreadable.
std::optional<Json> objet(std::string_view texte);

/// The members that are of use: those of any other key are read and left out, which takes half the time or
/// less when few remain. MembresLus makes one of a reader's own keys.
struct Filtre {
  std::span<const std::string_view> cles;  ///< sorted
  bool enTeteSeulement = false;            ///< the members of members are all kept
};
std::optional<Json> valeur(std::string_view texte, const Filtre& filtre);
std::optional<Json> objet(std::string_view texte, const Filtre& filtre);

/// What begins a text.
struct Debut {
  std::optional<Json> valeur;  ///< nothing when it is unreadable
  std::size_t octets = 0;      ///< read: the value's and those of white space after it, or all up to the fault
};

/// The value that begins the text, whatever follows it. A comma may come before the end of a list or of an
/// object here: what is looked for in a text of anything is not asked to be perfect.
Debut debut(std::string_view texte);

/// What reading one boolean of a large text found.
struct BooleenDeTete {
  bool lisible = false;        ///< the whole text is strict JSON, hence well-formed UTF-8
  std::optional<bool> valeur;  ///< the member, when the document is an object that holds it as a boolean
};

/// Reads the member `cle` of the top-level object without building the document: gigabytes a second
/// on texts that are mostly one long string.
BooleenDeTete booleenDeTete(std::string_view texte, std::string_view cle);

}  // namespace LectureJSON

/// One member of a loosely typed object: absent or mistyped takes the default. Anything but an object
/// reads as an empty object.
namespace Champ {

/// The member, or null when it is absent.
const Json* membre(const Json& objet, std::string_view cle);

/// A string as it stands, or null when the member is anything else or absent.
const std::string* chaine(const Json& objet, std::string_view cle);

/// A string as it stands (not trimmed), else the empty text.
std::string texte(const Json& objet, std::string_view cle);

/// A boolean; a number (zero is false); or one of the words false, non, no, 0, true, oui, yes, 1,
/// whatever their case and the blanks around them. Else the default.
bool booleen(const Json& objet, std::string_view cle, bool defaut);

/// A number truncated toward zero, or a text that is wholly a base-10 integer with an optional sign,
/// blanks around it allowed. Out of the 64-bit range is the default, as is anything else.
std::int64_t entier(const Json& objet, std::string_view cle, std::int64_t defaut);

/// A text or the texts of an array, each split at comma, semicolon and line feed; pieces are trimmed,
/// empty ones dropped. A text that looks like an array is split like any other.
std::vector<std::string> liste(const Json& objet, std::string_view cle);

}  // namespace Champ

/// A number that no double tells from its neighbours, such as 9007199254740993.5 or -9223372036854775809, as it
/// is written; nothing for anything else. Such a node is no number to nlohmann-json: the functions here are.
std::optional<std::string_view> nombreEcrit(const Json& nombre);

/// Any number, as the double nearest to it.
std::optional<double> reel(const Json& nombre);

/// A number truncated toward zero, nothing when it is not a number or is out of the 64-bit range.
std::optional<std::int64_t> entierTronque(const Json& nombre);

/// A number that 64 signed bits hold exactly, however it is written (2, 2.0, 2e0); nothing for anything else.
std::optional<std::int64_t> entierExact(const Json& nombre);

/// The whole text as a base-10 integer with an optional sign; nothing when it is not one or overflows.
std::optional<std::int64_t> entierDecimal(std::string_view texte);

}  // namespace tarnavelle
