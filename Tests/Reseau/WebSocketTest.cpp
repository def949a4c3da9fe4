#include "Reseau/WebSocket.hpp"

#include <gtest/gtest.h>

#include "Reseau/NomLent.hpp"
#include "Reseau/PairTCP.hpp"
#include "Reseau/ServeurEtranger.hpp"

namespace tarnavelle {
namespace {

using essai::Journal;
using essai::ServeurEtranger;
using namespace std::chrono_literals;

RappelsWebSocket noterDans(const std::shared_ptr<Journal>& journal) {
  return {.surTexte = [journal](std::string_view texte) { journal->noter("texte", texte); },
          .surErreurEnvoi = [journal](const std::string& raison) { journal->noter("refus", raison); },
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
  essai::PairTCP taiseux({[](essai::Connexion& c) { c.lireRequete(), c.attendreFermeture(5000); }});
  essai::PairTCP etranger({[](essai::Connexion& c) { c.lireRequete(), c.envoyer("SSH-2.0-x\r\n"); }});
  auto sansHTTP = vers("clair", "/");
  sansHTTP.url = "ws://127.0.0.1:" + std::to_string(etranger.port());
  auto sansReponse = vers("clair", "/");
  sansReponse.url = "ws://127.0.0.1:" + std::to_string(taiseux.port());
  sansReponse.ouverture = 150ms;
  auto sansTLS = vers("clair", "/");
  sansTLS.url.replace(0, 2, "wss");
  auto adresse = vers("tls", "/fragments");
  adresse.url.replace(6, 9, "127.0.0.1");
  auto sourd = vers("clair", "/sourd");
  sourd.silence = 200ms;
  auto ferme = vers("clair", "/");
  ferme.url = "ws://127.0.0.1:1/";
  const std::string refus = ") : {\"error\":\"Incorrect API key provided: ….\"}";
  const std::string trop = "chute le serveur a envoyé un message de plus de 16 Mio";
  const Lignes morceaux = {"texte morcelé", "texte café", "texte fin"};
  const Lignes cassee = {"texte avant", "chute la connexion a été coupée"};
  const std::string faute = "chute le serveur ne respecte pas le protocole WebSocket";
  const struct {
    const char* nom;
    ReglageWebSocket reglage;
    Lignes attendues;
    bool approuver = true;
  } cas[] = {
      {"fragments, binary", vers("clair", "/fragments"), morceaux},
      {"over TLS", vers("tls", "/fragments"), morceaux},
      {"over TLS, by address", adresse, morceaux},
      {"first message with the answer", vers("rapide", "/"), {"texte 6000"}},
      {"ping", vers("clair", "/ping"), {"texte pong"}},
      {"1 MiB", vers("clair", "/grand/1048576"), {"texte 1048576"}},
      {"1 MiB over TLS", vers("tls", "/grand/1048576"), {"texte 1048576"}},
      {"16 MiB", vers("clair", "/grand/16777216"), {"texte 16777216"}},
      {"one byte more", vers("clair", "/grand/16777217"), {trop}},
      {"far more over TLS", vers("tls", "/grand/50000000"), {trop}},
      {"cut in a frame", vers("clair", "/coupe"), cassee},
      {"cut in a frame over TLS", vers("tls", "/coupe"), cassee},
      {"reset", vers("clair", "/arrache"), cassee},
      {"text that is not UTF-8", vers("clair", "/invalide/texte"), {faute}},
      {"reserved opcode", vers("tls", "/invalide/code"), {faute}},
      {"closed with a reason",
       vers("tls", "/ferme"),
       {"chute le serveur a fermé la connexion (3000) : invalid_request_error.invalid_api_key"}},
      {"refused", vers("clair", "/refus/400"), {"chute le serveur a refusé la connexion (HTTP 400" + refus}},
      {"refused over TLS",
       vers("tls", "/refus/401"),
       {"chute le serveur a refusé la connexion (HTTP 401" + refus}},
      {"another host's certificate",
       vers("ailleurs", "/echo"),
       {"chute le certificat du serveur n'est pas digne de confiance"}},
      {"expired certificate", vers("perime", "/echo"), {"chute le certificat du serveur est périmé"}},
      {"unknown authority",
       vers("tls", "/echo"),
       {"chute le certificat du serveur vient d'une autorité inconnue"},
       false},
      {"TLS asked of a plain server", sansTLS, {"chute la liaison chiffrée a échoué"}},
      {"not HTTP", sansHTTP, {"chute le serveur ne parle pas WebSocket"}},
      {"nobody there", ferme, {"chute le serveur n'accepte pas la connexion"}},
      {"accepts and says nothing", sansReponse, {"chute le serveur ne répond pas"}},
      {"goes silent", sourd, {"chute le serveur ne répond pas"}},
  };
  const auto fils = essai::compter("task");
  for (const auto& c : cas) {
    SCOPED_TRACE(c.nom);
    serveur.approuver(c.approuver);
    const auto journal = std::make_shared<Journal>();
    auto socket = WebSocket::creer(c.reglage);
    ASSERT_TRUE(socket);
    socket->demarrer(noterDans(journal));
    EXPECT_EQ(journal->attendre(c.attendues.size()), c.attendues);
    socket.reset();
    EXPECT_LE(essai::retomber("task", fils), fils);
    EXPECT_EQ(journal->attendre(0), c.attendues) << "nothing comes after the end";
  }
  serveur.approuver(true);
}

TEST(WebSocket, SePresenteEtPrendConge) {
  auto& serveur = ServeurEtranger::commun();
  const auto journal = std::make_shared<Journal>();
  auto socket = WebSocket::creer(vers("tls", "/echo?vu"));
  for (int i = 0; i < 3; ++i) socket->envoyer("avant " + std::to_string(i));
  socket->demarrer(noterDans(journal));
  socket->envoyer(std::string(1 << 20, 'x'));
  EXPECT_EQ(journal->attendre(4), (Lignes{"texte avant 0", "texte avant 1", "texte avant 2", "texte 1048576"}));
  socket->fermer();
  socket->fermer();
  socket->envoyer("après");
  const Json vu = serveur.rapport("/echo?vu");
  EXPECT_EQ(vu.at("recus"), Json({"avant 0", "avant 1", "avant 2", "1048576"}));
  EXPECT_EQ(vu.at("code"), 1001);
  EXPECT_EQ(vu.at("raison"), "");
  Lignes noms;
  for (const auto& [nom, _] : vu.at("entetes").items()) noms.push_back(nom);
  EXPECT_EQ(noms, (Lignes{"authorization", "connection", "host", "sec-websocket-key", "sec-websocket-version",
                          "upgrade"}));
  EXPECT_EQ(vu.at("entetes").at("authorization"), "Bearer cle-secrete");
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
  const auto journal = std::make_shared<Journal>();
  auto socket = WebSocket::creer(vers("clair", "/bavard"));
  socket->demarrer(noterDans(journal));
  journal->attendre(1);
  for (int i = 0; i < 64; ++i) socket->envoyer(std::string(1 << 20, 'x'));
  const auto lignes = journal->attendre(20);
  EXPECT_EQ(std::count(lignes.begin(), lignes.end(), "refus le serveur ne lit plus : envoi refusé"), 1);
  EXPECT_EQ(lignes.back(), "texte encore") << "the session goes on";
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
  for (const char* url :
       {"", "wss:", "ws://", "http://localhost/", "ws://h:99999/", "ws://a%00b/", "localhost:80"})
    EXPECT_FALSE(WebSocket::creer({.url = url})) << url;
  for (const char* valeur : {"a\nb", "a\r\nX: y", "\x1b[0m", "a\u0085b"})
    EXPECT_FALSE(WebSocket::creer({.url = "ws://h/", .entetes = {{"Authorization", valeur}}})) << valeur;
  EXPECT_TRUE(WebSocket::creer({.url = "WSS://[::1]:8443"}));
}

}  // namespace
}  // namespace tarnavelle
