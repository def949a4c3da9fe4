#include "Socle/Colonnes.hpp"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace tarnavelle {
namespace {

TEST(Colonnes, RienNeConduitLeTerminal) {
  const std::pair<std::string, std::string> cas[] = {
      {"été \"a\\b\" œ漢👩‍🚀 नि", "été \"a\\b\" œ漢👩‍🚀 नि"},
      {"\x1b[31m\a\b\x7f", "\\u001b[31m\\u0007\\u0008\\u007f"},
      {std::string("a\0b", 3), "a\\u0000b"},
      {"a\n\t\r\nb", "a\n\t\\r\nb"},
      {"\u009B2J\u0085", "\\u009b2J\\u0085"},                // C1, as text
      {"\x9B\xFF\xC2", "\\x9b\\xff\\xc2"},                   // C1, as bytes
      {"\xE2\x80\xAEtxt\xE2\x81\xA6", "\\u202etxt\\u2066"},  // writing direction
      {"a\xE2\x80\xA8\xEF\xBB\xBF\xC2\xAD", "a\\u2028\\ufeff\\u00ad"},
      {"\xF3\xA0\x81\xA7", "\\udb40\\udc67"},  // a tag, beyond 16 bits
  };
  for (const auto& [brut, montre] : cas)
    for (const auto& texte : {brut, montre}) EXPECT_EQ(Colonnes::montrable(texte, "\n\t"), montre);
  EXPECT_EQ(Colonnes::montrable("a\n\tb"), "a\\n\\tb");
  // In a time that grows as the text, whatever fills it.
  for (const std::string_view motif : {"\x7f", "\xFF", "e\u0301"}) {
    std::string texte;
    while (texte.size() < 1'000'000) texte += motif;
    EXPECT_GE(Colonnes::couper(Colonnes::montrable(texte), 100'000).size(), 100'000u) << motif;
  }
}

TEST(Colonnes, LargeurEtCoupe) {
  const std::tuple<std::string, std::size_t, std::string> cas[] = {
      // cut to four columns
      {"e\u0301te\u0301sx", 5, "e\u0301te\u0301…"},  // combining marks
      {"漢字x", 5, "漢…"},                           // half of a wide character does not fit
      {"👩‍🚀ab", 4, "👩‍🚀ab"},
      {"❤️❤️", 4, "❤️❤️"},
      {"🇫🇷🇫🇷", 4, "🇫🇷🇫🇷"},
  };
  for (const auto& [texte, largeur, coupe] : cas) {
    EXPECT_EQ(Colonnes::largeur(texte), largeur) << texte;
    EXPECT_EQ(Colonnes::couper(texte, 4), coupe) << texte;
    EXPECT_EQ(Colonnes::couper(texte, 0), "") << texte;
    EXPECT_EQ(Colonnes::largeur(Colonnes::completer(texte, 9)), 9u) << texte;
  }
}

TEST(Colonnes, Pliage) {
  using Lignes = std::vector<std::string>;
  EXPECT_EQ(Colonnes::plier("un  deux\nà 漢字x quatre", 8), (Lignes{"un deux", "à 漢字x", "quatre"}));
  EXPECT_EQ(Colonnes::plier("dit « oui » : bien", 6), (Lignes{"dit", "« oui » :", "bien"}));
  EXPECT_EQ(Colonnes::plier(" interminable x", 4), (Lignes{"interminable", "x"}));
}

}  // namespace
}  // namespace tarnavelle
