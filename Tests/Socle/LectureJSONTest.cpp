#include "Socle/LectureJSON.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "Socle/EcritureJSON.hpp"

namespace tarnavelle {
namespace {

using namespace std::string_literals;

std::string repeter(std::size_t fois, std::string_view motif) {
  std::string s;
  while (fois-- > 0) s += motif;
  return s;
}

std::string emboites(std::size_t fois, std::string_view ouvrant, std::string_view coeur,
                     std::string_view fermant) {
  return repeter(fois, ouvrant).append(coeur) + repeter(fois, fermant);
}

struct Accepte {
  std::string texte;
  std::string compact;  ///< what the writer makes of it
};

const std::vector<Accepte> acceptes = {
    {"null", "null"},
    {" \t\r\n true \n", "true"},
    {"false", "false"},
    {"{}", "{}"},
    {"[ ]", "[]"},
    {R"("")", R"("")"},
    // Decimals keep their shortest form, integers every digit.
    {"0", "0"},
    {"-0", "0"},
    {"-0.0", "-0.0"},
    {"0.65", "0.65"},
    {"0.8", "0.8"},
    {"0.29", "0.29"},
    {"-12.50", "-12.5"},
    {"0.1", "0.1"},
    {"2.0", "2.0"},
    {"1E+2", "100.0"},
    {"5e-324", "5e-324"},
    {"1e-400", "0.0"},
    {"2.2250738585072011e-308", "2.225073858507201e-308"},
    {"9007199254740993", "9007199254740993"},
    {"9223372036854775807", "9223372036854775807"},
    {"-9223372036854775808", "-9223372036854775808"},
    {"18446744073709551615", "18446744073709551615"},
    {"18446744073709551616", "1.8446744073709552e+19"},
    {"-9223372036854775809", "-9.223372036854776e+18"},
    {"1.7976931348623157e308", "1.7976931348623157e+308"},
    {"1.7976931348623158e308", "1.7976931348623157e+308"},
    {"0e400", "0.0"},
    {"17976931348623157" + std::string(292, '0'), "1.7976931348623157e+308"},
    {"0." + std::string(400, '0') + "1e401", "1.0"},
    // Texts
    {R"("\"\\\/\b\f\n\r\t\u0000\u001f\u007F")", R"("\"\\/\b\f\n\r\t\u0000\u001f)"s + "\x7F\""},
    {R"("é\u00e9\u20AC\ud83d\uDE00")", R"("éé€😀")"},
    {R"("\\ud800\u2028\uffff")", R"("\\ud800)"s + "\u2028\uFFFF\""},
    {"\"\U0010FFFF\uFEFF\"", "\"\U0010FFFF\uFEFF\""},
    // Containers: keys sorted by their bytes, the last of two equal keys wins.
    {R"({"b":1,"a":[1,{"d":[],"c":{}}],"é":2,"B":3,"":4})",
     R"({"":4,"B":3,"a":[1,{"c":{},"d":[]}],"b":1,"é":2})"},
    {R"({"a":1,"a":2})", R"({"a":2})"},
    {R"({"a":1,"a":{"a":[1]}})", R"({"a":{"a":[1]}})"},
    {R"({"a":{"b":1},"a":{"c":2}})", R"({"a":{"c":2}})"},
    {R"({"a":[1,2],"\u0061":null})", R"({"a":null})"},
    {R"([[1,[2]],3,[[[]],{"a":{}}]])", R"([[1,[2]],3,[[[]],{"a":{}}]])"},
    {emboites(512, "[", "", "]"), emboites(512, "[", "", "]")},
    {emboites(512, "{\"a\":", "1", "}"), emboites(512, "{\"a\":", "1", "}")},
    {emboites(256, "[{\"a\":", "1", "}]"), emboites(256, "[{\"a\":", "1", "}]")},
    {"[" + repeter(5000, "[],") + "{}]", "[" + repeter(5000, "[],") + "{}]"},
};

const std::vector<std::string> refuses = {
    "", " ", "{", "}", "[", "]", "\"", "nul", "nulll", "True", "NaN", "Infinity", "-", "+1", "01", "-01", "1.",
    ".5", "1e", "1e+", "0x10", "1 2", "1,", "{} {}", "{}x", "\xEF\xBB\xBF{}", "{}\xEF\xBB\xBF", "{}\0"s,
    "\0{}"s, "\f{}", "\u00A0{}", "// c\n{}", "{}/* c */", "'a'", "{a:1}", R"({"a"})", R"({"a":})",
    R"({"a":1,})", R"({,"a":1})", R"({"a":1 "b":2})", R"({"a":1;"b":2})", R"({"a"=1})", R"({1:2})", "[1,]",
    "[,1]", "[1 2]", "[1}", R"({"a":1])",
    // Numbers no double holds
    "1e400", "-1e400", "1.8e308", "1e999999999999", "1.7976931348623159e308", "0e99999999999",
    std::string(310, '9'), "[1e400]",
    // Texts that are not characters
    R"("\x41")", R"("\u12")", R"("\u12g4")", R"("\ud800")", R"("\ud800\ud800")", R"("\ud83dz")",
    R"("\ude00\ud83d")", R"("\uD83D\n")", "\"\n\"", "\"\t\"", "\"\0\""s, "\"\x1F\"", "\"\x80\"", "\"\xC3\"",
    "\"\xC0\xAF\"", "\"\xE0\x80\xAF\"", "\"\xED\xA0\x80\"", "\"\xF4\x90\x80\x80\"", "{\"\xFF\":1}", "\xFF",
    // Too deep
    emboites(513, "[", "", "]"), emboites(513, "{\"a\":", "1", "}"), emboites(1'000'000, "[", "", "]"),
    std::string(1'000'000, '['), repeter(1'000'000, "{\"a\":"), "[" + emboites(512, "[", "", "]") + "]"};

std::string apercu(const std::string& texte) { return testing::PrintToString(texte.substr(0, 100)); }

TEST(LectureJSON, AccepteEtRelitCeQuElleEcrit) {
  for (const auto& c : acceptes) {
    const auto lu = LectureJSON::valeur(c.texte);
    ASSERT_TRUE(lu) << apercu(c.texte);
    EXPECT_EQ(EcritureJSON::compacte(*lu), c.compact) << apercu(c.texte);
    EXPECT_EQ(LectureJSON::valeur(c.compact), lu) << apercu(c.compact);
    EXPECT_EQ(LectureJSON::valeur(EcritureJSON::lisible(*lu).value()), lu) << apercu(c.texte);
    EXPECT_EQ(LectureJSON::objet(c.texte).has_value(), lu->is_object()) << apercu(c.texte);
    EXPECT_TRUE(LectureJSON::booleenDeTete(c.texte, "ok").lisible) << apercu(c.texte);
  }
}

TEST(LectureJSON, Refuse) {
  for (const auto& texte : refuses) {
    EXPECT_FALSE(LectureJSON::valeur(texte)) << apercu(texte);
    EXPECT_FALSE(LectureJSON::booleenDeTete(texte, "ok").lisible) << apercu(texte);
    for (const auto& cles : {std::vector<std::string_view>{}, {"ok"}})  // built, or read and left out
      EXPECT_FALSE(LectureJSON::objet(R"({"ok":true,"a":)" + texte + "}", cles)) << apercu(texte);
  }
  const std::string entier = R"({"é\n":[true,null,-1.5e3,"\ud83d\ude00"],"b":{"c":[]}})";
  for (std::size_t n = 0; n < entier.size(); ++n)
    EXPECT_FALSE(LectureJSON::objet(entier.substr(0, n))) << entier.substr(0, n);
}

// The parser hands out long texts in parts; an escape may fall on either side of every border.
TEST(LectureJSON, TextesPlusLongsQuUnMorceau) {
  for (const std::size_t taille : {240u, 500u, 1000u, 2030u, 4080u, 65520u})
    for (std::size_t avant = taille; avant < taille + 40; ++avant) {
      const auto texte = std::string(avant, 'x') + R"(é\ud83d\ude00\n\u00e9)" + std::string(taille, 'y');
      const auto attendu = std::string(avant, 'x') + "é😀\né" + std::string(taille, 'y');
      const auto lu = LectureJSON::objet("{\"" + texte + "\":[\"" + texte + "\"]}");
      ASSERT_TRUE(lu) << avant;
      EXPECT_EQ(*lu, Json({{attendu, {attendu}}})) << avant;
      const std::vector<std::string_view> cles{attendu};
      EXPECT_EQ(LectureJSON::objet("{\"x\":\"" + texte + "\",\"" + texte + "\":\"" + texte + "\"}", cles),
                Json({{attendu, attendu}}))
          << avant;
      const auto tete = LectureJSON::booleenDeTete("{\"" + texte + "\":true}", attendu);
      EXPECT_EQ(tete.valeur, true) << avant;
    }
}

TEST(LectureJSON, NeGardeQueLesMembresVoulus) {
  const std::vector<std::string_view> cles{"a", "b"};
  const struct {
    std::string texte;
    std::string garde;
  } cas[] = {
      {R"({"c":1,"a":2,"d":"é\n","e":-1.5,"f":null,"g":true,"h":18446744073709551615})", R"({"a":2})"},
      {R"({"c":{"a":1,"d":[{"a":[]}]},"b":3})", R"({"b":3})"},
      {R"({"a":[{"c":[],"b":[1,{}]},{"c":{}},"c",4],"c":{}})", R"({"a":[{"b":[1,{}]},{},"c",4]})"},
      {R"({"a":1,"a":{"c":2,"\u0062":1},"aa":1,"":1})", R"({"a":{"b":1}})"},
      {R"({"c":{}})", "{}"},
  };
  for (const auto& c : cas) {
    const auto lu = LectureJSON::objet(c.texte, cles);
    ASSERT_TRUE(lu) << c.texte;
    EXPECT_EQ(EcritureJSON::compacte(*lu), c.garde) << c.texte;
  }
  EXPECT_FALSE(LectureJSON::objet("[]", cles));
}

TEST(LectureJSON, BooleenDeTete) {
  struct {
    std::string texte;
    std::optional<bool> valeur;
  } const cas[] = {
      {R"({"ok":true})", true},
      {R"( {"a":[1,{"ok":false}],"ok":true,"z":{"ok":false}} )", true},
      {R"({"a":{"b":[{}]},"ok":false})", false},
      {R"({"ok":true,"ok":false})", false},
      {R"({"o\u006b":true})", true},
      {R"({"ok":true,"\u006fk":1})", {}},
      {R"({"ok":true,"ok":[]})", {}},
      {R"({"ok":true,"ok":{"ok":true}})", {}},
      {R"({"ok":[true]})", {}},
      {R"({"ok":"true"})", {}},
      {R"({"ok":1})", {}},
      {R"({"ok":1.0})", {}},
      {R"({"ok":18446744073709551615})", {}},
      {R"({"ok":null})", {}},
      {R"({"OK":true,"ok ":true,"o":true,"okk":true,"":true})", {}},
      {R"({"a":{"ok":true}})", {}},
      {R"([{"ok":true}])", {}},
      {R"(["ok",true])", {}},
      {"true", {}},
      {"{}", {}},
  };
  for (const auto& c : cas) {
    const auto lu = LectureJSON::booleenDeTete(c.texte, "ok");
    EXPECT_TRUE(lu.lisible) << c.texte;
    EXPECT_EQ(lu.valeur, c.valeur) << c.texte;
  }
  EXPECT_EQ(LectureJSON::booleenDeTete(R"({"ok":true)", "ok").valeur, std::nullopt);
}

TEST(LectureJSON, EntierTronque) {
  constexpr auto max = std::numeric_limits<std::int64_t>::max();
  constexpr auto min = std::numeric_limits<std::int64_t>::min();
  struct {
    Json nombre;
    std::optional<std::int64_t> entier;
  } const cas[] = {
      {2.9, 2},
      {-2.9, -2},
      {-0.5, 0},
      {9223372036854774784.0, 9223372036854774784},  // the last double below 2^63
      {9223372036854775808.0, {}},
      {-9223372036854775808.0, min},
      {-9223372036854777856.0, {}},
      {std::uint64_t{max}, max},
      {std::uint64_t{max} + 1, {}},
      {std::numeric_limits<double>::infinity(), {}},
      {std::nan(""), {}},
      {"7", {}},
      {true, {}},
      {nullptr, {}},
      {Json::array({7}), {}},
  };
  for (const auto& c : cas) EXPECT_EQ(entierTronque(c.nombre), c.entier) << c.nombre;
}

// What decodes a verb's arguments is tested with the commands; here, what is not an object.
TEST(Champ, HorsDUnObjet) {
  for (const Json& objet : {Json(), Json(7), Json("cle"), Json::array({"cle", true}), Json(true),
                            Json::array({{{"cle", true}}}), Json::object()}) {
    EXPECT_EQ(Champ::membre(objet, "cle"), nullptr) << objet;
    EXPECT_EQ(Champ::texte(objet, "cle"), "") << objet;
    EXPECT_TRUE(Champ::booleen(objet, "cle", true)) << objet;
    EXPECT_EQ(Champ::entier(objet, "cle", 42), 42) << objet;
    EXPECT_TRUE(Champ::liste(objet, "cle").empty()) << objet;
  }
}

}  // namespace
}  // namespace tarnavelle
