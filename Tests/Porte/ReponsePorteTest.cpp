#include "Porte/ReponsePorte.hpp"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>

#include "Socle/EcritureJSON.hpp"
#include "Socle/LectureJSON.hpp"

namespace tarnavelle {
namespace {

using P = PorteJSON;

TEST(ReponsePorte, LectureEtEcriture) {
  const std::tuple<const char*, ReponsePorte, const char*> cas[] = {
      {R"({"ok":true})", ReponsePorte::succes(), R"({"ok":true})"},
      {R"({"ok":true,"data":null,"spoken_text":null,"error":null,"autre":[1]})", ReponsePorte::succes(),
       R"({"ok":true})"},
      {R"({"ok":true,"spoken_text":" C'est fait. ","data":"x"})",
       ReponsePorte::succes(" C'est fait. ", P{P::texte{"x"}}),
       R"({"data":"x","ok":true,"spoken_text":" C'est fait. "})"},
      {R"({"ok":false,"data":{"b":[[],2.5,null],"a":{"é":false}},"spoken_text":"s","error":"e"})",
       {.ok = false,
        .spoken_text = "s",
        .data = P{P::objet{{{"a", P{P::objet{{{"é", P{P::bool_{false}}}}}}},
                            {"b", P{P::tableau{{P{P::tableau{}}, P{P::reel{2.5}}, P{P::nul{}}}}}}}}},
        .error = "e"},
       R"({"data":{"a":{"é":false},"b":[[],2.5,null]},"error":"e","ok":false,"spoken_text":"s"})"},
  };
  for (const auto& [texte, reponse, ecrite] : cas) {
    EXPECT_TRUE(ReponsePorte::lire(texte) == reponse) << texte;
    EXPECT_EQ(EcritureJSON::compacte(reponse.json()), ecrite) << texte;
  }
  for (const char* refusee :
       {"", R"([{"ok":true}])", R"({"error":"e"})", R"({"ok":null})", R"({"ok":1})", R"({"ok":"true"})",
        R"({"ok":true,"error":3})", R"({"ok":true,"spoken_text":{}})"})
    EXPECT_FALSE(ReponsePorte::lire(refusee)) << refusee;
}

TEST(PorteJSON, NombresEtBooleens) {
  const std::pair<const char*, P> cas[] = {
      {"3.0", {P::entier{3}}},
      {"1", {P::entier{1}}},
      {"true", {P::bool_{true}}},
      {"-9223372036854775808", {P::entier{INT64_MIN}}},
      {"9223372036854775807.0", {P::entier{INT64_MAX}}},
      {"9007199254740993.0", {P::entier{9007199254740993}}},
      {"1e18", {P::entier{1'000'000'000'000'000'000}}},
      {"9223372036854775808", {P::reel{9223372036854775808.0}}},
  };
  for (const auto& [texte, valeur] : cas) {
    EXPECT_TRUE(P::depuis(LectureJSON::valeur(texte).value()) == valeur) << texte;
    EXPECT_TRUE(P::depuis(valeur.json()) == valeur) << texte;
  }
  // Integers once they are doubles, and not before.
  for (const auto& [texte, valeur] :
       {std::pair{"9007199254740993.5", 9007199254740994.0}, {"-9223372036854775809", -9223372036854775808.0}})
    EXPECT_TRUE(P::depuis(LectureJSON::valeur(texte).value()) == P{P::reel{valeur}}) << texte;
  EXPECT_FALSE(P::depuis(Json(Json::value_t::discarded)));
  EXPECT_FALSE(P::depuis(Json{{"a", {1, Json::binary({1})}}}));
}

TEST(ComptesRendusVoix, PorteDit) {
  const std::pair<ReponsePorte, const char*> cas[] = {
      {ReponsePorte::succes(" Merlin est au centre.\n"), "Merlin est au centre."},
      {ReponsePorte::succes(" \u00A0\n\u2028"), "C'est fait sur le Mac."},
      {{.ok = true, .spoken_text = {}, .data = {}, .error = "e"}, "C'est fait sur le Mac."},
      {ReponsePorte::echec("\tcible inconnue "), "Le Mac a refusé : cible inconnue"},
      {ReponsePorte::echec(" "), "Tarnavelle ne répond pas là-bas."},
      {{.ok = false, .spoken_text = "s", .data = {}, .error = {}}, "Tarnavelle ne répond pas là-bas."},
  };
  for (const auto& [reponse, phrase] : cas) EXPECT_EQ(ComptesRendusVoix::porteDit(reponse), phrase);
}

}  // namespace
}  // namespace tarnavelle
