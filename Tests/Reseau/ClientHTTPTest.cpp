#include "Reseau/ClientHTTP.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <future>

#include "Reseau/PairTCP.hpp"

namespace tarnavelle {
namespace {

using essai::Connexion;
using essai::PairTCP;
using namespace std::chrono_literals;

constexpr BornesHTTP amples{.attente = 5s, .vie = 10s, .corpsMax = 1 << 20};
constexpr BornesHTTP breves{.attente = 150ms, .vie = 300ms, .corpsMax = 1 << 20};

RequeteHTTP poster(const std::string& url, std::string corps = "{}") {
  return {.methode = "POST", .url = url, .entetes = {{"Authorization", "Bearer t"}}, .corps = std::move(corps)};
}

std::string reponse(std::string_view corps) {
  return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(corps.size()) + "\r\n\r\n" + std::string(corps);
}

/// What the client says of a call without a reply; "*" when the request may have been received.
std::string pourquoi(const Resultat<ReponseHTTP, EchecHTTP>& lue) {
  if (lue) return "";
  const auto& cause = lue.raison().cause;
  constexpr const char* fautes[] = {"url", "entete", "reponse"};
  const auto* faute = std::get_if<EchecHTTP::Faute>(&cause);
  return (faute ? fautes[static_cast<int>(*faute)] : std::string(description(std::get<ErreurReseau>(cause)))) +
         (lue.raison().partie ? "*" : "");
}

/// The body of what is answered; nothing when nothing is.
std::string demander(ClientHTTP& client, const std::string& url) {
  const auto lue = client.envoyer(poster(url), amples);
  return lue ? lue->corps : "";
}

/// Answers every request of a connection with the same bytes.
PairTCP::Script repondre(std::string octets) {
  return [octets = std::move(octets)](Connexion& c) {
    while (!c.lireRequete().empty()) c.envoyer(octets);
  };
}

TEST(ClientHTTP, LitUneReponseEntiereOuRien) {
  const std::string ok = "HTTP/1.1 200 OK\r\n", chunked = ok + "Transfer-Encoding: chunked\r\n\r\n";
  const std::string corpsMax(amples.corpsMax, 'x'), enorme(300'000, 'y');
  const std::pair<std::string, std::string> cas[] = {
      // status and body, or why there is no reply
      {"HTTP/1.1 500 Oups\r\nContent-Length: 2\r\n\r\nno", "500 no"},
      {chunked + "3;x=y\r\nabc\r\n2\r\nde\r\n0\r\nT: v\r\n\r\n", "200 abcde"},
      {ok + "\r\njusqu'au bout", "200 jusqu'au bout"},
      {"HTTP/1.1 302 Found\r\nLocation: http://127.0.0.1:1/\r\nContent-Length: 0\r\n\r\n", "302 "},
      {"HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 103 Early Hints\r\nLink: x\r\n\r\n" + reponse("fin"), "200 fin"},
      {reponse(corpsMax), "200 " + corpsMax},
      {reponse(corpsMax + "x"), "reponse*"},
      {"", "la connexion a été coupée*"},
      {ok + "Content-Length: 10\r\n\r\nabc", "la connexion a été coupée*"},
      {chunked + "3\r\nabc\r\n", "la connexion a été coupée*"},
      {"n'importe quoi\r\n\r\n", "reponse*"},
      {ok + "X: " + enorme + "\r\n\r\n", "reponse*"},
      {chunked + "1;" + enorme + "\r\na\r\n0\r\n\r\n", "reponse*"},
  };
  for (const auto& [octets, attendue] : cas) {
    PairTCP pair({PairTCP::envoyer(octets)});
    ClientHTTP client;
    const auto lue = client.envoyer(poster(pair.url()), amples);
    EXPECT_EQ(lue ? std::to_string(lue->statut) + " " + lue->corps : pourquoi(lue), attendue)
        << octets.substr(0, 60);
    EXPECT_EQ(pair.connexions(), 1) << "the request must not be sent twice";
  }
}

TEST(ClientHTTP, GardeLaConnexionTantQueLAdresseResteLaMeme) {
  PairTCP un({repondre(reponse("1"))}), deux({repondre(reponse("2"))});
  ClientHTTP client;
  for (int i = 0; i < 3; ++i) EXPECT_EQ(demander(client, un.url()), "1");
  EXPECT_EQ(un.connexions(), 1);
  EXPECT_EQ(demander(client, deux.url()), "2");
  EXPECT_EQ(demander(client, un.url()), "1");
  EXPECT_EQ(un.connexions(), 2);
}

TEST(ClientHTTP, UneConnexionGardeeMorteEstRemplacee) {
  const std::string annoncee = "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: 1\r\n\r\n1";
  for (const auto& [nom, octets, garder] : {std::tuple("closed after the reply", reponse("1"), false),
                                            {"announced close", annoncee, true},
                                            {"unasked bytes", reponse("1") + reponse("fausse"), true}}) {
    PairTCP pair({PairTCP::envoyer(octets, garder), repondre(reponse("2"))});
    ClientHTTP client;
    EXPECT_EQ(demander(client, pair.url()), "1") << nom;
    std::this_thread::sleep_for(30ms);  // lets the end of the first connection arrive
    EXPECT_EQ(demander(client, pair.url()), "2") << nom;
    EXPECT_EQ(pair.connexions(), 2) << nom;
  }
}

TEST(ClientHTTP, UneRequetePeutEtreRecueNEstPasRenvoyee) {
  PairTCP pair({[](Connexion& c) {
                  PairTCP::envoyer(reponse("1"))(c);
                  c.lireRequete();  // the second request arrives, and is left unanswered
                },
                repondre(reponse("2"))});
  ClientHTTP client;
  EXPECT_EQ(demander(client, pair.url()), "1");
  EXPECT_EQ(demander(client, pair.url()), "");
  EXPECT_EQ(pair.connexions(), 1);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(demander(client, pair.url()), "2");
  EXPECT_EQ(pair.connexions(), 4) << "the connections of a peer that closes without saying so are not kept";
}

TEST(ClientHTTP, LitLeRefusDUnCorpsQueLePairNeLitPas) {
  PairTCP pair({[](Connexion& c) {
    c.envoyer("HTTP/1.1 413 Non\r\nContent-Length: 4\r\n\r\ntrop");
    std::this_thread::sleep_for(50ms);
    c.couperNet();
  }});
  ClientHTTP client;
  const auto lue = client.envoyer(poster(pair.url(), std::string(32 << 20, 'x')), amples);
  EXPECT_EQ(lue ? lue->statut : 0, 413);
  EXPECT_EQ(lue ? lue->corps : "", "trop");
}

TEST(ClientHTTP, LaBorneTientQuoiQueFasseLePair) {
  // Until the client is gone, which is at the end of the exchange's life.
  const auto sansFin = [](std::string octets, std::chrono::milliseconds pause) {
    return [=](Connexion& c) {
      c.lireRequete();
      while (c.envoyer(octets)) std::this_thread::sleep_for(pause);
    };
  };
  const std::pair<const char*, PairTCP::Script> cas[] = {
      {"slow body", sansFin("HTTP/1.1 200 OK\r\n\r\n", 20ms)},
      {"interim responses for ever", sansFin("HTTP/1.1 100 Continue\r\n\r\n", 0ms)},
      {"never reads", [](Connexion&) { std::this_thread::sleep_for(400ms); }},
  };
  for (const auto& [nom, script] : cas) {
    PairTCP pair({script});
    ClientHTTP client;
    const auto debut = std::chrono::steady_clock::now();
    const auto lue = client.envoyer(poster(pair.url(), std::string(8 << 20, 'x')), breves);
    const auto duree = std::chrono::steady_clock::now() - debut;
    EXPECT_GE(duree, 140ms) << nom;
    EXPECT_LT(duree, 1000ms) << nom;
    EXPECT_EQ(pourquoi(lue), "le serveur ne répond pas*") << nom;
  }
}

TEST(ClientHTTP, UnAppelEchuContinueSansGenerLeSuivant) {
  std::promise<bool> livree;
  PairTCP pair({[&](Connexion& c) {
                  c.lireRequete();
                  std::this_thread::sleep_for(400ms);
                  // More than the socket's buffers hold: someone must still be reading.
                  livree.set_value(c.envoyer(reponse(std::string(16 << 20, 'x'))));
                },
                repondre(reponse("2"))});
  ClientHTTP client;
  EXPECT_FALSE(client.envoyer(poster(pair.url()), {.attente = 150ms, .vie = 10s, .corpsMax = 32 << 20}));
  EXPECT_EQ(demander(client, pair.url()), "2");
  EXPECT_TRUE(livree.get_future().get()) << "the late answer must find its reader";
}

// A program that returns from its main(), as the bridge does not: the libraries under the exchange are torn
// down on the way out.
TEST(ClientHTTPDeathTest, UnAppelEchuNeSurvitPasAOpenSSL) {
  static std::atomic<bool> fermee = false;
  const auto sortir = [] {
    std::atexit([] {  // the first to be set for the end, hence the last to run
      for (int i = 0; i < 100 && !fermee; ++i) std::this_thread::sleep_for(10ms);
      std::_Exit(fermee ? 0 : 1);
    });
    auto& muet = *new PairTCP({[](Connexion& c) {
      c.lireRequete();  // until the connection is closed, or nothing comes for two seconds
      fermee = true;
    }});
    ClientHTTP client;
    client.envoyer(poster("https" + muet.url().substr(4)), {.attente = 150ms, .vie = 10s, .corpsMax = 1});
    std::exit(0);
  };
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(sortir(), testing::ExitedWithCode(0), "");
}

TEST(ClientHTTP, EnvoieLaRequeteTelleQuelleOuRien) {
  std::promise<std::string> recue;
  PairTCP pair({[&](Connexion& c) {
    recue.set_value(c.lireRequete());
    c.envoyer(reponse("1"));
  }});
  ClientHTTP client;
  const std::string port = std::to_string(pair.port());
  const std::string jetons[] = {"a\nb", "a\r\nX: y", "a\tb", {'a', '\0', 'b'}, "\x7f", "\x1b[0m", "a\u0085b"};
  for (const auto& jeton : jetons) {
    auto requete = poster(pair.url());
    requete.entetes[0].valeur = "Bearer " + jeton;
    EXPECT_EQ(pourquoi(client.envoyer(requete, amples)), "entete") << testing::PrintToString(jeton);
  }
  for (const char* url : {"", "ftp://127.0.0.1/", "http:///x", "http://127.0.0.1:0/", "/action"})
    EXPECT_EQ(pourquoi(client.envoyer(poster(url), breves)), "url") << url;
  EXPECT_EQ(pourquoi(client.envoyer(poster("http://127.0.0.1:1/"), breves)),
            "le serveur n'accepte pas la connexion");
  EXPECT_EQ(demander(client, "http://127.0.0.1:" + std::to_string(pair.port() + 65536) + "/"), "");
  EXPECT_EQ(pair.connexions(), 0);
  EXPECT_EQ(pourquoi(client.envoyer(poster("http://localhost:" + port + "/a%20b?x=1", "{\"é\":1}"), amples)),
            "");
  EXPECT_EQ(recue.get_future().get(), "POST /a%20b?x=1 HTTP/1.1\r\nHost: localhost:" + port +
                                          "\r\nAuthorization: Bearer t\r\nContent-Length: 8\r\n\r\n{\"é\":1}");
}

}  // namespace
}  // namespace tarnavelle
