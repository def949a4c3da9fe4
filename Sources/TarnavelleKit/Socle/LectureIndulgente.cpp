#include "Socle/LectureIndulgente.hpp"

#include <charconv>
#include <string>

namespace tarnavelle::LectureIndulgente {
namespace {

constexpr std::size_t tailleEchappement = 6;  // "\uXXXX"

/// The UTF-16 unit that an escape writes at the beginning of the text; 0 when none stands there.
unsigned unite(std::string_view texte) {
  if (texte.size() < tailleEchappement || !texte.starts_with("\\u")) return 0;
  unsigned n = 0;
  const char* const fin = texte.data() + tailleEchappement;
  const auto [lu, erreur] = std::from_chars(texte.data() + 2, fin, n, 16);
  return erreur == std::errc{} && lu == fin ? n : 0;
}

bool haute(unsigned unite) { return unite >= 0xD800 && unite < 0xDC00; }
bool basse(unsigned unite) { return unite >= 0xDC00 && unite < 0xE000; }

/// The text with each half of a surrogate pair replaced; nothing when there is none. An escape takes the place
/// of an escape: the bytes stay where they are.
std::optional<std::string> sansMoities(std::string_view texte) {
  std::optional<std::string> repare;
  for (auto i = texte.find('\\'); i != texte.npos; i = texte.find('\\', i)) {
    const auto reste = texte.substr(i);
    const unsigned u = unite(reste);
    if (haute(u) && basse(unite(reste.substr(tailleEchappement)))) {
      i += 2 * tailleEchappement;
    } else if (haute(u) || basse(u)) {
      if (!repare) repare.emplace(texte);
      repare->replace(i, tailleEchappement, "\\ufffd");
      i += tailleEchappement;
    } else {
      i += 2;  // whatever is escaped, a backslash first of all
    }
  }
  return repare;
}

}  // namespace

std::optional<Json> valeur(std::string_view texte, const LectureJSON::Filtre& filtre) {
  auto lue = LectureJSON::valeur(texte, filtre);
  if (lue) return lue;
  if (const auto repare = sansMoities(texte)) lue = LectureJSON::valeur(*repare, filtre);
  return lue;
}

std::optional<Json> objet(std::string_view texte, const LectureJSON::Filtre& filtre) {
  auto lue = LectureIndulgente::valeur(texte, filtre);
  if (lue && !lue->is_object()) lue.reset();
  return lue;
}

bool chaqueObjet(std::string_view texte, const std::function<bool(const Json&)>& voir) {
  const auto repare = sansMoities(texte);
  if (repare) texte = *repare;
  bool intacts = true;
  std::size_t enVain = 0;
  for (auto i = texte.find('{'); i != texte.npos; i = texte.find('{', i)) {
    const auto cle = texte.find_first_not_of(" \t\r\n", i + 1);
    if (cle == texte.npos || texte[cle] != '"') {  // no key: a brace of prose, or nothing in it
      ++i;
      continue;
    }
    const auto [objet, octets] = LectureJSON::debut(texte.substr(i));
    if (objet) {
      if (!voir(*objet)) break;
      i += octets;
      continue;
    }
    intacts = false;
    enVain += octets;
    if (enVain / lecturesMax > texte.size()) break;
    ++i;
  }
  return intacts;
}

}  // namespace tarnavelle::LectureIndulgente
