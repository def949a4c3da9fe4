#include "Socle/Colonnes.hpp"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace tarnavelle {
namespace {

TEST(Colonnes, LargeurEtCoupe) {
  const std::tuple<std::string, std::size_t, std::string> cas[] = {
      // cut to four columns
      {"e\u0301te\u0301sx", 5, "e\u0301te\u0301…"},  // combining marks
      {"漢字x", 5, "漢…"},                           // half of a wide character does not fit
      {"👩‍🚀ab", 4, "👩‍🚀ab"},
      {"ab\u00ADcde", 5, "ab\u00ADc…"},  // shown to nobody
      {"❤️❤️", 4, "❤️❤️"},
      {"🇫🇷🇫🇷", 4, "🇫🇷🇫🇷"},
  };
  for (const auto& [texte, largeur, coupe] : cas) {
    EXPECT_EQ(Colonnes::largeur(texte), largeur) << texte;
    EXPECT_EQ(Colonnes::couper(texte, 4), coupe) << texte;
    EXPECT_EQ(Colonnes::couper(texte, 0), "") << texte;
    EXPECT_EQ(Colonnes::largeur(Colonnes::completer(texte, 9)), 9u) << texte;
  }
  std::string longue;  // cut in a time that grows as the text
  while (longue.size() < 1'000'000) longue += "e\u0301";
  EXPECT_EQ(Colonnes::couper(longue, 100'000).size(), 300'000u);
}

TEST(Colonnes, Pliage) {
  using Lignes = std::vector<std::string>;
  EXPECT_EQ(Colonnes::plier("un  deux\nà 漢字x quatre", 8), (Lignes{"un deux", "à 漢字x", "quatre"}));
  EXPECT_EQ(Colonnes::plier("dit « oui » : bien", 6), (Lignes{"dit", "« oui » :", "bien"}));
  EXPECT_EQ(Colonnes::plier(" interminable x", 4), (Lignes{"interminable", "x"}));
}

}  // namespace
}  // namespace tarnavelle
