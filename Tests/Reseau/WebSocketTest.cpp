#include "Reseau/WebSocket.hpp"

#include <gtest/gtest.h>

#include "Reseau/FluxHTTP.hpp"
#include "Reseau/NomLent.hpp"
#include "Reseau/PairTCP.hpp"
#include "Reseau/ServeurEtranger.hpp"

namespace tarnavelle {
namespace {

using essai::Journal;
using essai::PairTCP;
using essai::ServeurEtranger;
using namespace std::chrono_literals;

RappelsCanal noterDans(const std::shared_ptr<Journal>& journal) {
  return {.surTexte = [journal](std::string_view texte) { journal->noter("texte", texte); },
          .surErreurEnvoi = [journal](const std::string& raison) { journal->noter("refus", raison); },
          .surRefus = [journal](int statut,
                                std::string_view corps) { journal->noter(std::to_string(statut), corps); },
          .surChute = [journal](const std::string& raison) { journal->noter("chute", raison); }};
}

ReglageWebSocket vers(const std::string& serveur, const std::string& chemin) {
  return {.url = ServeurEtranger::commun().url(serveur, chemin),
          .entetes = {{"Authorization", "Bearer cle-secrete"}},
          .secret = "cle-secrete"};
}

using Lignes = std::vector<std::string>;

TEST(WebSocket, DitCeQuiArriveEtPourquoiCaFinit) {
  auto& serveur = ServeurEtranger::commun();
  const std::string refusCoupe = "HTTP/1.1 400 Bad Request\r\nContent-Length: 99\r\n\r\nvotre clé cle-secr";
  PairTCP taiseux({PairTCP::envoyer("", true)}), etranger({PairTCP::envoyer("SSH-2.0-x\r\n")}),
      interrompu({PairTCP::envoyer(refusCoupe), PairTCP::envoyer(refusCoupe, true)});
  auto sansHTTP = vers("clair", "/"), sansReponse = sansHTTP, sansTLS = sansHTTP, ferme = sansHTTP,
       sansFin = sansHTTP;
  sansHTTP.url = "ws" + etranger.url().substr(4);
  sansReponse.url = "ws" + taiseux.url().substr(4);
  sansFin.url = "ws" + interrompu.url().substr(4);
  sansReponse.ouverture = sansFin.ouverture = 150ms;
  sansTLS.url.replace(0, 2, "wss");
  ferme.url = "ws://127.0.0.1:1/";
  auto adresse = vers("tls", "/fragments");
  adresse.url.replace(6, 9, "127.0.0.1");
  auto sourd = vers("clair", "/sourd");
  sourd.silence = 200ms;
  const auto tenace = [](const char* ou, const std::string& octets) {
    auto reglage = vers(ou, "/sourd/" + octets);
    reglage.adieu = 50ms;
    return reglage;
  };
  const std::string cite = "{\"error\":\"Incorrect API key provided: ….\"}", coupe = "votre clé …";
  const std::string refus = "chute le serveur a refusé la connexion (HTTP ";
  const std::string faute = "chute le serveur ne respecte pas le protocole WebSocket";
  const std::string tropGrand = "chute le serveur a envoyé un message de plus de 16 Mio";
  const std::string certificat = "chute le certificat du serveur ";
  const struct {
    const char* nom;
    ReglageWebSocket reglage;
    Lignes attendues;
    const char* autorites = "ca.pem";
  } cas[] = {
      {"fragments, binary; by address", adresse, {"texte morcelé", "texte café", "texte fin"}},
      {"first message with the answer", vers("clair", "/grand/6000"), {"texte 6000"}},
      {"16 MiB", vers("clair", "/grand/16777216"), {"texte 16777216"}},
      {"more", vers("clair", "/grand/16777217"), {tropGrand}},
      {"cut in a frame over TLS", vers("tls", "/coupe"), {"texte avant", "chute la connexion a été coupée"}},
      {"text that is not UTF-8", vers("clair", "/brut/8102fffe"), {faute}},
      {"reserved opcode", vers("tls", "/brut/8300"), {faute}},
      {"refused", vers("tls", "/refus/401"), {"401 " + cite, refus + "401) : " + cite}},
      {"refused in words that are cut", sansFin, {"400 " + coupe, refus + "400) : " + coupe}},
      {"refused in words that never end", sansFin, {"400 " + coupe, refus + "400) : " + coupe}},
      {"another host's", vers("ailleurs", "/"), {certificat + "n'est pas digne de confiance"}},
      {"expired", vers("perime", "/"), {certificat + "est périmé"}},
      {"unknown authority", vers("tls", "/"), {certificat + "vient d'une autorité inconnue"}, "perime.pem"},
      {"no authority",
       vers("tls", "/"),
       {"chute les autorités de certification de cette machine sont illisibles : SSL_CERT_FILE en nomme le "
        "fichier"},
       "absente.pem"},
      {"TLS asked of a plain server", sansTLS, {"chute la liaison chiffrée a échoué"}},
      {"not HTTP", sansHTTP, {"chute le serveur ne parle pas WebSocket"}},
      {"nobody there", ferme, {"chute le serveur n'accepte pas la connexion"}},
      {"accepts and says nothing", sansReponse, {"chute le serveur ne répond pas"}},
      {"goes silent", sourd, {"chute le serveur ne répond pas"}},
      {"says goodbye and stays", tenace("clair", "88020fa1"), {"chute le serveur a fermé la connexion (4001)"}},
      {"the same over TLS, no reason", tenace("tls", "8800"), {"chute le serveur a fermé la connexion"}},
      {"reserved opcode, and stays", tenace("clair", "8300"), {faute}},
      {"announces too much, and stays", tenace("tls", "827f0000000001000001"), {tropGrand}},
  };
  const auto fils = essai::compter("task");
  for (const auto& c : cas) {
    SCOPED_TRACE(c.nom);
    serveur.approuver(c.autorites);
    const auto journal = std::make_shared<Journal>();
    auto socket = WebSocket::creer(c.reglage);
    ASSERT_TRUE(socket);
    socket->demarrer(noterDans(journal));
    EXPECT_EQ(journal->attendre(c.attendues.size()), c.attendues);
    socket.reset();
    EXPECT_LE(essai::retomber("task", fils), fils);
    EXPECT_EQ(journal->attendre(0), c.attendues) << "nothing comes after the end";
  }
  serveur.approuver();
}

/// The same connection, as the streams use it.
TEST(FluxHTTP, LitEnTLS) {
  FluxHTTP flux;
  const auto url = "https" + ServeurEtranger::commun().url("tls", "/refus/401").substr(3);
  EXPECT_EQ(flux.ouvrir({.methode = "GET", .url = url, .entetes = {}, .corps = "", .delai = 5s}),
            (Resultat<int, ErreurReseau>(401)));
  EXPECT_EQ(flux.suivante(),
            (LectureFlux{LectureFlux::ligne{R"({"error":"Incorrect API key provided: cle-secrete."})"}}));
}

TEST(WebSocket, SePresenteEtPrendConge) {
  const auto journal = std::make_shared<Journal>();
  auto socket = WebSocket::creer(vers("tls", "/echo?vu"));
  for (int i = 0; i < 3; ++i) socket->envoyer("avant " + std::to_string(i));
  socket->demarrer(noterDans(journal));
  socket->envoyer(std::string(1 << 20, 'x'));
  EXPECT_EQ(journal->attendre(4), (Lignes{"texte avant 0", "texte avant 1", "texte avant 2", "texte 1048576"}));
  for (int i = 0; i < 2; ++i) socket->fermer();
  socket->envoyer("après");
  const Json vu = ServeurEtranger::commun().rapport("/echo?vu");
  EXPECT_EQ(vu.at("recus"), Json({"avant 0", "avant 1", "avant 2", "1048576"}));
  EXPECT_EQ(vu.at("code"), 1001);
  Json entetes = vu.at("entetes");
  for (const char* nom : {"connection", "host", "sec-websocket-key", "sec-websocket-version", "upgrade"})
    EXPECT_EQ(entetes.erase(nom), 1U) << nom;
  EXPECT_EQ(entetes, Json({{"authorization", "Bearer cle-secrete"}}));
}

/// Its own writes fail long before it has read what the server said last, or only its answer to that.
TEST(WebSocket, LitLaRaisonDUnServeurDejaParti) {
  for (const std::size_t fois : {500U, 2U}) {
    const auto journal = std::make_shared<Journal>();
    const std::shared_ptr<WebSocket> socket =
        WebSocket::creer(vers("clair", "/congedie/" + std::to_string(fois)));
    auto rappels = noterDans(journal);
    rappels.surTexte = [=, faible = std::weak_ptr(socket)](std::string_view texte) {
      const auto vivant = faible.lock();
      if (vivant && (fois > 2 || journal->attendre(0).empty())) vivant->envoyer(std::string(5000, 'x'));
      if (fois == 2) std::this_thread::sleep_for(50ms);
      journal->noter("texte", texte);
    };
    const auto depart = std::chrono::steady_clock::now();
    socket->demarrer(rappels);
    EXPECT_EQ(journal->attendre(fois + 1).back(), "chute le serveur a fermé la connexion (3000) : non!");
    EXPECT_LT(std::chrono::steady_clock::now() - depart, 1s) << fois;
  }
}

TEST(WebSocket, UnPairQuiNeLitPlusNeFaitPasGrossirLaFile) {
  const auto journal = std::make_shared<Journal>(), fin = std::make_shared<Journal>();
  auto reglage = vers("clair", "/bavard");
  reglage.adieu = 50ms;
  auto socket = WebSocket::creer(reglage), autre = WebSocket::creer(vers("clair", "/renvoie"));
  auto rappels = noterDans(journal);
  rappels.surChute = noterDans(fin).surChute;
  socket->demarrer(rappels);
  journal->attendre(1);
  for (int i = 0; i < 64; ++i) socket->envoyer(std::string(1 << 20, 'x'));
  const auto lignes = journal->attendre(20);
  EXPECT_EQ(std::count(lignes.begin(), lignes.end(), "refus le serveur ne lit plus : envoi refusé"), 1);
  EXPECT_EQ(lignes.back(), "texte encore") << "the session goes on";
  autre->demarrer(noterDans(journal));
  EXPECT_EQ(fin->attendre(1), Lignes{"chute le serveur a fermé la connexion"}) << "its answer cannot leave";
}

/// The look-up cannot be interrupted; the connection's own thread waits for it, not its owner.
TEST(WebSocket, NAttendPasLaRechercheDUnNom) {
  const auto fils = essai::compter("task");
  for (const bool fermer : {true, false}) {
    const auto journal = std::make_shared<Journal>();
    const int avant = essai::recherchesLentes;
    auto socket = WebSocket::creer({.url = "ws://lent.example/", .ouverture = 100ms});
    socket->demarrer(noterDans(journal));
    while (essai::recherchesLentes == avant) std::this_thread::sleep_for(1ms);
    if (fermer) socket->fermer();
    std::this_thread::sleep_for(300ms);
    const auto depart = std::chrono::steady_clock::now();
    socket.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - depart, 1s) << fermer;
    EXPECT_EQ(journal->attendre(0), fermer ? Lignes{} : Lignes{"chute le serveur ne répond pas"});
  }
  EXPECT_LE(essai::retomber("task", fils), fils);
}

TEST(WebSocket, RefuseCeQuiNePeutPartir) {
  for (const char* url : {"", "wss:", "ws://", "http://localhost/", "ws://h:99999/", "ws://a%00b/"})
    EXPECT_FALSE(WebSocket::creer({.url = url})) << url;
  EXPECT_FALSE(WebSocket::creer({.url = "ws://h/", .entetes = {{"Authorization", "a\nb"}}}));
  EXPECT_TRUE(WebSocket::creer({.url = "WSS://[::1]:8443"}));
}

}  // namespace
}  // namespace tarnavelle
