#include "Socle/Collation.hpp"

#include <locale.h>
#include <string.h>
#if defined(__APPLE__)
#include <xlocale.h>
#endif

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

#include "Socle/Texte.hpp"

namespace tarnavelle::Collation {
namespace {

using LocaleC = std::unique_ptr<std::remove_pointer_t<locale_t>, decltype(&freelocale)>;

std::optional<std::string> cleLocale(const std::string& nom, locale_t locale) {
  errno = 0;
  const std::size_t n = strxfrm_l(nullptr, nom.c_str(), 0, locale);
  std::string cle;
  if (errno != 0 || n >= cle.max_size()) return std::nullopt;  // as it says that it cannot
  cle.resize(n + 1);
  if (strxfrm_l(cle.data(), nom.c_str(), cle.size(), locale) != n || errno != 0) return std::nullopt;
  cle.pop_back();
  return cle;
}

/// Nothing unless there is one for each name.
std::optional<std::vector<std::string>> clesLocales(const std::vector<std::string>& noms, locale_t locale) {
  std::vector<std::string> cles;
  for (const std::string& nom : noms) {
    auto cle = cleLocale(nom, locale);
    if (!cle) return std::nullopt;
    cles.push_back(std::move(*cle));
  }
  return cles;
}

/// A locale that sorts by bytes, or is of another encoding, is worth no more than none.
bool connaitLesLettres(locale_t locale) {
  const auto temoins = clesLocales({"e", "é", "f"}, locale);
  return temoins && (*temoins)[0] < (*temoins)[1] && (*temoins)[1] < (*temoins)[2];
}

/// The letters without accents nor case. Signs take two bytes each, which puts them before all others.
std::string lettresNues(std::string_view minuscules) {
  std::string nues = Texte::sansAccents(minuscules);
  for (const auto& [ligature, lettres] : {std::pair{"œ", "oe"}, {"æ", "ae"}, {"ß", "ss"}})
    for (auto i = nues.find(ligature); i != nues.npos; i = nues.find(ligature, i)) nues.replace(i, 2, lettres);
  std::string cle;
  std::size_t fait = 0;
  const auto avancer = [&](std::size_t fin) {
    for (; fait < fin; ++fait) cle.append({'\1', nues[fait]});
  };
  for (const auto suite : Texte::suitesDeLettres(nues)) {
    avancer(static_cast<std::size_t>(suite.data() - nues.data()));
    cle += suite;
    fait += suite.size();
  }
  avancer(nues.size());
  return cle;
}

}  // namespace

std::vector<std::string> cles(const std::vector<std::string>& noms) {
  if (const LocaleC locale(newlocale(LC_COLLATE_MASK, "", locale_t{}), freelocale);
      locale && connaitLesLettres(locale.get()))
    if (auto cles = clesLocales(noms, locale.get())) return std::move(*cles);
  std::vector<std::string> cles;
  std::ranges::transform(noms, std::back_inserter(cles), cleFrancaise);
  return cles;
}

std::string cleFrancaise(std::string_view nom) {
  const std::string minuscules = Texte::minuscules(nom);
  std::string cle = lettresNues(minuscules) + '\0' + minuscules + '\0';
  for (const char c : nom) cle += static_cast<char>(~c);  // capitals have the lower code points
  return cle;
}

}  // namespace tarnavelle::Collation
