#include "Socle/Texte.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace tarnavelle {
namespace {

using namespace std::string_literals;

std::string utf8(char32_t point) {
  std::string s;
  const auto poser = [&](char32_t octet) { s += static_cast<char>(octet); };
  if (point < 0x80) {
    poser(point);
    return s;
  }
  const int suites = point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
  poser(((0xF00 >> (suites + 1)) & 0xFF) | (point >> (6 * suites)));
  for (int i = suites - 1; i >= 0; --i) poser(0x80 | ((point >> (6 * i)) & 0x3F));
  return s;
}

bool surrogat(char32_t point) { return point >= 0xD800 && point < 0xE000; }

/// Texts that hold no well-formed UTF-8 sequence at some place.
const std::vector<std::string> malFormes = {
    "\x80",              // continuation alone
    "\xBF\xBF",          //
    "\xC3",              // cut
    "\xE2\x82",          //
    "\xF0\x9F\x98",      //
    "\xC3z",             // cut by a letter
    "\xC0\xAF",          // overlong "/"
    "\xC1\xBF",          //
    "\xE0\x80\xAF",      //
    "\xE0\x9F\xBF",      //
    "\xF0\x8F\xBF\xBF",  //
    "\xED\xA0\x80",      // surrogates
    "\xED\xBF\xBF",      //
    "\xF4\x90\x80\x80",  // beyond U+10FFFF
    "\xF5\x80\x80\x80",  //
    "\xFE",              //
    "\xFF",              //
};

TEST(Texte, ChaquePointDeCode) {
  std::set<char32_t> blancs = {0x09, 0x20, 0xA0, 0x1680, 0x202F, 0x205F, 0x3000};
  for (char32_t p = 0x2000; p <= 0x200A; ++p) blancs.insert(p);
  std::set<char32_t> sauts = {0x0A, 0x0B, 0x0C, 0x0D, 0x85, 0x2028, 0x2029};
  for (char32_t p = 0; p <= 0x10FFFF; ++p) {
    const std::string s = utf8(p);
    const bool valide = !surrogat(p);
    ASSERT_EQ(Texte::utf8Valide(s), valide) << std::hex << unsigned(p);
    ASSERT_EQ(Texte::longueurSequence(s), valide ? s.size() : 0u) << std::hex << unsigned(p);
    ASSERT_EQ(Texte::rognerBlancs(s).empty(), blancs.contains(p)) << std::hex << unsigned(p);
    ASSERT_EQ(Texte::rogner(s).empty(), blancs.contains(p) || sauts.contains(p)) << std::hex << unsigned(p);
  }
}

TEST(Texte, RognageDesBouts) {
  struct {
    std::string texte;
    std::string rogne;
    std::string sansBlancs;
  } const cas[] = {
      {"", "", ""},
      {" \t\n ", "", "\n"},
      {"\u00A0\u2028 a \n b\u3000\r\n", "a \n b", "\u2028 a \n b\u3000\r\n"},
      {"\u200B a\uFEFF ", "\u200B a\uFEFF", "\u200B a\uFEFF"},  // zero width: not white space
      {" \xFF ", "\xFF", "\xFF"},
      {"\x85 a \xA0", "\x85 a \xA0", "\x85 a \xA0"},  // bytes, not code points
      {" \xE2\x80 ", "\xE2\x80", "\xE2\x80"},
      {"\xC2\u00A0", "\xC2", "\xC2"},
      {" \0 "s, "\0"s, "\0"s},
  };
  for (const auto& c : cas) {
    EXPECT_EQ(Texte::rogner(c.texte), c.rogne) << testing::PrintToString(c.texte);
    EXPECT_EQ(Texte::rognerBlancs(c.texte), c.sansBlancs) << testing::PrintToString(c.texte);
  }
}

TEST(Texte, Minuscules) {
  EXPECT_EQ(Texte::minuscules("ÉTAT Œ Σ ẞ Ⅷ 𐐀 1_-é"), "état œ σ ß ⅷ 𐐨 1_-é");
  EXPECT_EQ(Texte::minuscules("A\xFF\xC3"
                              "B\xE2\x82"),
            "a\xFF\xC3"
            "b\xE2\x82");
}

TEST(Texte, SansAccents) {
  const struct {
    std::string texte;
    std::string nu;
  } cas[] = {
      {"", ""},
      {"À l'Épée, ça ôte\n", "A l'Epee, ca ote\n"},
      {"e\u0301c\u0327o\u0302\u0323\u1ED9", "ecoo"},
      {"œ Æ ø ß ı ’", "œ Æ ø ß ı ’"},
      {"한국 \u1112\u1161\u11AB ﬁ", "한국 한 ﬁ"},  // composed again; compatibility forms stay
      {"\u0301", ""},
      {"👩🏽‍🚀 1\uFE0F\u20E3", "👩🏽‍🚀 1"},
      {"é\xFF\xC3\0é\xE2\x82"s, "e\xFF\xC3\0e\xE2\x82"s},
  };
  for (const auto& c : cas) EXPECT_EQ(Texte::sansAccents(c.texte), c.nu) << testing::PrintToString(c.texte);
}

TEST(Texte, Mots) {
  const struct {
    std::string texte;
    std::vector<std::string_view> mots;
  } cas[] = {
      {"", {}},
      {" \t\r\n\u00A0\u2028", {}},
      {"a", {"a"}},
      {" l'é,\u00A0\u3000b\u2029c\n", {"l'é,", "b", "c"}},
      {"a\u200Bb\xA0 \x85", {"a\u200Bb\xA0", "\x85"}},  // zero width; bytes, not code points
  };
  for (const auto& c : cas) EXPECT_EQ(Texte::mots(c.texte), c.mots) << testing::PrintToString(c.texte);
}

TEST(Texte, SuitesDeLettres) {
  const struct {
    std::string texte;
    std::vector<std::string_view> suites;
  } cas[] = {
      {"", {}},
      {" ,;’\u0301\xFF", {}},
      {"l'été_n°2, fin", {"l", "été", "n", "2", "fin"}},
      {"\u0301e\u0301t\u00E9\xC3!\u0301Ⅷ½", {"e\u0301t\u00E9", "Ⅷ½"}},
  };
  for (const auto& c : cas)
    EXPECT_EQ(Texte::suitesDeLettres(c.texte), c.suites) << testing::PrintToString(c.texte);
}

/// A text cut into the characters that a person sees.
const std::vector<std::vector<std::string>> graphemes = {
    {},
    {"a", "b", "c"},
    {"\u0300", "é", "e\u0301", "o\u0302\u0323", "x"},
    {"x", "👨‍👩‍👧‍👦", "y", "👍🏽", "🏳️‍🌈", "1️⃣", "👩🏽‍🚀"},
    {"🇫🇷", "🇩🇪", "🇪", " ", "🏴󠁧󠁢󠁳󠁣󠁴󠁿"},
    {"한", "\u1112\u1161\u11AB", "\u1100\u1161", "\u1100", "a"},
    {"\n", "\r\n", "\r", "\r\n", "\n"},
    {"a", "\xFF", "\xFE", "b"},
    {"e", "\xC3", "\u0301", "\xF0", "\x9F", "\x98"},  // an invalid byte joins nothing
    {"🇫🇷", "\xFF", "🇩", "\x80", "🇪🇫"},
    {"👨‍", "\xFF", "👩"},
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
    EXPECT_EQ(Texte::derniers(texte, 0), "");
    EXPECT_EQ(Texte::tronquer(texte, attendus.size()), texte);
    EXPECT_EQ(Texte::tronquer(texte, attendus.size() + 1), texte);
  }
}

// The scans advance by blocks: every fault is looked for at every place of a block.
TEST(Texte, Utf8MalForme) {
  for (const auto& fautif : malFormes)
    for (std::size_t avant = 0; avant < 34; ++avant)
      for (const auto& suite : {""s, "\"é\\"s, std::string(20, 'a')}) {
        const auto texte = std::string(avant, 'a') + fautif + suite;
        EXPECT_FALSE(Texte::utf8Valide(texte)) << testing::PrintToString(texte);
        EXPECT_TRUE(Texte::utf8Valide(Texte::reparer(texte))) << testing::PrintToString(texte);
      }
  const std::string texte = "aé\n€\"😀\\\U0010FFFF";
  const std::set<std::size_t> bords = {0, 1, 3, 4, 7, 8, 12, 13, 17};
  for (std::size_t n = 0; n <= texte.size(); ++n)
    EXPECT_EQ(Texte::utf8Valide(texte.substr(0, n)), bords.contains(n)) << n;
}

TEST(Texte, Reparation) {
  struct {
    std::string brut;
    std::string repare;
  } const cas[] = {
      {"é\"\\\n€", "é\"\\\n€"},           {"a\xC3z", "a\uFFFDz"},
      {"\xE2\x82é", "\uFFFD\uFFFDé"},     {"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},
      {"\xFF\0\xFE"s, "\uFFFD\0\uFFFD"s},
  };
  for (const auto& c : cas) EXPECT_EQ(Texte::reparer(c.brut), c.repare) << testing::PrintToString(c.brut);
}

TEST(Texte, PlageOrdinaireAToutePosition) {
  for (int c = 0; c < 256; ++c) {
    const bool ordinaire = c >= 0x20 && c < 0x80 && c != '"' && c != '\\';
    for (std::size_t avant = 0; avant < 50; ++avant) {
      const auto texte = std::string(avant, ' ') + static_cast<char>(c) + std::string(20, '\x7F');
      EXPECT_EQ(Texte::plageOrdinaire(texte), ordinaire ? texte.size() : avant) << c << " " << avant;
    }
  }
}

}  // namespace
}  // namespace tarnavelle
