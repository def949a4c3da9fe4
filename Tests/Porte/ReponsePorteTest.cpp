#include "Porte/ReponsePorte.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "Socle/EcritureJSON.hpp"

namespace tarnavelle {
namespace {

using P = PorteJSON;

TEST(ReponsePorte, LectureEtEcriture) {
  struct {
    const char* texte;
    ReponsePorte reponse;
    const char* ecrite;
  } const cas[] = {
      {R"({"ok":true})", ReponsePorte::succes(), R"({"ok":true})"},
      {R"({"ok":false})", {}, R"({"ok":false})"},
      {R"({"ok":true,"data":null,"spoken_text":null,"error":null,"autre":[1]})", ReponsePorte::succes(),
       R"({"ok":true})"},
      {R"({"ok":false,"error":"pas encore câblé"})", ReponsePorte::pasCable,
       R"({"error":"pas encore câblé","ok":false})"},
      {R"({"ok":false,"error":""})", ReponsePorte::echec(""), R"({"error":"","ok":false})"},
      {R"({"ok":true,"spoken_text":" C'est fait. ","data":"x"})",
       ReponsePorte::succes(" C'est fait. ", P{P::texte{"x"}}),
       R"({"data":"x","ok":true,"spoken_text":" C'est fait. "})"},
      {R"({"ok":true,"data":[1,2.5,"x",null,true,{}]})",
       ReponsePorte::succes({}, P{P::tableau{{P{P::entier{1}}, P{P::reel{2.5}}, P{P::texte{"x"}}, P{P::nul{}},
                                              P{P::bool_{true}}, P{P::objet{}}}}}),
       R"({"data":[1,2.5,"x",null,true,{}],"ok":true})"},
      {R"({"ok":false,"data":{"b":[[]],"a":{"é":false}},"spoken_text":"s","error":"e"})",
       {.ok = false,
        .spoken_text = "s",
        .data = P{P::objet{
            {{"a", P{P::objet{{{"é", P{P::bool_{false}}}}}}}, {"b", P{P::tableau{{P{P::tableau{}}}}}}}}},
        .error = "e"},
       R"({"data":{"a":{"é":false},"b":[[]]},"error":"e","ok":false,"spoken_text":"s"})"},
  };
  for (const auto& c : cas) {
    EXPECT_TRUE(ReponsePorte::lire(c.texte) == c.reponse) << c.texte;
    EXPECT_EQ(EcritureJSON::compacte(c.reponse.json()), c.ecrite) << c.texte;
    EXPECT_TRUE(ReponsePorte::lire(c.ecrite) == c.reponse) << c.ecrite;
  }
  for (const char* refusee :
       {"", "true", "[]", R"([{"ok":true}])", "{}", R"({"error":"e"})", R"({"ok":null})", R"({"ok":1})",
        R"({"ok":"true"})", R"({"OK":true})", R"({"ok":true,"error":3})", R"({"ok":true,"error":["e"]})",
        R"({"ok":true,"spoken_text":false})", R"({"ok":true,"spoken_text":{}})", R"({"ok":true)",
        R"({"ok":true} x)", R"({"ok":true,"data":1e400})"})
    EXPECT_FALSE(ReponsePorte::lire(refusee)) << refusee;
}

TEST(PorteJSON, NombresEtBooleens) {
  constexpr auto max = std::numeric_limits<std::int64_t>::max();
  constexpr auto min = std::numeric_limits<std::int64_t>::min();
  struct {
    const char* texte;
    P valeur;
  } const cas[] = {
      {"3", {P::entier{3}}},
      {"3.0", {P::entier{3}}},
      {"3e2", {P::entier{300}}},
      {"3.5", {P::reel{3.5}}},
      {"-0.29", {P::reel{-0.29}}},
      {"1", {P::entier{1}}},
      {"true", {P::bool_{true}}},
      {"0", {P::entier{0}}},
      {"false", {P::bool_{false}}},
      {"9007199254740993", {P::entier{9007199254740993}}},
      {"9223372036854775807", {P::entier{max}}},
      {"-9223372036854775808", {P::entier{min}}},
      {"9223372036854775808", {P::reel{9223372036854775808.0}}},
      {"18446744073709551615", {P::reel{18446744073709551615.0}}},
      {"1e300", {P::reel{1e300}}},
      {"-1e19", {P::reel{-1e19}}},
  };
  for (const auto& c : cas) {
    const auto lue = P::depuis(LectureJSON::valeur(c.texte).value());
    EXPECT_TRUE(lue == c.valeur) << c.texte;
    EXPECT_TRUE(P::depuis(c.valeur.json()) == c.valeur) << c.texte;
  }
  EXPECT_FALSE(P::depuis(Json(Json::value_t::discarded)));
  EXPECT_FALSE(P::depuis(Json{{"a", {1, Json::binary({1})}}}));
}

TEST(ComptesRendusVoix, PorteDit) {
  struct {
    ReponsePorte reponse;
    const char* phrase;
  } const cas[] = {
      {ReponsePorte::succes(" Merlin est au centre.\n"), "Merlin est au centre."},
      {ReponsePorte::succes(" \u00A0\n\u2028"), "C'est fait sur le Mac."},
      {ReponsePorte::succes(), "C'est fait sur le Mac."},
      {{.ok = true, .spoken_text = {}, .data = {}, .error = "e"}, "C'est fait sur le Mac."},
      {ReponsePorte::echec("\tcible inconnue "), "Le Mac a refusé : cible inconnue"},
      {ReponsePorte::echec(" "), "Tarnavelle ne répond pas là-bas."},
      {{.ok = false, .spoken_text = "s", .data = {}, .error = {}}, "Tarnavelle ne répond pas là-bas."},
  };
  for (const auto& c : cas) EXPECT_EQ(ComptesRendusVoix::porteDit(c.reponse), c.phrase);
}

}  // namespace
}  // namespace tarnavelle
