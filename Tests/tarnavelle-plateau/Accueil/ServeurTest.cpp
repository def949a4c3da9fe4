#include "Accueil/ServeurHTTP.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <boost/asio/ip/tcp.hpp>
#include <cstdlib>
#include <fstream>
#include <future>
#include <semaphore>

#include "Accueil/FichierEndpoint.hpp"
#include "DossierTemporaire.hpp"
#include "Socle/LectureJSON.hpp"
#include "TerminauxSimules/PlateauSimule.hpp"

namespace tarnavelle::Plateau {
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
  std::chrono::system_clock::time_point date() const override { return reelle_.date(); }
  std::counting_semaphore<> attentes{0};

 private:
  HorlogeReelle reelle_;
};

struct Porte {
  explicit Porte(ReglagesServeur reglages = {}) {
    serveur = ServeurHTTP::ouvrir(
        std::move(reglages), Trousseau("secret", "graine"),
        [this](const Json& corps, const Appelant& appelant) {
          if (Champ::texte(corps, "action") != "qui") return plateau->executeur().executer(corps, appelant);
          return ReponsePorte::succes(appelant.agent + "/" +
                                      (appelant.patience ? std::to_string(appelant.patience->count()) : ""));
        });
    port = serveur->port();
    serveur->servir();
  }

  tcp::iostream connecter() const {
    tcp::iostream flux;
    flux.expires_after(20s);
    flux.connect(tcp::endpoint(boost::asio::ip::address_v4::loopback(), port));
    return flux;
  }

  /// With the usual Host header for "HÔTE".
  std::string adressee(std::string octets) const {
    for (std::size_t ou; (ou = octets.find("HÔTE")) != octets.npos;)
      octets.replace(ou, std::string_view("HÔTE").size(), "Host: 127.0.0.1:" + std::to_string(port));
    return octets;
  }

  /// The status and the body of the last answer to these bytes, and what its length should have been.
  std::string appeler(const std::string& octets) const {
    auto flux = connecter();
    flux << adressee(octets) << std::flush;
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
  std::unique_ptr<PlateauSimule> plateau = PlateauSimule::depart(horloge);
  std::unique_ptr<ServeurHTTP> serveur;
  std::uint16_t port = 0;
};

std::string requete(const std::string& corps, const std::string& tete = "POST /action HTTP/1.1",
                    const std::string& autorisation = "Bearer secret", const std::string& suite = "close") {
  return tete + "\r\nHÔTE\r\nConnection: " + suite + "\r\nAuthorization: " + autorisation +
         "\r\nContent-Length: " + std::to_string(corps.size()) + "\r\n\r\n" + corps;
}

const std::string taches = R"({"action":"taches"})";
const std::string aucune = R"({"data":{"taches":[]},"ok":true,"spoken_text":"Aucune tâche."})";

TEST(Serveur, RefuseCeQuiNEstPasUnAppel) {
  const Porte porte({.pannes = {}, .corpsMax = 100});
  const std::pair<std::string, std::string> cas[] = {
      {requete(taches, "POST /action HTTP/1.1", "Bearer secreT"), "401 Jeton absent ou faux."},
      {requete(taches, "POST /rien HTTP/1.1", "Basic secret"), "401 Jeton absent ou faux."},
      {"POST /action HTTP/1.1\r\nHÔTE\r\nContent-Length: 50\r\n\r\n", "401 Jeton absent ou faux."},
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
  EXPECT_FALSE(ServeurHTTP::ouvrir({.port = porte.port, .pannes = {}}, Trousseau("x"), {}));
}

TEST(Serveur, NeLegueAucuneConnexion) {
  const auto descripteurs = [] { return std::system("exit $(ls /dev/fd | wc -l)"); };
  const int avant = descripteurs();
  const Porte porte;
  auto flux = porte.connecter();
  flux << porte.adressee(requete(taches, "POST /action HTTP/1.1", "Bearer secret", "keep-alive")) << std::flush;
  std::string debut;
  std::getline(flux, debut);
  EXPECT_EQ(debut, "HTTP/1.1 200 OK\r");
  EXPECT_EQ(descripteurs(), avant + 0x100);  // our own end
}

TEST(Serveur, NEstPasPourLesPagesDUnNavigateur) {
  const Porte porte;
  const std::string port = ":" + std::to_string(porte.port);
  const std::string ailleurs = "421 Cette porte ne répond pas à ce nom d'hôte.";
  const std::pair<std::string, std::string> cas[] = {
      {"Host: LOCALHOST" + port, "200"},
      {"Host: [::1]" + port, "200"},
      {"Host: 127.0.0.1", ailleurs},
      {"Host: localhost" + port + "0", ailleurs},
      {"Host: rebond.example" + port, ailleurs},
      {"Host: localhost" + port + "\r\nHost: localhost" + port, ailleurs},
      {"X: y", ailleurs},
      {"Host: localhost" + port + "\r\nOrigin: null",
       "403 Cette porte n'est pas pour les pages d'un navigateur."},
  };
  for (const auto& [entetes, attendu] : cas) {
    std::string octets = requete(taches);
    octets.replace(octets.find("HÔTE"), std::string_view("HÔTE").size(), entetes);
    EXPECT_EQ(porte.appeler(octets), attendu == "200" ? "200 " + aucune
                                                      : attendu.substr(0, 4) + R"({"error":")" +
                                                            attendu.substr(4) + R"(","ok":false})")
        << entetes;
  }
}

TEST(Serveur, SaitQuiAppelleEtCombienDeTempsIlPeutAttendre) {
  const Porte porte;
  const std::string jeton = Trousseau("secret", "graine").jetonDe("a1").value();
  const std::pair<std::string, std::string> cas[] = {
      {"secret", "/"},
      {"secret\r\nX-Tarnavelle-Patience: 70", "/70"},
      {"secret\r\nX-Tarnavelle-Patience: 99999999999", "/3600"},
      {"secret\r\nX-Tarnavelle-Patience: -1", "/"},
      {jeton, "a1/"},
      {"a2" + jeton.substr(2), ""},
      {jeton + "0", ""},
      {"a1", ""},
      {"a1.", ""},
      {Trousseau("secret", "autre").jetonDe("a1").value(), ""},
  };
  for (const auto& [autorisation, qui] : cas)
    EXPECT_EQ(porte.appeler(requete(R"({"action":"qui"})", "POST /action HTTP/1.1", "Bearer " + autorisation)),
              qui.empty() ? R"(401 {"error":"Jeton absent ou faux.","ok":false})"
                          : R"(200 {"ok":true,"spoken_text":")" + qui + "\"}")
        << autorisation;
  EXPECT_FALSE(Trousseau("x").jetonDe("a1"));
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
  porte.plateau->executeur().arreter();
  porte.serveur.reset();  // returns: neither the wait nor the silent client holds it
}

TEST(Serveur, QuiPartSansSaReponseRendSaPlace) {
  Porte porte({.pannes = {}, .connexionsMax = 1});
  auto parti = porte.connecter();
  parti << porte.adressee(requete(R"({"action":"attendre","agent":"Merlin","timeout_s":300,"jusqu_a":"fini"})"))
        << std::flush;
  ASSERT_TRUE(porte.horloge.attentes.try_acquire_for(20s));
  parti.close();
  EXPECT_EQ(porte.appeler(requete(taches)), "200 " + aucune);
}

TEST(Serveur, UnClientMuetRendSaPlace) {
  const Porte porte({.pannes = {}, .connexionsMax = 1, .patience = 50ms});
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
    const Porte porte({.pannes = pannes});
    const auto debut = std::chrono::steady_clock::now();
    EXPECT_EQ(porte.appeler(requete(taches)), attendue);
    EXPECT_GE(std::chrono::steady_clock::now() - debut, pannes.retard);
  }
}

TEST(FichierEndpoint, UneAutrePorteEstVivanteEtEcoute) {
  const DossierTemporaire dossier;
  const Porte porte;
  const auto autre = [&](std::int64_t pid, std::int64_t port) {
    const auto fichier =
        FichierEndpoint::ecrire(dossier.chemin() / "porte.json", {"127.0.0.1", pid, port, "s"});
    return FichierEndpoint::autrePorte(dossier.chemin() / "porte.json").has_value();
  };
  EXPECT_TRUE(autre(::getppid(), porte.port));
  EXPECT_FALSE(autre(::getpid(), porte.port));
  EXPECT_FALSE(autre(INT_MAX, porte.port));
  for (const std::int64_t port : {0, 1, 70'000}) EXPECT_FALSE(autre(::getppid(), port)) << port;
  EXPECT_FALSE(FichierEndpoint::autrePorte(dossier.chemin() / "absent"));
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
}  // namespace tarnavelle::Plateau
