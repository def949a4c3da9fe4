#include "Socle/Texte.hpp"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace tarnavelle {
namespace {

using namespace std::string_literals;

std::string utf8(char32_t point) {
  const auto suite = [point](int rang) { return static_cast<char>(0x80 | ((point >> (6 * rang)) & 0x3F)); };
  if (point < 0x80) return {static_cast<char>(point)};
  if (point < 0x800) return {static_cast<char>(0xC0 | (point >> 6)), suite(0)};
  if (point < 0x10000) return {static_cast<char>(0xE0 | (point >> 12)), suite(1), suite(0)};
  return {static_cast<char>(0xF0 | (point >> 18)), suite(2), suite(1), suite(0)};
}

TEST(Texte, ChaquePointDeCode) {
  std::set<char32_t> blancs = {0x09, 0x20, 0xA0, 0x1680, 0x202F, 0x205F, 0x3000};
  for (char32_t p = 0x2000; p <= 0x200A; ++p) blancs.insert(p);
  std::set<char32_t> sauts = {0x0A, 0x0B, 0x0C, 0x0D, 0x85, 0x2028, 0x2029};
  for (char32_t p = 0; p <= 0x10FFFF; ++p) {
    const std::string s = utf8(p);
    const bool valide = p < 0xD800 || p >= 0xE000;
    ASSERT_EQ(Texte::utf8Valide(s), valide) << std::hex << unsigned(p);
    ASSERT_EQ(Texte::longueurSequence(s), valide ? s.size() : 0u) << std::hex << unsigned(p);
    ASSERT_EQ(Texte::rognerBlancs(s).empty(), blancs.contains(p)) << std::hex << unsigned(p);
    ASSERT_EQ(Texte::rogner(s).empty(), blancs.contains(p) || sauts.contains(p)) << std::hex << unsigned(p);
  }
}

TEST(Texte, RognageDesBouts) {
  const std::tuple<std::string, std::string, std::string> cas[] = {
      {" \t\n ", "", "\n"},
      {"\u00A0\u2028 a \n b\u3000\r\n", "a \n b", "\u2028 a \n b\u3000\r\n"},
      {"\u200B a\uFEFF ", "\u200B a\uFEFF", "\u200B a\uFEFF"},  // zero width: not white space
      {"\x85 a \xA0", "\x85 a \xA0", "\x85 a \xA0"},            // bytes, not code points
  };
  for (const auto& [texte, rogne, sansBlancs] : cas) {
    EXPECT_EQ(Texte::rogner(texte), rogne) << testing::PrintToString(texte);
    EXPECT_EQ(Texte::rognerBlancs(texte), sansBlancs) << testing::PrintToString(texte);
  }
}

TEST(Texte, MinusculesEtSansAccents) {
  EXPECT_EQ(Texte::minuscules("ÉTAT Œ Σ ẞ 𐐀 1_-é\xFF\xC3Z\xE2\x82"), "état œ σ ß 𐐨 1_-é\xFF\xC3z\xE2\x82");
  const std::pair<std::string, std::string> cas[] = {
      {"À l'Épée, ça ôte\n", "A l'Epee, ca ote\n"},
      {"e\u0301c\u0327o\u0302\u0323\u1ED9", "ecoo"},
      {"œ Æ ø ß ı ’", "œ Æ ø ß ı ’"},
      {"한국 \u1112\u1161\u11AB ﬁ", "한국 한 ﬁ"},  // composed again; compatibility forms stay
      {"é\xFF\xC3\0é\xE2\x82"s, "e\xFF\xC3\0e\xE2\x82"s},
  };
  for (const auto& [texte, nu] : cas) EXPECT_EQ(Texte::sansAccents(texte), nu) << testing::PrintToString(texte);
}

TEST(Texte, MotsEtSuitesDeLettres) {
  using Pieces = std::vector<std::string_view>;
  EXPECT_EQ(Texte::mots(" l'é,\u00A0\u3000b\u2029c\n"), (Pieces{"l'é,", "b", "c"}));
  EXPECT_EQ(Texte::mots("a\u200Bb\xA0 \x85"), (Pieces{"a\u200Bb\xA0", "\x85"}));  // zero width; bytes
  EXPECT_EQ(Texte::suitesDeLettres("l'été_n°2, fin"), (Pieces{"l", "été", "n", "2", "fin"}));
  EXPECT_EQ(Texte::suitesDeLettres("\u0301e\u0301t\u00E9\xC3!\u0301Ⅷ½"), (Pieces{"e\u0301t\u00E9", "Ⅷ½"}));
}

/// A text cut into the characters that a person sees.
const std::vector<std::vector<std::string>> graphemes = {
    {},
    {"\u0300", "é", "e\u0301", "o\u0302\u0323", "x"},
    {"🇫🇷", "🇩🇪", "🇪", " ", "🏴󠁧󠁢󠁳󠁣󠁴󠁿"},
    {"한", "\u1112\u1161\u11AB", "\u1100\u1161", "\u1100", "a"},
    {"\n", "\r\n", "\r", "\r\n", "\n"},
    {"e", "\xC3", "\u0301", "\xF0", "\x9F", "\x98"},  // an invalid byte joins nothing
    {"👨‍", "\xFF", "👩", "👨‍👩‍👧‍👦", "👍🏽", "🏳️‍🌈", "1️⃣"},
    {"\0"s, "\x7F", "…"},
};

TEST(Texte, CaracteresVusEtCoupes) {
  for (const auto& attendus : graphemes) {
    std::string texte;
    for (const auto& g : attendus) texte += g;
    EXPECT_EQ(Texte::caracteres(texte), attendus.size()) << texte;
    std::string debut;
    for (std::size_t n = 0; n < attendus.size(); debut += attendus[n++]) {
      EXPECT_EQ(Texte::tronquer(texte, n), debut + "…") << texte << " " << n;
      EXPECT_EQ(Texte::premiers(texte, n), debut) << texte << " " << n;
      EXPECT_EQ(Texte::derniers(texte, attendus.size() - n), texte.substr(debut.size())) << texte << " " << n;
    }
    EXPECT_EQ(Texte::tronquer(texte, attendus.size()), texte);
    EXPECT_EQ(Texte::tronquer(texte, attendus.size() + 1), texte);
  }
}

// The scans advance by blocks: every fault is looked for at every place of a block.
TEST(Texte, Utf8MalForme) {
  for (const std::string fautif :
       {"\x80", "\xC3", "\xE2\x82", "\xF0\x9F\x98", "\xC3z", "\xC0\xAF", "\xC1\xBF", "\xE0\x9F\xBF",
        "\xF0\x8F\xBF\xBF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF"})
    for (std::size_t avant = 0; avant < 34; ++avant)
      for (const char* suite : {"", "\"é\\", "aaaaaaaaaaaaaaaaaaaa"}) {
        const auto texte = std::string(avant, 'a') + fautif + suite;
        EXPECT_FALSE(Texte::utf8Valide(texte)) << testing::PrintToString(texte);
        EXPECT_TRUE(Texte::utf8Valide(Texte::reparer(texte))) << testing::PrintToString(texte);
      }
  const std::string texte = "aé\n€\"😀\\\U0010FFFF";
  for (std::size_t n = 0; n <= texte.size(); ++n)
    EXPECT_EQ(Texte::utf8Valide(texte.substr(0, n)), std::set({0, 1, 3, 4, 7, 8, 12, 13, 17}).contains(int(n)))
        << n;
  EXPECT_EQ(Texte::reparer("é\"\\\n€\xE2\x82é"), "é\"\\\n€\uFFFD\uFFFDé");
  EXPECT_EQ(Texte::reparer("\xFF\0\xED\xA0\x80"s), "\uFFFD\0\uFFFD\uFFFD\uFFFD"s);
}

}  // namespace
}  // namespace tarnavelle
