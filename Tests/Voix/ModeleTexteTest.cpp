#include "VoixReseau/ModeleTexte.hpp"

#include <gtest/gtest.h>

#include "Reseau/PairTCP.hpp"

namespace tarnavelle {
namespace {

using essai::PairTCP;

TEST(ModeleTexte, DonneUnVerdictOuDitPourquoi) {
  const std::string corps =
      R"({"choices":[{"message":{"content":"{\"adressee\":true,\"commandes\":[{\"action\":\"etat\"}]}"}}]})";
  PairTCP service({PairTCP::envoyer("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(corps.size()) +
                                    "\r\n\r\n" + corps),
                   PairTCP::envoyer("HTTP/1.1 401 Non\r\nContent-Length: 0\r\n\r\n")});
  const RequeteIntentions::Demande demande{.monde = {}, .clis = {}, .phrase = "où en est-on ?"};
  const auto demander = [&](const std::string& url) {
    return ModeleTexte({.url = url, .cle = "c", .modele = "m"}).demander(demande);
  };
  const auto verdict = demander(service.url());
  ASSERT_TRUE(verdict) << verdict.raison();
  EXPECT_EQ(verdict->teneur, TeneurReponse::demande);
  EXPECT_EQ(demander(service.url()).raison(),
            "Le modèle de texte ne répond pas : la clé est refusée. Vérifiez TARNAVELLE_TEXTE_CLE.");
  EXPECT_EQ(demander("http://127.0.0.1:1").raison(),
            "Le modèle de texte est injoignable : le serveur n'accepte pas la connexion.");
  EXPECT_EQ(demander("h").raison(), "L'adresse du modèle de texte n'est pas lisible.");
}

}  // namespace
}  // namespace tarnavelle
