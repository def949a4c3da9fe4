// The voice session over its real transport, held with a server of another library.
#include <gtest/gtest.h>

#include "Reseau/ServeurEtranger.hpp"
#include "Voix/HandlersNotes.hpp"
#include "VoixReseau/OuvrirRealtime.hpp"

namespace tarnavelle {
namespace {

using essai::Journal;
using essai::ServeurEtranger;
using Lignes = std::vector<std::string>;

/// Who holds a session, and writes down what it is told.
struct Proprietaire : std::enable_shared_from_this<Proprietaire> {
  /// Opens a session with the scenario that the model's name tells.
  void ouvrir(const char* serveur, const RealtimeProvider& preset, const std::string& modele) {
    RealtimeClient::Reglages reglages{.provider = preset, .voice = "marin", .handlers = handlers()};
    reglages.provider.endpoint = ServeurEtranger::commun().url(serveur, "/v1/realtime");
    reglages.profil = ProfilEcouteVoix::casque();
    const auto ouverte = ouvrirRealtime({.model = modele, .apiKey = "cle-secrete"}, reglages);
    ASSERT_TRUE(ouverte) << ouverte.raison();
    const std::lock_guard garde(verrou);
    client = *ouverte;
  }

  std::shared_ptr<RealtimeClient> session() {
    const std::lock_guard garde(verrou);
    return client;
  }

  /// They keep nobody alive: who holds the session is not held by it.
  RealtimeClient::Handlers handlers() {
    auto h = essai::handlersVers([faible = weak_from_this()](const std::string& ligne) {
      const auto moi = faible.lock();
      if (!moi) return;
      moi->journal.noter(ligne);
      if (const auto client_ = moi->session(); client_ && ligne == moi->fermerA) client_->close();
    });
    h.onTrame = nullptr;
    return h;
  }

  Journal journal;
  std::string fermerA;  ///< the line on which it closes, from inside the handler
  std::mutex verrou;
  std::shared_ptr<RealtimeClient> client;
};

TEST(RealtimeReel, TientUneSessionJusquALaChute) {
  for (const auto& [preset, modele] :
       {std::pair(&RealtimeProvider::openai(), "openai-chute"), {&RealtimeProvider::grok(), "xai-chute"}}) {
    SCOPED_TRACE(modele);
    const auto qui = std::make_shared<Proprietaire>();
    qui->ouvrir("tls", *preset, modele);
    EXPECT_EQ(qui->journal.attendre(1), Lignes{"pret"});
    const auto client = qui->session();
    for (int i = 0; i < 3; ++i) client->appendAudio(std::string(1 << 20, 'A'));
    Lignes attendues = {"pret",   "parle",          "se tait",        "item item_1", "dit ouvre tout",
                        "son 48", "appel focus{}a", "appel focus{}b", "usage 7",     "fini"};
    EXPECT_EQ(qui->journal.attendre(attendues.size()), attendues);
    client->sendToolResult({.callID = "a", .output = "bon"});
    client->envoyer(RealtimeRequest::majDetectionDeTour(ProfilEcouteVoix::hautParleurs(), preset->dialecte));
    for (const char* ligne :
         {"pret", "erreur la connexion a été coupée", "fermeture la connexion a été coupée"})
      attendues.emplace_back(ligne);
    EXPECT_EQ(qui->journal.attendre(attendues.size()), attendues);
    const Json vu = ServeurEtranger::commun().rapport(std::string("/v1/realtime?model=") + modele);
    EXPECT_EQ(vu.at("recus").size(), 7U);
    EXPECT_EQ(vu["recus"][1], std::to_string((1 << 20) + 47)) << "the audio, by its length";
    EXPECT_EQ(vu.at("entetes").at("authorization"), "Bearer cle-secrete");
  }
}

TEST(RealtimeReel, UnRefusSeDitSansLaCle) {
  const std::string ici = ServeurEtranger::commun().url("tls", "/refus/401"), local = "wss://localhost/";
  const std::string cite =
      "le serveur a refusé la connexion (HTTP 401) : {\"error\":\"Incorrect API key provided: ….\"}";
  const std::string adresse = "l'adresse du service vocal est illisible", cle = "la clé du fournisseur ";
  const std::tuple<const char*, std::string, std::string> cas[] = {
      {"cle-secrete", ici, ""},
      {"cle\nsecrete", local, cle + "contient un caractère de contrôle : elle n'est pas envoyée"},
      {"", local, cle + "manque"},
      {"cle", "wss://[", adresse},
      {"cle", "https://localhost/", adresse},
  };
  for (const auto& [apiKey, endpoint, attendu] : cas) {
    const auto qui = std::make_shared<Proprietaire>();
    RealtimeClient::Reglages reglages{.provider = RealtimeProvider::openai(), .handlers = qui->handlers()};
    reglages.provider.endpoint = endpoint;
    const auto ouverte = ouvrirRealtime({"m", apiKey}, std::move(reglages));
    EXPECT_EQ(ouverte ? "" : ouverte.raison(), attendu);
    const auto lignes =
        ouverte ? Lignes{"refus 401,,,Incorrect API key provided: ….", "erreur " + cite, "fermeture " + cite}
                : Lignes{};
    EXPECT_EQ(qui->journal.attendre(lignes.size()), lignes);
  }
}

/// Closed at every moment of a session: from this thread, from another, inside a handler; or let go.
TEST(RealtimeReel, MilleSessionsNeLaissentRien) {
  ServeurEtranger::commun();
  const auto fils = essai::compter("task"), descripteurs = essai::compter("fd");
  for (int i = 0; i < 1000; ++i) {
    const auto qui = std::make_shared<Proprietaire>();
    if (i % 4 == 0) qui->fermerA = "pret";
    qui->ouvrir(i % 8 < 4 ? "clair" : "tls", RealtimeProvider::openai(), "openai-reste");
    const auto attendre = [i] { std::this_thread::sleep_for(std::chrono::microseconds(i * 37 % 8000)); };
    if (i % 4 == 0) {
      EXPECT_EQ(qui->journal.attendre(1), Lignes{"pret"});
    } else if (i % 4 == 1) {
      attendre();
    } else if (i % 4 == 2) {
      std::thread autre([&] { attendre(), qui->session()->close(); });
      for (int n = 0; n < 50; ++n) qui->session()->appendAudio(std::string(10000, 'A'));
      autre.join();
    }
  }
  EXPECT_LE(essai::retomber("task", fils), fils);
  EXPECT_LE(essai::retomber("fd", descripteurs), descripteurs);
}

}  // namespace
}  // namespace tarnavelle
