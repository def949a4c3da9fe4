// What becomes of one request is tried with ClientHTTP, which carries it the same way: here, many and their
// thread.
#include "Reseau/FaisceauHTTP.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <thread>

#include "Reseau/PairTCP.hpp"

namespace tarnavelle {
namespace {

using essai::Connexion;
using essai::PairTCP;
using namespace std::chrono_literals;

constexpr BornesHTTP amples{.attente = 5s, .vie = 5s, .corpsMax = 1 << 20};
constexpr BornesHTTP breves{.attente = 50ms, .vie = 100ms, .corpsMax = 1 << 20};

PairTCP::Script repondre(int fois) {
  return [=](Connexion& c) {
    for (int i = 0; i < fois && !c.lireRequete().empty(); ++i)
      c.envoyer("HTTP/1.1 200 OK\r\nContent-Length: 1\r\n\r\n" + std::to_string(i));
  };
}

struct Essai {
  FaisceauHTTP faisceau;

  std::future<std::string> lancer(const std::string& url, const BornesHTTP& bornes = amples,
                                  FaisceauHTTP::Numero* numero = nullptr) {
    auto dit = std::make_shared<std::promise<std::string>>();
    auto futur = dit->get_future();
    const auto donne = faisceau.lancer(
        {.methode = "POST", .url = url, .entetes = {}, .corps = "{}"}, bornes,
        [dit](const FaisceauHTTP::Rendu& rendu) {
          dit->set_value(rendu ? rendu->corps : rendu.raison().partie ? "perdue" : "pas partie");
        });
    if (numero) *numero = donne;
    return futur;
  }
};

TEST(FaisceauHTTP, GardeSesConnexionsEtRemplaceCelleQuiEstMorte) {
  PairTCP porte({repondre(2), repondre(1)});
  Essai essai;
  EXPECT_EQ(essai.lancer(porte.url()).get(), "0");
  EXPECT_EQ(essai.lancer(porte.url()).get(), "1");  // the same connection, which then ends
  std::this_thread::sleep_for(20ms);
  EXPECT_EQ(essai.lancer(porte.url()).get(), "0");
}

TEST(FaisceauHTTP, DitCeQuiNAboutitPasEtLaisseCeQuiEstAbandonne) {
  std::promise<void> lue, close;
  PairTCP porte({[](Connexion& c) { c.lireRequete(), c.lireRequete(); },
                 [&](Connexion& c) {
                   c.lireRequete();
                   lue.set_value();
                   c.lireRequete();
                   close.set_value();
                 }});
  Essai essai;
  EXPECT_EQ(essai.lancer("http://127.0.0.1:1").get(), "pas partie");
  EXPECT_EQ(essai.lancer("ftp://ailleurs").get(), "pas partie");
  EXPECT_EQ(essai.lancer(porte.url(), breves).get(), "perdue");
  FaisceauHTTP::Numero numero = 0;
  auto jamais = essai.lancer(porte.url(), amples, &numero);
  lue.get_future().wait();
  essai.faisceau.abandonner(numero);
  close.get_future().wait();
  essai.faisceau.abandonner(numero);
  EXPECT_THROW(jamais.get(), std::future_error);  // nobody holds the promise any more
}

}  // namespace
}  // namespace tarnavelle
