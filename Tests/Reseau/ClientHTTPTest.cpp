#include "Reseau/ClientHTTP.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>

#include "Reseau/PairTCP.hpp"

namespace tarnavelle {
namespace {

using essai::Connexion;
using essai::PairTCP;
using namespace std::chrono_literals;

constexpr BornesHTTP amples{.attente = 5s, .vie = 10s, .corpsMax = 1 << 20};
constexpr BornesHTTP breves{.attente = 150ms, .vie = 10s, .corpsMax = 1 << 20};

RequeteHTTP poster(const std::string& url, std::string corps = "{}") {
  return {.methode = "POST", .url = url, .entetes = {{"Authorization", "Bearer t"}}, .corps = std::move(corps)};
}

std::string reponse(std::string_view corps) {
  return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(corps.size()) + "\r\n\r\n" + std::string(corps);
}

/// Answers every request of a connection with the same bytes.
PairTCP::Script repondre(std::string octets) {
  return [octets = std::move(octets)](Connexion& c) {
    while (!c.lireRequete().empty()) c.envoyer(octets);
  };
}

TEST(ClientHTTP, EcritLaRequeteTelleQuAttendue) {
  std::promise<std::string> recue;
  PairTCP pair({[&](Connexion& c) {
    recue.set_value(c.lireRequete());
    c.envoyer(reponse("ok"));
  }});
  ClientHTTP client;
  const auto base = pair.url().substr(0, pair.url().rfind('/'));
  EXPECT_EQ(client.envoyer(poster(base + "/a%20b?x=1", "{\"é\":1}"), amples)->corps, "ok");
  EXPECT_EQ(recue.get_future().get(),
            "POST /a%20b?x=1 HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(pair.port()) +
                "\r\nAuthorization: Bearer t\r\nContent-Length: 8\r\n\r\n{\"é\":1}");
}

TEST(ClientHTTP, LitToutesLesFormesDeCorps) {
  const std::string grand(300'000, 'x');
  const struct {
    std::string octets;
    int statut;
    std::string corps;
  } cas[] = {
      {reponse("abc"), 200, "abc"},
      {"HTTP/1.1 500 Oups\r\nContent-Length: 2\r\n\r\nno", 500, "no"},
      {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3;x=y\r\nabc\r\n2\r\nde\r\n0\r\nT: v\r\n\r\n", 200,
       "abcde"},
      {"HTTP/1.1 200 OK\r\n\r\njusqu'au bout", 200, "jusqu'au bout"},
      {"HTTP/1.0 200 OK\r\nContent-Length: 1\r\n\r\nz", 200, "z"},
      {"HTTP/1.1 204 No Content\r\n\r\n", 204, ""},
      {"HTTP/1.1 302 Found\r\nLocation: http://127.0.0.1:1/\r\nContent-Length: 0\r\n\r\n", 302, ""},
      {"HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 103 Early Hints\r\nLink: x\r\n\r\n" + reponse("fin"), 200, "fin"},
      {reponse(grand), 200, grand},
  };
  for (const auto& c : cas) {
    SCOPED_TRACE(c.octets.substr(0, 60));
    PairTCP pair({[&](Connexion& connexion) {
      connexion.lireRequete();
      connexion.envoyer(c.octets);
    }});
    ClientHTTP client;
    const auto lue = client.envoyer(poster(pair.url()), amples);
    ASSERT_TRUE(lue);
    EXPECT_EQ(lue->statut, c.statut);
    EXPECT_EQ(lue->corps, c.corps);
  }
}

TEST(ClientHTTP, UneReponseCoupeeOuMalFormeeNEnEstPasUne) {
  const std::string octets[] = {
      "",
      "HTTP/1.1 200 OK\r\nContent-Le",
      "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc",
      "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nabc",
      "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n",
      "HTTP/1.1 200 OK\r\nContent-Length: -1\r\n\r\n",
      "HTTP/1.1 200 OK\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\nab",
      "n'importe quoi\r\n\r\n",
      "HTTP/1.1 200 OK\r\nX: " + std::string(100'000, 'y') + "\r\n\r\n",
      "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n1;" + std::string(300'000, 'y') +
          "\r\na\r\n0\r\n\r\n",
      "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n0\r\nT: " + std::string(300'000, 'y') + "\r\n\r\n",
      reponse(std::string((1 << 20) + 1, 'x')),
  };
  for (const auto& o : octets) {
    SCOPED_TRACE(o.substr(0, 60));
    PairTCP pair({[&](Connexion& c) {
      c.lireRequete();
      c.envoyer(o);
    }});
    ClientHTTP client;
    EXPECT_FALSE(client.envoyer(poster(pair.url()), amples));
    EXPECT_EQ(pair.connexions(), 1) << "the request must not be sent twice";
  }
}

TEST(ClientHTTP, GardeLaConnexionTantQueLAdresseResteLaMeme) {
  PairTCP un({repondre(reponse("1"))});
  PairTCP deux({repondre(reponse("2"))});
  ClientHTTP client;
  for (int i = 0; i < 3; ++i) EXPECT_EQ(client.envoyer(poster(un.url()), amples)->corps, "1");
  EXPECT_EQ(un.connexions(), 1);
  EXPECT_EQ(client.envoyer(poster(deux.url()), amples)->corps, "2");
  EXPECT_EQ(client.envoyer(poster(un.url()), amples)->corps, "1");
  EXPECT_EQ(un.connexions(), 2);
}

TEST(ClientHTTP, UneConnexionGardeeMorteEstRemplacee) {
  const struct {
    const char* nom;
    PairTCP::Script premiere;
  } cas[] = {
      {"closed after the reply",
       [](Connexion& c) {
         c.lireRequete();
         c.envoyer(reponse("1"));
       }},
      {"reset after the reply",
       [](Connexion& c) {
         c.lireRequete();
         c.envoyer(reponse("1"));
         c.couperNet();
       }},
      {"announced close",
       [](Connexion& c) {
         c.lireRequete();
         c.envoyer("HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: 1\r\n\r\n1");
         c.attendreFermeture(2000);
       }},
      {"unasked bytes after the reply",
       [](Connexion& c) {
         c.lireRequete();
         c.envoyer(reponse("1") + reponse("fausse"));
         c.attendreFermeture(2000);
       }},
  };
  for (const auto& c : cas) {
    SCOPED_TRACE(c.nom);
    PairTCP pair({c.premiere, repondre(reponse("2"))});
    ClientHTTP client;
    EXPECT_EQ(client.envoyer(poster(pair.url()), amples)->corps, "1");
    std::this_thread::sleep_for(30ms);  // lets the end of the first connection arrive
    const auto seconde = client.envoyer(poster(pair.url()), amples);
    ASSERT_TRUE(seconde);
    EXPECT_EQ(seconde->corps, "2");
    EXPECT_EQ(pair.connexions(), 2);
  }
}

TEST(ClientHTTP, UneRequetePeutEtreRecueNEstPasRenvoyee) {
  PairTCP pair({[](Connexion& c) {
                  c.lireRequete();
                  c.envoyer(reponse("1"));
                  c.lireRequete();  // the second request arrives, and is left unanswered
                },
                repondre(reponse("2"))});
  ClientHTTP client;
  EXPECT_TRUE(client.envoyer(poster(pair.url()), amples));
  EXPECT_FALSE(client.envoyer(poster(pair.url()), amples));
  EXPECT_EQ(pair.connexions(), 1);
  EXPECT_EQ(client.envoyer(poster(pair.url()), amples)->corps, "2");
}

TEST(ClientHTTP, UnPairQuiFermeSansLeDireNePerdQuUnAppel) {
  PairTCP pair({[](Connexion& c) {
                  for (int i = 0; i < 2; ++i) {  // the second request is read and dropped
                    c.lireRequete();
                    if (i == 0) c.envoyer(reponse("1"));
                  }
                },
                repondre(reponse("2"))});
  ClientHTTP client;
  EXPECT_TRUE(client.envoyer(poster(pair.url()), amples));
  EXPECT_FALSE(client.envoyer(poster(pair.url()), amples));
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(client.envoyer(poster(pair.url()), amples));
  EXPECT_EQ(pair.connexions(), 4) << "its connections are no longer kept";
}

TEST(ClientHTTP, LitLeRefusDUnCorpsQueLePairNeLitPas) {
  PairTCP pair({[](Connexion& c) {
    c.envoyer("HTTP/1.1 413 Non\r\nContent-Length: 4\r\n\r\ntrop");
    std::this_thread::sleep_for(50ms);
    c.couperNet();
  }});
  ClientHTTP client;
  const auto lue = client.envoyer(poster(pair.url(), std::string(32 << 20, 'x')), amples);
  ASSERT_TRUE(lue);
  EXPECT_EQ(lue->statut, 413);
  EXPECT_EQ(lue->corps, "trop");
}

TEST(ClientHTTP, LaBorneTientQuoiQueFasseLePair) {
  std::atomic<bool> assez = false;
  const auto sansFin = [&assez](std::string debut, std::string suite, std::chrono::milliseconds pause) {
    return [=, &assez](Connexion& c) {
      c.lireRequete();
      c.envoyer(debut);
      while (!assez && (suite.empty() || c.envoyer(suite)))
        if (pause > 0ms) std::this_thread::sleep_for(pause);
    };
  };
  const struct {
    const char* nom;
    PairTCP::Script script;
  } cas[] = {
      {"says nothing", sansFin("", "", 50ms)},
      {"slow headers", sansFin("HTTP/1.1 200 OK\r\nX: ", "y", 20ms)},
      {"slow body", sansFin("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n", "z", 20ms)},
      {"interim responses for ever", sansFin("", "HTTP/1.1 100 Continue\r\n\r\n", 0ms)},
      {"never reads",
       [&assez](Connexion&) {
         while (!assez) std::this_thread::sleep_for(20ms);
       }},
  };
  for (const auto& c : cas) {
    SCOPED_TRACE(c.nom);
    assez = false;
    PairTCP pair({c.script});
    ClientHTTP client;
    const auto debut = std::chrono::steady_clock::now();
    EXPECT_FALSE(client.envoyer(poster(pair.url(), std::string(8 << 20, 'x')), breves));
    const auto duree = std::chrono::steady_clock::now() - debut;
    EXPECT_GE(duree, 140ms);
    EXPECT_LT(duree, 1000ms);
    assez = true;
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
  auto bornes = breves;
  bornes.corpsMax = 32 << 20;
  EXPECT_FALSE(client.envoyer(poster(pair.url()), bornes));
  const auto suivante = client.envoyer(poster(pair.url()), amples);
  ASSERT_TRUE(suivante);
  EXPECT_EQ(suivante->corps, "2");
  EXPECT_TRUE(livree.get_future().get()) << "the late answer must find its reader";
}

TEST(ClientHTTP, UnAppelEchuEstAbandonneASonTerme) {
  std::promise<bool> ferme;
  PairTCP pair({[&](Connexion& c) {
    c.lireRequete();
    ferme.set_value(c.attendreFermeture(3000));
  }});
  ClientHTTP client;
  EXPECT_FALSE(client.envoyer(poster(pair.url()), {.attente = 50ms, .vie = 200ms, .corpsMax = 100}));
  EXPECT_TRUE(ferme.get_future().get());
}

TEST(ClientHTTP, RefuseCeQuiNePeutPartir) {
  PairTCP pair({repondre(reponse("1"))});
  ClientHTTP client;
  const std::string jetons[] = {"a\nb", "a\r\nX: y", "a\tb", {'a', '\0', 'b'}, "\x7f", "\x1b[0m", "a\u0085b"};
  for (const auto& jeton : jetons) {
    auto requete = poster(pair.url());
    requete.entetes[0].valeur = "Bearer " + jeton;
    EXPECT_FALSE(client.envoyer(requete, amples)) << testing::PrintToString(jeton);
  }
  for (const char* url : {"", "pas une url", "ftp://127.0.0.1/", "http://", "http:///x", "http://127.0.0.1:0/",
                          "/action", "http://[::1/"})
    EXPECT_FALSE(client.envoyer(poster(url), breves)) << url;
  const int port = pair.port();
  const auto trop = "http://127.0.0.1:" + std::to_string(port + 65536) + "/";
  EXPECT_FALSE(client.envoyer(poster(trop), breves)) << trop;
  EXPECT_EQ(pair.connexions(), 0);
  EXPECT_TRUE(client.envoyer(poster("http://localhost:" + std::to_string(port) + "/"), amples));
}

TEST(ClientHTTP, UnPortFermeNeRepondPas) {
  int port = 0;
  {
    port = PairTCP({[](Connexion&) {}}).port();
  }
  ClientHTTP client;
  EXPECT_FALSE(client.envoyer(poster("http://127.0.0.1:" + std::to_string(port) + "/action"), amples));
}

}  // namespace
}  // namespace tarnavelle
