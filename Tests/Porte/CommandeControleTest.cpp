#include "Porte/CommandeControle.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace tarnavelle {
namespace {

using C = CommandeControle;

TEST(CommandeControle, NomCanonique) {
  const std::pair<const char*, const char*> cas[] = {
      {"  Spawn-Agent \n", "pondre_agent"},
      {"\u00A0\u2028etat\u0085\t", "etat"},
      {"ÉTAT scene", "état scene"},
      {"_etat-", "_etat_"},
  };
  for (const auto& [action, nom] : cas) EXPECT_EQ(C::canonique(action), nom) << "«" << action << "»";
}

// Where each declared argument goes, and what it is without, stands in the table's golden document.
TEST(CommandeControle, Decodage) {
  const std::tuple<const char*, const char*, CommandeControle> cas[] = {
      {"fermer", R"({"target":"Merlin","cible":"Milan"})", {C::fermer{"Milan"}}},
      {"fermer", R"({"target":"Merlin","cible":""})", {C::fermer{"Merlin"}}},
      {"fermer_tout", R"({"sauf":"A; B","except":["C"]})", {C::fermerTout{"A, B, C"}}},
      {"ranger", R"({"plan":"scene","cible":"Merlin"})", {C::ranger{"scene", "Merlin"}}},
      {"tidy", R"({"vedette":"Milan","cible":"Merlin"})", {C::ranger{"", "Milan"}}},
      {"dicter", R"({"texte":"t","agent":"a","valider":"non"})", {C::dicter{"a", "t", false}}},
      {"lire-terminal", R"({"agent":"a","depuis-prompt":true})", {C::lireTerminal{"a", false}}},
      {"nommage", R"({"noms":"","call_signs":"Mal,Zoe"})", {C::nommage{{"Mal", "Zoe"}}}},
      {"nommage", R"({"noms":"Mal","call_signs":"Zoe"})", {C::nommage{{"Mal"}}}},
      {" Ouvre-Tout\n", R"({"cible":"x"})", {C::inconnue{"Ouvre-Tout"}}},
  };
  for (const auto& [action, arguments, attendue] : cas)
    EXPECT_TRUE(C::decoder(action, arguments) == attendue) << action << " " << arguments;
}

// What the client's own tests pass through, apart.
TEST(CommandeControle, ChargeDUneLigneDeCommande) {
  const std::tuple<const char*, MotsCLI, const char*> cas[] = {
      {"souffler", {{"b"}, {{"agent", "A"}}, {}}, R"({"action":"souffler","agent":"A","texte":"b"})"},
      {"type", {{}, {{"valider", "FALSE"}}, {"valider"}}, R"({"action":"dicter","valider":false})"},
      {"type", {{}, {{"valider", "non"}}, {}}, R"({"action":"dicter","valider":true})"},
      {"wait",
       {{}, {{"timeout_s", "-3"}, {"timeout-s", "9"}}, {}},
       R"({"action":"attendre","timeout_s":"-3"})"},
      {"capture", {{}, {{"TIMEOUT", "1"}}, {"cible", "inconnu"}}, R"({"action":"capture"})"},
      {"lire-terminal", {{}, {}, {"depuis-prompt"}}, R"({"action":"lire_terminal","depuis_prompt":true})"},
      {"Ouvre-Tout", {{"a"}, {{"b", "c"}}, {"d"}}, R"({"action":"ouvre_tout"})"},
  };
  for (const auto& [verbe, mots, charge] : cas)
    EXPECT_EQ(C::chargeGenerique(verbe, mots), Json::parse(charge)) << verbe;
  EXPECT_EQ(Json(C::drapeauxBooleens("Read-Terminal")), Json({"depuis-prompt", "depuis_prompt"}));
}

// Whatever a model or the network sends as arguments, every field takes its default.
TEST(CommandeControle, ArgumentsIllisibles) {
  for (const std::string texte :
       {"", "[\"cible\"]", "{\"cible\":\"\xC3\"}",
        R"({"cible":{"cible":"x"},"texte":["x"],"nombre":1e300,"timeout_s":-1e300,"valider":null,"sauf":3})"})
    for (const OutilVoix& outil : C::outilsPorte())
      EXPECT_TRUE(C::decoder(outil.nom, texte) == C::decoder(outil.nom, "{}")) << outil.nom << " " << texte;
}

std::string membre(const char* cle, const char* valeur) {
  return std::string("{\"") + cle + "\":" + valeur + "}";
}

TEST(CommandeControle, LectureDUnEntier) {
  const std::pair<const char*, std::int64_t> cas[] = {
      {"-7.9", -7},
      {"0.99", 0},
      {"9223372036854775807", INT64_MAX},
      {"-9223372036854775808.0", INT64_MIN},
      {"9223372036854775807.0", INT64_MAX},
      {"9007199254740993.0", 9007199254740993},
      {"-900719925474099300E-2", -9007199254740993},
      {"0.00922337203685477580700e21", INT64_MAX},
      {"9007199254740993.5", 9007199254740993},
      {R"("+7")", 7},
      {R"(" \t\u00a0-007\u2003")", -7},
      {R"("9223372036854775807")", INT64_MAX},
      {R"("-9223372036854775808")", INT64_MIN},
  };
  for (const auto& [valeur, entier] : cas) EXPECT_EQ(C::entier("n", membre("n", valeur), 42), entier) << valeur;
  for (const char* valeur :
       {"9223372036854775808", "9223372036854775808.0", "-9223372036854775809", "-9223372036854775809.0",
        "1e19", "1e300", R"("9223372036854775808")", R"("-9223372036854775809")", R"("7\n")", R"("+-7")",
        R"("+")", R"("")", R"("7 8")", R"("0x10")", "true", "null", "[7]"})
    EXPECT_EQ(C::entier("n", membre("n", valeur), 42), 42) << valeur;
}

TEST(CommandeControle, LectureDUneListe) {
  const std::pair<const char*, std::vector<std::string>> cas[] = {
      {R"(["Mal","Zoe, Wash"])", {"Mal", "Zoe", "Wash"}},
      {R"("Mal\r\n\n Zoe\u00a0")", {"Mal", "Zoe"}},
      {R"("Grand Duc,,;\n Milan noir ")", {"Grand Duc", "Milan noir"}},
      {R"([1,"Mal",null,["Zoe"],{"a":"b"},true,"Wash"])", {"Mal", "Wash"}},
      {R"("[\"Mal\"]")", {"[\"Mal\"]"}},
      {R"({"a":"Mal"})", {}},
  };
  for (const auto& [valeur, textes] : cas)
    EXPECT_EQ(C::listeTextes("noms", membre("noms", valeur)), textes) << valeur;
}

TEST(CommandeControle, LectureDUnBooleenEtDUnTexte) {
  const auto lu = [](const char* valeur, bool defaut) { return C::booleen("b", membre("b", valeur), defaut); };
  for (const char* vrai : {"true", "0.5", "-3", R"(" Oui\t")", R"("YES")", R"("1")", R"("true")"})
    EXPECT_TRUE(lu(vrai, false)) << vrai;
  for (const char* faux : {"false", "0", "-0.0", R"("\u00a0NON ")", R"("no")", R"("False")", R"("0")"})
    EXPECT_FALSE(lu(faux, true)) << faux;
  for (const char* autre : {R"("non\n")", R"("ouais")", R"("2")", R"("")", "null", "[true]"})
    EXPECT_TRUE(lu(autre, true) && !lu(autre, false)) << autre;
  EXPECT_EQ(C::texte("t", R"({"t":" é\n\u0000"})"), std::string(" é\n\0", 5));
  EXPECT_EQ(C::texte("t", R"({"t":7})"), "");
}

}  // namespace
}  // namespace tarnavelle
