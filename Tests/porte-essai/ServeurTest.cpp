#include "ServeurHTTP.hpp"

#include <gtest/gtest.h>

#include <boost/asio/ip/tcp.hpp>
#include <fstream>
#include <future>
#include <semaphore>

#include "DossierTemporaire.hpp"
#include "FichierEndpoint.hpp"
#include "Plateau.hpp"

namespace tarnavelle::PorteEssai {
namespace {

using boost::asio::ip::tcp;
using namespace std::chrono_literals;

/// A real clock that tells when someone starts to wait. It does so under the board's lock: whoever acts
/// on the board afterwards finds the wait begun.
class HorlogeGuettee final : public Horloge {
 public:
  Instant maintenant() const override { return reelle_.maintenant(); }
  void attendre(std::condition_variable& reveil, std::unique_lock<std::mutex>& verrou,
                Instant echeance) override {
    attentes.release();
    reelle_.attendre(reveil, verrou, echeance);
  }
  std::counting_semaphore<> attentes{0};

 private:
  HorlogeReelle reelle_;
};

struct Porte {
  explicit Porte(ReglagesServeur reglages = {}) {
    reglages.jeton = "secret";
    serveur = ServeurHTTP::ouvrir(std::move(reglages),
                                  [this](const CommandeControle& c) { return plateau.executer(c); });
    port = serveur->port();
  }

  tcp::iostream connecter() const {
    tcp::iostream flux;
    flux.expires_after(20s);
    flux.connect(tcp::endpoint(boost::asio::ip::address_v4::loopback(), port));
    return flux;
  }

  /// The status and the body of the last answer to these bytes, and what its length should have been.
  std::string appeler(std::string_view octets) const {
    auto flux = connecter();
    flux << octets << std::flush;
    const std::string recu(std::istreambuf_iterator<char>(flux), {});
    const auto tete = recu.rfind("HTTP/1.1 ");
    const auto longueur = recu.find("Content-Length: ", tete);
    const auto corps = recu.find("\r\n\r\n", tete);
    if (corps == recu.npos) return "coupé : " + recu;
    const auto annonce = std::stoul(recu.substr(longueur + 16));
    return recu.substr(tete + 9, 4) + recu.substr(corps + 4) +
           (annonce == recu.size() - corps - 4 ? "" : " sur " + std::to_string(annonce));
  }

  HorlogeGuettee horloge;
  Plateau plateau{horloge};
  std::unique_ptr<ServeurHTTP> serveur;
  std::uint16_t port = 0;
};

std::string requete(const std::string& corps, const std::string& tete = "POST /action HTTP/1.1",
                    const std::string& autorisation = "Bearer secret", const std::string& suite = "close") {
  return tete + "\r\nConnection: " + suite + "\r\nAuthorization: " + autorisation +
         "\r\nContent-Length: " + std::to_string(corps.size()) + "\r\n\r\n" + corps;
}

const std::string taches = R"({"action":"taches"})";
const std::string aucune = R"({"data":{"taches":[]},"ok":true,"spoken_text":"Aucune tâche."})";

TEST(Serveur, RefuseCeQuiNEstPasUnAppel) {
  const Porte porte({.jeton = {}, .pannes = {}, .corpsMax = 100});
  const std::pair<std::string, std::string> cas[] = {
      {requete(taches, "POST /action HTTP/1.1", "Bearer secreT"), "401 Jeton absent ou faux."},
      {requete(taches, "POST /rien HTTP/1.1", "Basic secret"), "401 Jeton absent ou faux."},
      {requete(taches, "POST /actions HTTP/1.1"), "404 Rien à cette adresse : la porte est à /action."},
      {requete("", "GET /action HTTP/1.1"), "405 La porte n'entend que POST."},
      {requete("[" + taches + "]"), "400 Le corps doit être un objet JSON."},
      {requete(std::string(101, ' ')), "413 Corps trop grand : 100 octets au plus."},
      {"POST /action HTTP/1.1\r\nX: " + std::string(17 * 1024, 'x') + "\r\n\r\n", "431 En-têtes trop longs."},
      {"n'importe quoi\r\n\r\n", "400 Requête HTTP illisible."},
      {requete(R"({"action":"zut"})"), "200 Verbe inconnu : « zut »."},
  };
  for (const auto& [octets, refus] : cas)
    EXPECT_EQ(porte.appeler(octets),
              refus.substr(0, 4) + R"({"error":")" + refus.substr(4) + R"(","ok":false})")
        << octets.substr(0, 200);
  EXPECT_EQ(porte.appeler(requete(taches + std::string(100 - taches.size(), ' '))), "200 " + aucune);
  // Two calls on one connection, in one go
  EXPECT_EQ(
      porte.appeler(requete("[]", "POST /action HTTP/1.1", "Bearer secret", "keep-alive") + requete(taches)),
      "200 " + aucune);
  EXPECT_FALSE(ServeurHTTP::ouvrir({.jeton = "x", .port = porte.port, .pannes = {}}, {}));
}

TEST(Serveur, UneAutreConnexionReveilleAttendreEtLaFermetureAussi) {
  Porte porte;
  const auto attendre = [&](const std::string& quoi) {
    return porte.appeler(
        requete(R"({"action":"attendre","agent":"Merlin","timeout_s":300,"jusqu_a":")" + quoi + "\"}"));
  };
  auto attente = std::async(std::launch::async, attendre, "fini");
  ASSERT_TRUE(porte.horloge.attentes.try_acquire_for(20s));
  EXPECT_EQ(porte.appeler(requete(R"({"action":"fini","agent":"Merlin"})")).substr(0, 3), "200");
  EXPECT_TRUE(attente.get().ends_with(R"("spoken_text":"Merlin a fini."})"));

  auto seconde = std::async(std::launch::async, attendre, "mort");
  ASSERT_TRUE(porte.horloge.attentes.try_acquire_for(20s));
  const auto silencieux = porte.connecter();
  porte.plateau.arreter();
  porte.serveur.reset();  // returns: neither the wait nor the silent client holds it
}

TEST(Serveur, UnClientMuetRendSaPlace) {
  const Porte porte({.jeton = {}, .pannes = {}, .connexionsMax = 1, .patience = 50ms});
  auto muet = porte.connecter();
  muet << "POST /action HTTP/1.1\r\nAuthor" << std::flush;
  EXPECT_EQ(porte.appeler(requete(taches)), "200 " + aucune);
}

TEST(Serveur, PannesDemandees) {
  const std::pair<Pannes, std::string> cas[] = {
      {{.retard = 20ms, .statut = {}, .corps = {}}, "200 " + aucune},
      {{.couper = true, .statut = {}, .corps = {}},
       "200 " + aucune.substr(0, aucune.size() / 2) + " sur " + std::to_string(aucune.size())},
      {{.statut = 500, .corps = "pas du JSON"}, "500 pas du JSON"},
  };
  for (const auto& [pannes, attendue] : cas) {
    const Porte porte({.jeton = {}, .pannes = pannes});
    const auto debut = std::chrono::steady_clock::now();
    EXPECT_EQ(porte.appeler(requete(taches)), attendue);
    EXPECT_GE(std::chrono::steady_clock::now() - debut, pannes.retard);
  }
}

TEST(FichierEndpoint, NEstRetireQueParLaPorteQuilNomme) {
  const DossierTemporaire dossier;
  const auto chemin = dossier.chemin() / "a b/c/porte.json";
  {
    const auto fichier = FichierEndpoint::ecrire(chemin, {"127.0.0.1", 7, 4242, "s"});
    ASSERT_TRUE(fichier);
    std::ofstream(chemin) << R"({"host":"127.0.0.1","pid":8,"port":1,"token":"s"})";
  }
  EXPECT_TRUE(std::filesystem::exists(chemin));  // another door's by now
}

}  // namespace
}  // namespace tarnavelle::PorteEssai
