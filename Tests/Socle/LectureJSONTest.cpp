#include "Socle/LectureJSON.hpp"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Socle/EcritureJSON.hpp"
#include "Socle/LectureIndulgente.hpp"

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

/// Texts, and what the writer makes of them.
const std::vector<std::pair<std::string, std::string>> acceptes = {
    {" \t\r\n true \n", "true"},
    // Decimals keep their shortest form, integers every digit.
    {"-0", "0"},
    {"-0.0", "-0.0"},
    {"5e-324", "5e-324"},
    {"1e-400", "0.0"},
    {"9007199254740992.0", "9.007199254740992e+15"},
    {"-9007199254740993.50e0", "-9007199254740993.50e0"},  // no double is it, nor would its integer part be
    {"18446744073709551615", "18446744073709551615"},
    {"18446744073709551616", "1.8446744073709552e+19"},
    {"17976931348623157" + std::string(292, '0'), "1.7976931348623157e+308"},
    // Texts
    {R"("\"\\\/\b\f\n\r\t\u0000\u001f\u007F")", R"("\"\\/\b\f\n\r\t\u0000\u001f)"s + "\x7F\""},
    {R"("é\u00e9\u20AC\ud83d\uDE00")", R"("éé€😀")"},
    {R"("\\ud800\u2028\uffff")", R"("\\ud800)"s + "\u2028\uFFFF\""},
    // Containers: keys sorted by their bytes, the last of two equal keys wins.
    {R"({"b":1,"a":[1,{"d":[],"c":{}}],"é":2,"B":3,"":4})",
     R"({"":4,"B":3,"a":[1,{"c":{},"d":[]}],"b":1,"é":2})"},
    {R"({"a":[1,2],"\u0061":null})", R"({"a":null})"},
    {emboites(256, "[{\"a\":", "1", "}]"), emboites(256, "[{\"a\":", "1", "}]")},
};

const std::vector<std::string> refuses = {
    "", " ", "]", "nulll", "NaN", "+1", "-01", "1.", "{} {}", "\xEF\xBB\xBF{}", "{}\xEF\xBB\xBF", "{}\0"s,
    "\f{}", "// c\n{}", "{}/* c */", "'a'", "{a:1}", R"({"a":1,})", "[1,]", "[1}", R"({"a":1])",
    // Numbers no double holds
    "1e400", "-1e400", "1e999999999999", "1.7976931348623159e308", std::string(310, '9'),
    // Texts that are not characters
    R"("\u12")", R"("\ud800")", R"("\ud800\ud800")", R"("\ude00\ud83d")", R"("\uD83D\n")", "\"\n\"", "\"\0\""s,
    "\"\xC3\"", "\"\xC0\xAF\"", "\"\xED\xA0\x80\"", "{\"\xFF\":1}",
    // Too deep
    emboites(513, "[", "", "]"), emboites(513, "{\"a\":", "1", "}"), std::string(1'000'000, '['),
    repeter(1'000'000, "{\"a\":"), "[" + emboites(512, "[", "", "]") + "]"};

std::string apercu(const std::string& texte) { return testing::PrintToString(texte.substr(0, 100)); }

TEST(LectureJSON, AccepteEtRelitCeQuElleEcrit) {
  for (const auto& [texte, compact] : acceptes) {
    const auto lu = LectureJSON::valeur(texte);
    ASSERT_TRUE(lu) << apercu(texte);
    EXPECT_EQ(EcritureJSON::compacte(*lu), compact) << apercu(texte);
    EXPECT_EQ(LectureJSON::valeur(EcritureJSON::lisible(*lu).value()), lu) << apercu(texte);
    EXPECT_EQ(LectureJSON::objet(texte).has_value(), lu->is_object()) << apercu(texte);
    EXPECT_TRUE(LectureJSON::booleenDeTete(texte, "ok").lisible) << apercu(texte);
  }
}

TEST(LectureJSON, Refuse) {
  for (const auto& texte : refuses) {
    EXPECT_FALSE(LectureJSON::valeur(texte)) << apercu(texte);
    EXPECT_FALSE(LectureJSON::booleenDeTete(texte, "ok").lisible) << apercu(texte);
    for (const auto& cles : {std::vector<std::string_view>{}, {"ok"}})  // built, or read and left out
      EXPECT_FALSE(LectureJSON::objet(R"({"ok":true,"a":)" + texte + "}", {cles})) << apercu(texte);
  }
  const std::string entier = R"({"é\n":[true,null,-1.5e3,"\ud83d\ude00"],"b":{"c":[]}})";
  for (std::size_t n = 0; n < entier.size(); ++n)
    EXPECT_FALSE(LectureJSON::objet(entier.substr(0, n))) << entier.substr(0, n);
}

// The parser hands out long texts in parts; an escape may fall on either side of every border.
TEST(LectureJSON, TextesPlusLongsQuUnMorceau) {
  for (const std::size_t taille : {240u, 1000u, 2030u, 4080u, 65520u})
    for (std::size_t avant = taille; avant < taille + 40; ++avant) {
      const auto texte =
          '"' + std::string(avant, 'x') + R"(é\ud83d\ude00\n\u00e9)" + std::string(taille, 'y') + '"';
      const auto lu = std::string(avant, 'x') + "é😀\né" + std::string(taille, 'y');
      EXPECT_EQ(LectureJSON::objet("{" + texte + ":[" + texte + "]}"), Json({{lu, {lu}}})) << avant;
      const std::string_view gardee = lu;
      EXPECT_EQ(LectureJSON::objet("{\"x\":" + texte + "," + texte + ":" + texte + "}", {{&gardee, 1}}),
                Json({{lu, lu}}))
          << avant;
      EXPECT_EQ(LectureJSON::booleenDeTete("{" + texte + ":true}", lu).valeur, true) << avant;
    }
}

TEST(LectureJSON, NeGardeQueLesMembresVoulus) {
  const std::vector<std::string_view> cles{"a", "b"};
  const std::pair<const char*, const char*> cas[] = {
      {R"({"c":1,"a":2,"d":"é\n","e":-1.5,"f":null,"g":true,"h":18446744073709551615})", R"({"a":2})"},
      {R"({"c":{"a":1,"d":[{"a":[]}]},"b":3})", R"({"b":3})"},
      {R"({"a":[{"c":[],"b":[1,{}]},{"c":{}},"c",4],"c":{}})", R"({"a":[{"b":[1,{}]},{},"c",4]})"},
      {R"({"a":1,"a":{"c":2,"\u0062":1},"aa":1,"":1})", R"({"a":{"b":1}})"},
  };
  for (const auto& [texte, garde] : cas)
    EXPECT_EQ(LectureJSON::objet(texte, {cles}), LectureJSON::valeur(garde)) << texte;
  EXPECT_EQ(LectureJSON::objet(R"({"c":{"a":1},"b":{"c":[{"a":2,"d":3}]},"a":4})", {cles, true}),
            LectureJSON::valeur(R"({"b":{"c":[{"a":2,"d":3}]},"a":4})"));
  EXPECT_FALSE(LectureJSON::objet("[]", {cles}));
}

TEST(LectureJSON, BooleenDeTete) {
  const std::pair<const char*, std::optional<bool>> cas[] = {
      {R"( {"a":[1,{"ok":false}],"ok":true,"z":{"ok":false}} )", true},
      {R"({"ok":true,"o\u006b":false})", false},
      {R"({"ok":true,"\u006fk":1})", {}},
      {R"({"ok":true,"ok":[]})", {}},
      {R"({"ok":"true","OK":true,"ok ":true,"o":true,"okk":true,"":true})", {}},
      {R"([{"ok":true}])", {}}};
  for (const auto& [texte, valeur] : cas)
    EXPECT_EQ(LectureJSON::booleenDeTete(texte, "ok").valeur, valeur) << texte;
}

TEST(LectureIndulgente, MoitiesDePaires) {
  const std::pair<const char*, const char*> cas[] = {
      {R"("\ud83c")", "\uFFFD"},
      {R"("\uDe00\ud83d\ud83d\ude00\ud83dx")", "\uFFFD\uFFFD😀\uFFFDx"},
      {R"("\\ud83c\\\ud83c\"\ud83c")", "\\ud83c\\\uFFFD\"\uFFFD"},
  };
  for (const auto& [texte, lu] : cas) {
    EXPECT_EQ(LectureIndulgente::valeur(texte), Json(lu)) << texte;
    EXPECT_FALSE(LectureJSON::valeur(texte)) << texte;
  }
  for (const char* refuse : {R"("\ud83)", R"("\ud83c)", R"(\ud83c)", "\"\\ud83c\xFF\"", R"("\ud83cz\u+12c")"})
    EXPECT_FALSE(LectureIndulgente::valeur(refuse)) << refuse;
}

TEST(LectureIndulgente, ChaqueObjetEntier) {
  const struct {
    std::string texte;
    std::vector<std::string> objets;
    bool intacts = true;
  } cas[] = {
      {"", {}},
      {R"(Soit {x} ou {} : {"a":1,} puis [{ "b":[2,],"c":{"d":3}}])",
       {R"({"a":1})", R"({"b":[2],"c":{"d":3}})"}},
      {R"({"a":"{\"b\":1}","c":"\ud83c"}{"d":")", {R"({"a":"{\"b\":1}","c":"�"})"}, false},
      {R"({"a":{"b":1},"c)", {R"({"b":1})"}, false},
      {R"({"a"} {"b":1})", {R"({"b":1})"}, false},
      {R"({"a":1,,"b":{"c":2}})", {R"({"c":2})"}, false},
  };
  for (const auto& c : cas) {
    std::vector<std::string> objets;
    const auto voir = [&](const Json& objet) {
      objets.push_back(EcritureJSON::compacte(objet).value());
      return true;
    };
    EXPECT_EQ(LectureIndulgente::chaqueObjet(c.texte, voir), c.intacts) << c.texte;
    EXPECT_EQ(objets, c.objets) << c.texte;
  }
}

// What it would cost to try each brace of a hostile text, of which an honest object is the end.
TEST(LectureIndulgente, RenonceQuandLesLecturesVainesCoutentTrop) {
  const auto lus = [](std::string_view avant, std::size_t fois) {
    int n = 0;
    LectureIndulgente::chaqueObjet(repeter(fois, avant) + R"({"z":1})", [&](const Json&) {
      ++n;
      return true;
    });
    return n;
  };
  EXPECT_EQ(lus(R"({"a":)", LectureIndulgente::lecturesMax), 1);
  EXPECT_EQ(lus(R"({"a":)", 10'000), 0);
  EXPECT_EQ(lus("{", 1'000'000), 1);
}

}  // namespace
}  // namespace tarnavelle
