// The voice session over its real transport, held with a server of another library.
#include <gtest/gtest.h>

#include "Reseau/ServeurEtranger.hpp"
#include "Voix/HandlersNotes.hpp"
#include "Voix/ReconnexionRealtime.hpp"
#include "Voix/TransportWebSocketRealtime.hpp"

namespace tarnavelle {
namespace {

using essai::Journal;
using essai::ServeurEtranger;
using namespace std::chrono_literals;
using Lignes = std::vector<std::string>;

constexpr const char* chemin = "/v1/realtime";

/// Who holds a session as its documentation says: tool calls one at a time, each answered once.
struct Proprietaire : std::enable_shared_from_this<Proprietaire> {
  /// Opens a session in which the server plays `suite`.
  void ouvrir(const char* serveur, const RealtimeProvider& preset, const std::string& suite) {
    RealtimeClient::Reglages reglages{.provider = preset, .voice = "marin", .handlers = handlers()};
    reglages.provider.endpoint = ServeurEtranger::commun().url(serveur, chemin);
    reglages.profil = ProfilEcouteVoix::casque();
    auto ouverture = ouvrirRealtime({.model = modele(preset, suite), .apiKey = "cle-secrete"}, reglages);
    EXPECT_EQ(ouverture.refus, "");
    const std::lock_guard garde(verrou);
    client = ouverture.client;
  }

  static std::string modele(const RealtimeProvider& preset, const std::string& suite) {
    return std::string(valeurBrute(preset.dialecte)) + "-" + suite;
  }

  static Json rapport(const RealtimeProvider& preset, const std::string& suite) {
    return ServeurEtranger::commun().rapport(std::string(chemin) + "?model=" + modele(preset, suite));
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
      if (ligne == "fini") moi->repondre();
      moi->journal.noter(ligne);
      if (ligne != "pret" || !moi->fermerPret) return;
      if (const auto client_ = moi->session()) client_->close();
    });
    h.onTrame = nullptr;
    h.onToolCall = [faible = weak_from_this()](FileAppelsRealtime::Appel appel) {
      const auto moi = faible.lock();
      if (!moi) return;
      moi->journal.noter("appel", appel.callID);
      if (const auto premier = moi->appels.enfiler(std::move(appel)))
        moi->journal.noter("commence", premier->name);
    };
    return h;
  }

  /// The tools have all ended.
  void repondre() {
    const auto client_ = session();
    while (appels.courant) {
      const std::string fini = appels.courant->callID;
      const bool dernier = !appels.terminer();
      dernier ? client_->sendToolResult({.callID = fini, .output = "bon"})
              : client_->sendToolOutput({.callID = fini, .output = "bon"});
    }
  }

  Journal journal;
  FileAppelsRealtime appels;
  bool fermerPret = false;
  std::mutex verrou;
  std::shared_ptr<RealtimeClient> client;
};

/// The events' types, and for a tool's output its call.
Lignes genres(const Json& recus) {
  Lignes liste;
  for (const auto& recu : recus) {
    const Json objet = Json::parse(recu.get<std::string>());
    liste.push_back(objet.at("type"));
    if (objet.contains("item")) liste.back() += " " + objet["item"].value("call_id", "");
  }
  return liste;
}

TEST(RealtimeReel, TientUneSessionDansLesDeuxDialectes) {
  for (const char* serveur : {"clair", "tls"})
    for (const auto* preset : {&RealtimeProvider::openai(), &RealtimeProvider::grok()}) {
      SCOPED_TRACE(preset->id + " " + serveur);
      const auto qui = std::make_shared<Proprietaire>();
      qui->ouvrir(serveur, *preset, "fin");
      EXPECT_EQ(qui->journal.attendre(1), Lignes{"pret"});
      const auto client = qui->session();
      for (int i = 0; i < 3; ++i) client->appendAudio(std::string(1 << 20, 'A'));
      Lignes attendues = {"pret",    "parle",          "se tait", "item item_1", "dit ouvre tout", "son 48",
                          "appel a", "commence focus", "son 48",  "appel b",     "appel c",        "usage 7",
                          "fini"};
      EXPECT_EQ(qui->journal.attendre(attendues.size()), attendues);
      client->envoyer(RealtimeRequest::majDetectionDeTour(ProfilEcouteVoix::hautParleurs(), preset->dialecte));
      attendues.emplace_back("pret");
      EXPECT_EQ(qui->journal.attendre(attendues.size()), attendues);
      client->close();
      const Json vu = Proprietaire::rapport(*preset, "fin");
      const Json& recus = vu.at("recus");
      EXPECT_EQ(genres({recus[0], recus[4], recus[5], recus[6], recus[7], recus[8]}),
                (Lignes{"session.update", "conversation.item.create a", "conversation.item.create b",
                        "conversation.item.create c", "response.create", "session.update"}));
      EXPECT_EQ(recus[1], std::to_string((1 << 20) + 47)) << "the audio, by its length";
      EXPECT_EQ(recus.size(), 9U);
      EXPECT_EQ(vu.at("code"), 1001);
      EXPECT_EQ(vu.at("entetes").at("authorization"), "Bearer cle-secrete");
      EXPECT_EQ(qui->journal.attendre(0), attendues);
    }
}

TEST(RealtimeReel, UneChuteSeReprend) {
  const auto qui = std::make_shared<Proprietaire>();
  const auto& preset = RealtimeProvider::openai();
  qui->ouvrir("tls", preset, "chute");
  qui->journal.attendre(1);
  const auto premiere = qui->session();
  for (int i = 0; i < 3; ++i) premiere->appendAudio("AAAA");
  qui->journal.attendre(13);
  premiere->envoyer(RealtimeRequest::majInstructions("Plus court.", preset.dialecte));
  const auto lignes = qui->journal.attendre(16);
  EXPECT_EQ(Lignes(lignes.begin() + 13, lignes.end()),
            (Lignes{"pret", "erreur la connexion a été coupée", "fermeture la connexion a été coupée"}));
  const auto decision = ReconnexionRealtime::decision({.message = "la connexion a été coupée", .tentative = 1});
  EXPECT_EQ(
      decision,
      (ReconnexionRealtime::Decision{ReconnexionRealtime::Decision::reconnecter{.delai = 1s, .tentative = 1}}));
  premiere->close();
  qui->ouvrir("tls", preset, "reste");
  EXPECT_EQ(qui->journal.attendre(17).back(), "pret");
  EXPECT_FALSE(premiere->estPrete());
  EXPECT_TRUE(qui->session()->estPrete());
  qui->session()->close();
}

TEST(RealtimeReel, UnRefusSeDitSansLaCle) {
  const struct {
    const char* nom;
    AccesRealtime acces;
    std::string endpoint;
    std::string refus;
    Lignes lignes;
  } cas[] = {
      {"refused",
       {"m", "cle-secrete"},
       ServeurEtranger::commun().url("tls", "/refus/401"),
       "",
       {"erreur le serveur a refusé la connexion (HTTP 401) : {\"error\":\"Incorrect API key provided: ….\"}"}},
      {"control character",
       {"m", "cle\nsecrete"},
       "wss://localhost/",
       "la clé du fournisseur contient un caractère de contrôle : elle n'est pas envoyée",
       {}},
      {"no key", {"m", ""}, "wss://localhost/", "la clé du fournisseur manque", {}},
      {"malformed", {"m", "cle"}, "wss://[", "l'adresse du service vocal est illisible", {}},
      {"not a WebSocket", {"m", "cle"}, "https://localhost/", "l'adresse du service vocal est illisible", {}},
  };
  for (const auto& c : cas) {
    SCOPED_TRACE(c.nom);
    const auto qui = std::make_shared<Proprietaire>();
    RealtimeClient::Reglages reglages{.provider = RealtimeProvider::openai(), .handlers = qui->handlers()};
    reglages.provider.endpoint = c.endpoint;
    const auto [client, refus] = ouvrirRealtime(c.acces, std::move(reglages));
    EXPECT_EQ(client == nullptr, !c.refus.empty());
    EXPECT_EQ(refus, c.refus);
    const auto lignes = qui->journal.attendre(c.lignes.size());
    EXPECT_EQ(Lignes(lignes.begin(), lignes.begin() + static_cast<std::ptrdiff_t>(c.lignes.size())), c.lignes);
    if (client) client->close();
  }
}

/// Closed at every moment of a session: from this thread, from another, inside a handler; or let go.
TEST(RealtimeReel, MilleSessionsNeLaissentRien) {
  ServeurEtranger::commun();
  const auto fils = essai::compter("task"), descripteurs = essai::compter("fd");
  for (int i = 0; i < 1000; ++i) {
    const auto qui = std::make_shared<Proprietaire>();
    qui->fermerPret = i % 4 == 0;
    qui->ouvrir(i % 8 < 4 ? "clair" : "tls", RealtimeProvider::openai(), "reste");
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
