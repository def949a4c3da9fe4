#include "Socle/EcritureJSON.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "Socle/LectureJSON.hpp"

namespace tarnavelle {
namespace {

// The other direction, and every number, is the round trip of LectureJSONTest.
TEST(EcritureJSON, StyleLisible) {
  const auto valeur = LectureJSON::valeur(R"({"b":[[],{"x/y":{}},"é"],"a":{"t":"\n"}})");
  EXPECT_EQ(EcritureJSON::lisible(valeur.value()), R"({
  "a" : {
    "t" : "\n"
  },
  "b" : [
    [],
    {
      "x/y" : {}
    },
    "é"
  ]
})");
}

TEST(EcritureJSON, CaracteresASCII) {
  const std::string courts = "\b\f\n\r\t\"\\";
  const std::string lettres = "bfnrt\"\\";
  for (int n = 0; n < 0x80; ++n) {
    const char c = static_cast<char>(n);
    char attendu[8] = {c};
    if (const auto i = courts.find(c); i != std::string::npos)
      std::snprintf(attendu, sizeof attendu, "\\%c", lettres[i]);
    else if (n < 0x20)
      std::snprintf(attendu, sizeof attendu, "\\u%04x", unsigned(n));
    // At every place of a block, in short texts and long ones, between characters of several bytes, and in a
    // key.
    for (std::size_t avant = 0; avant < 530; avant += avant == 34 ? 460 : 1) {
      const auto texte = std::string(avant, '/') + c + "é" + c + "€" + c;
      const auto ecrit = '"' + std::string(avant, '/') + attendu + "é" + attendu + "€" + attendu + '"';
      EXPECT_EQ(EcritureJSON::compacte({{texte, texte}}), "{" + ecrit + ":" + ecrit + "}");
    }
  }
  std::string echappes;
  for (int n = 0; n < 600; ++n, echappes += "\\u0001")
    EXPECT_EQ(EcritureJSON::compacte(Json(std::string(std::size_t(n), 1))), '"' + echappes + '"') << n;
}

TEST(EcritureJSON, SansFormeJSON) {
  std::string texte = "avant ";
  for (const std::string fautif : {"\x80", "\xC3", "\xC3z", "\xED\xA0\x80"})
    for (const std::size_t avant : {0u, 15u, 16u, 40u, 600u})
      for (const Json& valeur : {Json(std::string(avant, 'a') + fautif), Json({{fautif, 1}}),
                                 Json({1, {{"a", {{"b", fautif}}}}, "suite"})}) {
        EXPECT_EQ(EcritureJSON::compacte(valeur), std::nullopt);
        EXPECT_EQ(EcritureJSON::lisible(valeur), std::nullopt);
        EXPECT_FALSE(EcritureJSON::ajouter(texte, valeur));
      }
  EXPECT_EQ(EcritureJSON::compacte(Json(Json::value_t::discarded)), std::nullopt);
  EXPECT_EQ(EcritureJSON::compacte({1, Json::binary({1})}), std::nullopt);
  for (const double d : {std::nan(""), HUGE_VAL, -HUGE_VAL})
    EXPECT_EQ(EcritureJSON::compacte({{"a", {d}}}), std::nullopt) << d;
  EXPECT_TRUE(EcritureJSON::ajouter(texte, {{"a", 1}}));
  EXPECT_EQ(texte, R"(avant {"a":1})");
}

}  // namespace
}  // namespace tarnavelle
