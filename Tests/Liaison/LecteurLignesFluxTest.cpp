#include "Liaison/LecteurLignesFlux.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tarnavelle {
namespace {

using namespace std::string_literals;
using Lignes = std::vector<std::string>;

/// Feeds pieces of that size, the first one of another; "…" stands for a line too long.
Lignes lire(std::string_view octets, std::size_t premier, std::size_t taille, std::size_t maximum) {
  LecteurLignesFlux lecteur(maximum);
  Lignes lignes;
  for (std::size_t n = premier; !octets.empty() || n == 0; n = taille) {
    const std::string morceau(octets.substr(0, n));  // a buffer of its own, for the sanitizers
    octets.remove_prefix(morceau.size());
    lecteur.ajouter(morceau);
    do
      while (const auto ligne = lecteur.suivante()) lignes.emplace_back(*ligne);
    while (lecteur.tropLongue() && (lignes.emplace_back("…"), true));
  }
  if (const auto ligne = lecteur.derniere()) lignes.emplace_back(*ligne);
  return lignes;
}

TEST(LecteurLignesFlux, MemesLignesOuQuOnCoupe) {
  const std::pair<std::string, Lignes> cas[] = {
      {"", {}},
      {"a\rb\r\nc\nd", {"a", "b", "c", "d"}},
      {"\n\r\r\n\n\r", {"", "", "", "", ""}},
      {"\uFEFFdata: é\r\n\uFEFFb\n", {"data: é", "\uFEFFb"}},
      {"\xEF\xBBx\n", {"\uFFFD\uFFFDx"}},
      {"a\xC3\nb\x80", {"a\uFFFD", "b\uFFFD"}},
      {"\u0085\u2028\v\f\0\n"s, {"\u0085\u2028\v\f\0"s}},
      {"123456789abc\n123456789a€\r\n\nb", {"123456789abc", "…", "", "b"}},
      {"123456789abcdefghijklmnopq\r\uFEFFb\n123456789abcd", {"…", "\uFEFFb", "…"}},
  };
  for (const auto& [octets, lignes] : cas)
    for (std::size_t taille = 1; taille <= octets.size() + 1; ++taille)
      for (std::size_t premier = 0; premier <= taille; ++premier)
        EXPECT_EQ(lire(octets, premier, taille, 12), lignes)
            << testing::PrintToString(octets) << ' ' << premier << ' ' << taille;
}

TEST(LecteurLignesFlux, LongueLigneEnPetitsMorceaux) {
  const std::string longue(LecteurLignesFlux::ligneMax, 'x');
  EXPECT_TRUE(lire(longue + "\r\na\n", 1, 1000, LecteurLignesFlux::ligneMax) == (Lignes{longue, "a"}));
  EXPECT_EQ(lire(longue + "x", 0, 64 * 1024, LecteurLignesFlux::ligneMax), Lignes{"…"});
}

}  // namespace
}  // namespace tarnavelle
