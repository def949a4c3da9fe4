// Lines given to the dispatcher, and doors that answer anything; the real program is driven from outside.
#include "Repartiteur.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "Porte/GuideAgent.hpp"
#include "Reseau/PairTCP.hpp"

namespace tarnavelle {
namespace {

using essai::Connexion;
using essai::PairTCP;
using namespace std::chrono_literals;

constexpr BornesHTTP breves{.attente = 1s, .vie = 3s, .corpsMax = 1 << 20};

/// A world whose environment is a table that the test may change between calls.
struct Monde {
  Environnement table;
  Repartiteur repartiteur{
      {.environnement = [this] { return Variables(table); }, .binaireMCP = "/pont", .bornes = breves}};

  std::string appeler(std::string_view outil, Json arguments = Json::object()) {
    const Json params = {{"name", outil}, {"arguments", std::move(arguments)}};
    const auto appel = Json{{"id", 1}, {"method", "tools/call"}, {"params", params}}.dump();
    const auto contenu = Json::parse(repartiteur.repondre({appel}).value())["result"];
    return (contenu["isError"] ? "KO " : "ok ") + contenu["content"][0]["text"].get<std::string>();
  }
};

PairTCP::Script repondre(int statut, std::string corps) {
  return [=](Connexion& c) {
    while (!c.lireRequete().empty())
      c.envoyer("HTTP/1.1 " + std::to_string(statut) + " X\r\nContent-Length: " + std::to_string(corps.size()) +
                "\r\n\r\n" + corps);
  };
}

TEST(Pont, RendLaReponseDeLaPorteTelleQuelle) {
  const std::pair<int, std::string> cas[] = {{200, R"(ok {"ok" : true, "spoken_text":"é/"})"},
                                             {401, R"(KO {"ok":false,"error":"non"})"},
                                             {500, R"(KO [{"ok":true}])"},
                                             {200, "KO "}};
  for (const auto& [statut, rendu] : cas) {
    PairTCP porte({repondre(statut, rendu.substr(3))});
    Monde monde{{{"TARNAVELLE_CONTROL_URL", porte.url()}}};
    EXPECT_EQ(monde.appeler("trv_etat", Json::array({1})), rendu);  // arguments that are no object are none
  }
  PairTCP porte({repondre(503, "\xff\xfe")});
  Monde monde{{{"TARNAVELLE_CONTROL_URL", porte.url()}}};
  EXPECT_EQ(monde.appeler("etat"), R"(KO {"error":"La porte n'a pas répondu (HTTP 503).","ok":false})");
}

TEST(Pont, PosteLeVerbeLesArgumentsEtLePorteur) {
  std::promise<std::string> recue;
  PairTCP porte({[&](Connexion& c) {
    recue.set_value(c.lireRequete());
    c.envoyer("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}");
  }});
  Monde monde{{{"TARNAVELLE_CONTROL_URL", porte.url()}, {"TARNAVELLE_NODE_ID", "  merlin "}}};
  monde.appeler("trv_Pipe-Done", {{"note", "a/é"}, {"action", "fermer"}});
  const auto texte = recue.get_future().get();
  EXPECT_NE(texte.find("\r\nAuthorization: Bearer \r\n"), std::string::npos) << texte;
  EXPECT_NE(texte.find("\r\nContent-Type: application/json\r\n"), std::string::npos) << texte;
  EXPECT_EQ(texte.substr(texte.find("\r\n\r\n") + 4), R"({"action":"fini","agent":"merlin","note":"a/é"})");
}

TEST(Pont, RendLeGuideSansLaPorte) {
  Monde monde{{{"TARNAVELLE_NODE_ID", "merlin"}}};
  const auto guide = GuideAgent::markdown(
      GuideAgent::Contexte::depuisEnvironnement(monde.table, {.binaireCtl = "", .binaireMCP = "/pont"}));
  EXPECT_EQ(monde.appeler("trv_guide", {{"cible", "x"}}), "ok " + guide);
}

TEST(Pont, UneLigneTropLongueEstIllisible) {
  EXPECT_EQ(Monde().repartiteur.repondre({.texte = {}, .tropLongue = true}),
            R"({"error":{"code":-32700,"message":"JSON illisible"},"id":null,"jsonrpc":"2.0"})");
}

TEST(Pont, TrouveUnCockpitReparti) {
  const std::string sansReponse = R"(KO {"error":"La porte n'a pas répondu (HTTP -1).","ok":false})";
  Monde monde;
  EXPECT_EQ(monde.appeler("trv_etat"),
            R"(KO {"error":"Porte introuvable : l'app Tarnavelle tourne-t-elle, la porte de commande est-elle )"
            R"(ouverte ?","ok":false})");
  {
    PairTCP porte({repondre(200, R"({"ok":true,"n":1})")});
    monde.table = {{"TARNAVELLE_CONTROL_URL", porte.url()}};
    EXPECT_EQ(monde.appeler("etat"), R"(ok {"ok":true,"n":1})");
    monde.table["TARNAVELLE_CONTROL_TOKEN"] = "a\nb";
    EXPECT_EQ(monde.appeler("etat"), sansReponse);
    monde.table.erase("TARNAVELLE_CONTROL_TOKEN");
    monde.table["TARNAVELLE_CONTROL_URL"] = "http://127.0.0.1:1";
  }
  EXPECT_EQ(monde.appeler("etat"), sansReponse);
  PairTCP porte({repondre(200, R"({"ok":true,"n":2})")});
  monde.table = {{"TARNAVELLE_CONTROL_URL", porte.url()}};
  EXPECT_EQ(monde.appeler("etat"), R"(ok {"ok":true,"n":2})");
}

}  // namespace
}  // namespace tarnavelle
