#include "Voix/RequeteIntentions.hpp"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "Socle/LectureJSON.hpp"

namespace tarnavelle {
namespace {

TEST(AccesTexte, SeLitEtSeJuge) {
  EXPECT_FALSE(AccesTexte::lire({{"TARNAVELLE_TEXTE_CLE", "c"}}));
  const auto acces =
      AccesTexte::lire({{"TARNAVELLE_TEXTE_URL", " https://h/v1 "}, {"TARNAVELLE_TEXTE_MODELE", "m"}});
  EXPECT_EQ(acces, (AccesTexte{"https://h/v1", "", "m"}));
  const std::pair<AccesTexte, const char*> cas[] = {
      {{"", "", "m"}, "Donnez l'adresse du modèle de texte par TARNAVELLE_TEXTE_URL."},
      {{"https://h", "", ""}, "Donnez le nom du modèle de texte par TARNAVELLE_TEXTE_MODELE."},
      {{"https://h", "a\nb", "m"}, "La clé du modèle de texte contient un caractère de contrôle."},
      {{"h", "", "m"}, "L'adresse du modèle de texte n'est pas lisible."},
      {{"https://u:p@h", "", "m"}, "L'adresse du modèle de texte ne doit contenir ni nom ni mot de passe."},
      {{"http://127.0.0.1.h", "", "m"},
       "L'adresse du modèle de texte doit être en https:// (http:// n'est toléré que sur la machine même)."},
  };
  for (const auto& [acces_, refus] : cas) EXPECT_EQ(acces_.refus(), refus);
  for (const char* url :
       {"https://h/v1", "http://127.0.0.1:11434/v1", "http://LocalHost/v1/", "http://[::1]/v1"})
    EXPECT_FALSE((AccesTexte{url, "", "m"}.refus())) << url;
}

TEST(RequeteIntentions, Demande) {
  const auto requete = RequeteIntentions::requete(
      {"http://localhost/v1/", "secret", "m\xff"},
      {.monde = {}, .clis = {"claude"}, .adresse = AdresseVoix::microOuvert, .phrase = "ouvre \"claude\""});
  EXPECT_EQ(requete.url, "http://localhost/v1/chat/completions");
  EXPECT_EQ(requete.entetes.back(), (EnteteHTTP{"Authorization", "Bearer secret"}));
  const Json corps = *LectureJSON::objet(requete.corps);
  const Json attendu = {
      {"model", "m�"},
      {"stream", false},
      {"messages",
       {{{"role", "system"}, {"content", MoteurIntentions::prompt({}, {"claude"}, AdresseVoix::microOuvert)}},
        {{"role", "user"}, {"content", "ouvre \"claude\""}}}}};
  EXPECT_EQ(corps, attendu);
}

TEST(RequeteIntentions, LitLaReponse) {
  const AccesTexte acces{"https://h", "secret", "m"};
  const std::string debut = "Le modèle de texte ne répond pas : ";
  const std::tuple<int, const char*, std::string> cas[] = {
      {200, R"({"choices":[{"message":{"content":"{}"}}]})", "{}"},
      {200,
       R"({"choices":[{"message":{"content":[{"type":"thinking"},{"type":"text","text":"a"},{"text":"b"}]}}]})",
       "ab"},
      {200, R"({"choices":[{"message":{"content":null}}]})", debut + "sa réponse est vide."},
      {200, R"({"choices":[]})", debut + "sa réponse n'est pas lisible."},
      {200, R"({"choices":[3],"error":{"message":"plus rien"}})",
       debut + "sa réponse n'est pas lisible (« plus rien »)."},
      {401, R"({"error":{"message":"bad key secret\u001b[2J"}})",
       debut + "la clé est refusée. Vérifiez TARNAVELLE_TEXTE_CLE (« bad key …\\u001b[2J »)."},
      {404, "<html>",
       debut + "rien n'y répond à ce nom. Vérifiez TARNAVELLE_TEXTE_URL et TARNAVELLE_TEXTE_MODELE."},
      {429, R"({"error":"slow"})",
       debut + "trop de demandes, ou plus de crédit. Réessayez plus tard (« slow »)."},
      {500, "", debut + "il répond par une erreur 500."},
  };
  for (const auto& [statut, corps, attendu] : cas) {
    const auto lue = RequeteIntentions::reponse(acces, statut, corps);
    EXPECT_EQ(lue ? *lue : lue.raison(), attendu);
  }
}

}  // namespace
}  // namespace tarnavelle
