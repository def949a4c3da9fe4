#include "ServeurHTTP.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <boost/asio/ip/tcp.hpp>
#include <filesystem>
#include <fstream>
#include <future>

#include "Agents/Interprete.hpp"
#include "DossierTemporaire.hpp"
#include "FichierEndpoint.hpp"
#include "Jeton.hpp"
#include "Options.hpp"
#include "Plateau.hpp"
#include "Socle/Fichiers.hpp"

namespace tarnavelle::PorteEssai {
namespace {

using boost::asio::ip::tcp;
using namespace std::chrono_literals;

struct Recue {
  int statut = 0;
  std::size_t annonce = 0;  ///< Content-Length
  std::string corps;
  bool operator==(const Recue&) const = default;

  std::string erreur() const {
    const auto reponse = ReponsePorte::lire(corps);
    return reponse && !reponse->ok ? reponse->error.value_or("") : "pas un refus : " + corps;
  }
};

std::ostream& operator<<(std::ostream& flux, const Recue& recue) {
  return flux << recue.statut << " (" << recue.annonce << ") " << recue.corps;
}

/// A client that writes bytes as they are given.
class Client {
 public:
  explicit Client(std::uint16_t port) {
    flux_.expires_after(20s);
    flux_.connect(tcp::endpoint(boost::asio::ip::address_v4::loopback(), port));
  }

  void ecrire(std::string_view octets) { flux_ << octets << std::flush; }

  /// The next response; its status is 0 when the connection ends before it.
  Recue lire() {
    Recue recue;
    std::string ligne;
    if (!std::getline(flux_, ligne) || ligne.size() < 12) return recue;
    recue.statut = std::stoi(ligne.substr(9, 3));
    while (std::getline(flux_, ligne) && ligne != "\r")
      if (ligne.starts_with("Content-Length: ")) recue.annonce = std::stoul(ligne.substr(16));
    recue.corps.resize(recue.annonce);
    flux_.read(recue.corps.data(), static_cast<std::streamsize>(recue.annonce));
    recue.corps.resize(static_cast<std::size_t>(flux_.gcount()));
    return recue;
  }

  bool terminee() { return flux_.peek() == std::char_traits<char>::eof(); }

 private:
  tcp::iostream flux_;
};

std::string requete(std::string_view corps, std::string_view tete = "POST /action HTTP/1.1",
                    std::string_view autorisation = "Authorization: Bearer secret\r\n") {
  return std::string(tete) + "\r\nHost: x\r\n" + std::string(autorisation) +
         "Content-Length: " + std::to_string(corps.size()) + "\r\n\r\n" + std::string(corps);
}

/// A real clock that tells when someone starts to wait. It does so under the board's lock: whoever acts
/// on the board afterwards finds the wait begun.
class HorlogeGuettee final : public Horloge {
 public:
  Instant maintenant() const override { return reelle_.maintenant(); }
  void attendre(std::condition_variable& reveil, std::unique_lock<std::mutex>& verrou,
                Instant echeance) override {
    if (!std::exchange(annoncee_, true)) attenteCommencee.set_value();
    reelle_.attendre(reveil, verrou, echeance);
  }
  std::promise<void> attenteCommencee;

 private:
  HorlogeReelle reelle_;
  bool annoncee_ = false;
};

struct Porte {
  explicit Porte(ReglagesServeur reglages = {}) {
    reglages.jeton = "secret";
    serveur = ServeurHTTP::ouvrir(std::move(reglages),
                                  [this](const CommandeControle& c) { return plateau.executer(c); });
  }
  std::uint16_t port() const { return serveur->port(); }
  Recue appeler(std::string_view octets) const {
    Client client(port());
    client.ecrire(octets);
    return client.lire();
  }

  HorlogeGuettee horloge;
  Plateau plateau{horloge};
  std::unique_ptr<ServeurHTTP> serveur;
};

TEST(Serveur, RefuseCeQuiNEstPasUnAppel) {
  const Porte porte({.jeton = {}, .pannes = {}, .corpsMax = 100});
  const std::string etat = R"({"action":"etat"})";
  const std::string jetonFaux = "Jeton absent ou faux.";
  const std::string illisible = "Requête HTTP illisible.";
  const struct {
    std::string octets;
    int statut;
    std::string erreur;
  } cas[] = {
      {requete(etat, "POST /action HTTP/1.1", ""), 401, jetonFaux},
      {requete(etat, "POST /action HTTP/1.1", "Authorization: Bearer secreT\r\n"), 401, jetonFaux},
      {requete(etat, "POST /action HTTP/1.1", "Authorization: Basic secret\r\n"), 401, jetonFaux},
      {requete(etat, "POST /rien HTTP/1.1", ""), 401, jetonFaux},
      {requete(etat, "POST /actions HTTP/1.1"), 404, "Rien à cette adresse : la porte est à /action."},
      {requete("", "GET /action HTTP/1.1"), 405, "La porte n'entend que POST."},
      {requete("[" + etat + "]"), 400, "Le corps doit être un objet JSON."},
      {requete(""), 400, "Le corps doit être un objet JSON."},
      {requete(std::string(101, ' ')), 413, "Corps trop grand : 100 octets au plus."},
      {"POST /action HTTP/1.1\r\nAuthorization: Bearer secret\r\nTransfer-Encoding: chunked\r\n\r\nff\r\n" +
           std::string(255, ' ') + "\r\n0\r\n\r\n",
       413, "Corps trop grand : 100 octets au plus."},
      {"POST /action HTTP/1.1\r\nX: " + std::string(17 * 1024, 'x') + "\r\n\r\n", 431, "En-têtes trop longs."},
      {"n'importe quoi\r\n\r\n", 400, illisible},
      {requete(R"({"action":"zut"})"), 200, "Verbe inconnu : « zut »."},
  };
  for (const auto& c : cas) {
    const Recue recue = porte.appeler(c.octets);
    EXPECT_EQ(recue.statut, c.statut) << c.octets.substr(0, 200);
    EXPECT_EQ(recue.erreur(), c.erreur) << c.octets.substr(0, 200);
  }
  const Recue juste = porte.appeler(requete(etat + std::string(100 - etat.size(), ' ')));
  EXPECT_EQ(juste.statut, 200) << juste;
}

TEST(Serveur, GardeLaConnexion) {
  const Porte porte;
  Client client(porte.port());
  client.ecrire(requete(R"({"action":"aller_scene","nom":"Atelier"})") + requete("[]"));  // in one go
  EXPECT_EQ(client.lire().corps,
            R"({"data":{"dossier":"~/Atelier","scene":"Atelier"},"ok":true,"spoken_text":"Scène Atelier."})");
  EXPECT_EQ(client.lire().statut, 400);
  client.ecrire(requete(R"({"action":"taches"})", "POST /action HTTP/1.1\r\nConnection: close"));
  EXPECT_EQ(client.lire().statut, 200);
  EXPECT_TRUE(client.terminee());
}

TEST(Serveur, RepondAExpect) {
  const Porte porte;
  Client client(porte.port());
  const std::string corps = R"({"action":"taches"})";
  const std::string tout = requete(corps, "POST /action HTTP/1.1\r\nExpect: 100-continue");
  client.ecrire(tout.substr(0, tout.size() - corps.size()));
  EXPECT_EQ(client.lire().statut, 100);
  client.ecrire(corps);
  EXPECT_EQ(client.lire().statut, 200);
}

TEST(Serveur, UneAutreConnexionReveilleAttendre) {
  Porte porte;
  auto attente = std::async(std::launch::async, [&] {
    return porte.appeler(requete(R"({"action":"attendre","agent":"Merlin","jusqu_a":"fini","timeout_s":300})"));
  });
  porte.horloge.attenteCommencee.get_future().wait();
  EXPECT_EQ(porte.appeler(requete(R"({"action":"fini","agent":"Merlin","note":"patch relu"})")).statut, 200);
  const auto reponse = ReponsePorte::lire(attente.get().corps);
  ASSERT_TRUE(reponse);
  EXPECT_EQ(reponse->spoken_text, "Merlin a fini.");
}

TEST(Serveur, SeFermePendantUneAttente) {
  Porte porte;
  Client client(porte.port());
  client.ecrire(requete(R"({"action":"attendre","agent":"Merlin","jusqu_a":"fini","timeout_s":300})"));
  porte.horloge.attenteCommencee.get_future().wait();
  const Client silencieux(porte.port());
  porte.plateau.arreter();
  porte.serveur.reset();  // returns: neither the wait nor the silent client holds it
}

TEST(Serveur, UnClientMuetRendSaPlace) {
  const Porte porte({.jeton = {}, .pannes = {}, .connexionsMax = 1, .patience = 50ms});
  Client muet(porte.port());
  muet.ecrire("POST /action HTTP/1.1\r\nAuthor");
  EXPECT_EQ(porte.appeler(requete(R"({"action":"taches"})")).statut, 200);
  EXPECT_TRUE(muet.terminee());
}

TEST(Serveur, PannesDemandees) {
  const std::string taches = R"({"data":{"taches":[]},"ok":true,"spoken_text":"Aucune tâche."})";
  const struct {
    Pannes pannes;
    Recue attendue;
  } cas[] = {
      {{.retard = 20ms, .couper = false, .statut = {}, .corps = {}}, {200, taches.size(), taches}},
      {{.couper = true, .statut = {}, .corps = {}}, {200, taches.size(), taches.substr(0, taches.size() / 2)}},
      {{.statut = 503, .corps = {}}, {503, taches.size(), taches}},
      {{.statut = 500, .corps = "pas du JSON"}, {500, 11, "pas du JSON"}},
      {{.statut = {}, .corps = ""}, {200, 0, ""}},
  };
  for (const auto& c : cas) {
    const Porte porte({.jeton = {}, .pannes = c.pannes});
    const auto debut = std::chrono::steady_clock::now();
    EXPECT_EQ(porte.appeler(requete(R"({"action":"taches"})")), c.attendue);
    EXPECT_GE(std::chrono::steady_clock::now() - debut, c.pannes.retard);
    EXPECT_EQ(porte.appeler(requete("{}", "POST /action HTTP/1.1", "")).statut, 401);
  }
}

TEST(Serveur, UnPortPrisNEstPasOuvert) {
  const Porte porte;
  EXPECT_FALSE(ServeurHTTP::ouvrir({.jeton = "x", .port = porte.port(), .pannes = {}}, {}));
}

unsigned droits(const std::filesystem::path& chemin) {
  struct stat etat {};
  return ::stat(chemin.c_str(), &etat) == 0 ? static_cast<unsigned>(etat.st_mode & 07777) : 0;
}

TEST(FichierEndpoint, EstPriveEtRetire) {
  const DossierTemporaire dossier;
  const auto chemin = dossier.chemin() / "a b/c/porte.json";
  const EndpointPorte endpoint{.host = "127.0.0.1", .pid = 7, .port = 4242, .token = "s"};
  {
    const auto fichier = FichierEndpoint::ecrire(chemin, endpoint);
    ASSERT_TRUE(fichier);
    EXPECT_EQ(lireFichier(chemin, 1000), R"({"host":"127.0.0.1","pid":7,"port":4242,"token":"s"})");
    EXPECT_EQ(droits(chemin), 0600u);
    EXPECT_EQ(droits(chemin.parent_path()), 0700u);
    EXPECT_EQ(droits(chemin.parent_path().parent_path()), 0700u);
  }
  EXPECT_TRUE(std::filesystem::is_empty(chemin.parent_path()));

  {
    const auto fichier = FichierEndpoint::ecrire(chemin, endpoint);
    std::ofstream(chemin) << R"({"host":"127.0.0.1","pid":8,"port":1,"token":"s"})";
  }
  EXPECT_TRUE(std::filesystem::exists(chemin));  // another door's by now
  EXPECT_FALSE(FichierEndpoint::ecrire("/dev/null/porte.json", endpoint));
}

TEST(Programme, RetireLeFichierQuandUnSignalLArrete) {
  for (const char* signal : {"TERM", "INT"}) {
    const DossierTemporaire dossier;
    const auto fin = essai::executer({"sh", "-c", R"(cd "$1"
"$0" --fichier porte.json >sortie &
until [ -s sortie ]; do sleep 0.01; done
cp porte.json copie
kill -"$2" $!; wait $!; echo $? $!)",
                                      PORTE_ESSAI, dossier.chemin(), signal},
                                     {{"PATH", ::getenv("PATH")}});
    const auto endpoint = PorteControle::lireEndpoint(dossier.chemin() / "copie");
    ASSERT_TRUE(endpoint) << fin;
    EXPECT_EQ(fin.texte, "0 " + std::to_string(endpoint->pid) + "\n") << fin;
    EXPECT_EQ(endpoint->token.size(), 64u);
    EXPECT_EQ(lireFichier(dossier.chemin() / "sortie", 1000),
              "Porte d'essai ouverte : http://127.0.0.1:" + std::to_string(endpoint->port) + "\n");
    EXPECT_FALSE(std::filesystem::exists(dossier.chemin() / "porte.json"));
  }
}

TEST(Options, RefuseCeQuiNeConvientPas) {
  const struct {
    std::vector<std::string> arguments;
    std::string refus;
  } cas[] = {
      {{"--prot", "1"}, "Option inconnue : « --prot ». Voir --help."},
      {{"--port"}, "Il manque la valeur de --port."},
      {{"--port", "65536"}, "La valeur de --port ne convient pas. Voir --help."},
      {{"--fichier", "/tmp/"}, "La valeur de --fichier ne convient pas. Voir --help."},
      {{"--jeton", "secret\r\n"}, "La valeur de --jeton ne convient pas. Voir --help."},
      {{"--statut", "204"}, "La valeur de --statut ne convient pas. Voir --help."},
  };
  for (const auto& c : cas) {
    const auto lu = Options::lire(c.arguments);
    const auto* refus = std::get_if<std::string>(&lu);
    EXPECT_EQ(refus ? *refus : "accepté", c.refus) << c.arguments[0];
  }
}

}  // namespace
}  // namespace tarnavelle::PorteEssai
