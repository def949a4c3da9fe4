// Hermès over real sockets: the drivers and the streaming client together, against serveur_flux.py.
#include <gtest/gtest.h>

#include "Hermes/ConversationHermes.hpp"
#include "Hermes/Dire.hpp"
#include "Hermes/EcouteNtfy.hpp"
#include "Reseau/ServeurPython.hpp"

namespace tarnavelle {
namespace {

using essai::dire;
using namespace std::chrono_literals;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int departs = 60;
#else
constexpr int departs = 1000;
#endif

class ServeurFlux : public essai::ServeurPython {
 public:
  static ServeurFlux& commun() {
    static ServeurFlux serveur;
    return serveur;
  }

  /// A place of its own where that server plays a scenario.
  std::string base(const std::string& serveur, const std::string& cadre, const std::string& scenario) {
    static int places = 0;
    const bool clair = serveur == "clair";
    return (clair ? "http://127.0.0.1:" : "https://localhost:") + port(serveur) + "/" + cadre + "/" + scenario +
           "/" + std::to_string(++places);
  }

 private:
  ServeurFlux() : ServeurPython(PYTHON, SERVEUR_FLUX) {}
};

/// The real client, less patient than what it is asked for, that says what it opens.
class FluxPresse final : public FluxLignes {
 public:
  explicit FluxPresse(int ouvertures) : ouvertures_(ouvertures) {}

  std::string journal;

  void noter(const std::string& fait) { journal += (journal.empty() ? "" : "; ") + fait; }

  std::variant<int, ErreurReseau> ouvrir(const RequeteHTTP& requete) override {
    if (ouvertures_-- == 0) return ErreurReseau::annulee;
    RequeteHTTP pressee = requete;
    pressee.delai = 700ms;
    if (requete.methode == "GET") noter(requete.url.find("?since=") == std::string::npos ? "GET" : "GET?since");
    return vrai_.ouvrir(pressee);
  }
  LectureFlux suivante(std::optional<std::chrono::milliseconds> attente) override {
    return vrai_.suivante(attente);
  }
  void fermer() override { vrai_.fermer(); }
  void pauser(std::chrono::milliseconds) override {}
  void interrompre() override { vrai_.interrompre(); }

 private:
  FluxHTTP vrai_;
  int ouvertures_;
};

constexpr auto illimite = 100;

std::string ecouter(const std::string& serveur, int ouvertures = illimite) {
  FluxPresse flux(ouvertures);
  OreilleNtfy oreille(
      flux, [] { return std::chrono::steady_clock::now().time_since_epoch(); },
      essai::raconter([&](const std::string& fait) { flux.noter(fait); }));
  flux.noter(dire(oreille.ecouter({serveur, "abcdefghijklmnopqrst-_", "tk"}, {})));
  return flux.journal;
}

std::string converser(const std::string& base) {
  FluxPresse flux(illimite);
  TourHermes tour(flux);
  const auto issue = tour.jouer({.base = base, .message = "m", .modele = "hermes"},
                                [&](const EvenementGateway& evenement) { flux.noter(dire(evenement)); });
  flux.noter(dire(issue));
  return flux.journal;
}

constexpr const char* demande = "L'oreille d'Hermès se tait : le serveur refuse la demande.";
constexpr const char* acces = "L'oreille d'Hermès se tait : le serveur refuse l'accès à ce canal.";
const std::string reprise = "; GET?since; " + std::string(acces);

TEST(HermesReel, ChaqueFauteALOreilleASonVerdict) {
  const std::pair<const char*, std::string> cas[] = {
      {"400", "GET; 400, 0; GET; " + std::string(demande)},
      {"401", "GET; " + std::string(acces)},
      {"403", "GET; " + std::string(acces)},
      {"429", "GET; 429, 60; GET; " + std::string(acces)},
      {"500", "GET; 500, 2; GET; " + std::string(acces)},
      {"refuse", "GET; ouverte; loques, 2; GET?since; 400, 0; GET; ouverte; A é; loques, 2" + reprise},
      {"muette", "GET; ouverte; le serveur n'a plus rien dit, 2" + reprise},
      {"vies", "GET; ouverte; loques, 2" + reprise},
      {"sans-fin", "GET; ouverte; loques, 2" + reprise},
      {"comprime", "GET; loques, 2; GET; " + std::string(acces)},
  };
  auto& serveur = ServeurFlux::commun();
  for (const auto& [scenario, attendu] : cas)
    for (const char* cadre : {"brut", "chunked"})
      EXPECT_EQ(ecouter(serveur.base("clair", cadre, scenario)), attendu) << scenario << ' ' << cadre;
}

TEST(HermesReel, RienDePerduNiDeDeuxFois) {
  const std::string attendu =
      "GET; ouverte; A é; la liaison réseau a été coupée, 2; GET?since; ouverte; B é; C é; loques, 2; "
      "GET?since; "
      "ouverte; loques, 2" +
      reprise;
  auto& serveur = ServeurFlux::commun();
  for (const char* ou : {"clair", "localhost"})
    for (const char* cadre : {"brut", "brut1", "chunked", "chunked1"})
      EXPECT_EQ(ecouter(serveur.base(ou, cadre, "coupe")), attendu) << ou << ' ' << cadre;
}

TEST(HermesReel, ChaqueTourAUneIssue) {
  const std::pair<const char*, std::string> cas[] = {
      {"tour", "texte|a é; outil|lire|/p; texte|b; finie"},
      {"tronque", "texte|a; tronqué, rejouer"},
      {"coupe-texte", "texte|a; la liaison réseau a été coupée, rejouer"},
      {"coupe-outil", "outil|lire|/p; la liaison réseau a été coupée, annoncer"},
      {"muet", "texte|a; le serveur n'a plus rien dit, rejouer"},
      {"comprime", "tronqué, rejouer"},
      {"bavard", "tronqué, rejouer"},
      {"400", "400, session refusée"},
      {"401", "401"},
      {"404", "404, session refusée"},
      {"422", "422, session refusée"},
      {"500", "500"},
  };
  auto& serveur = ServeurFlux::commun();
  for (const auto& [scenario, attendu] : cas)
    for (const char* cadre : {"brut", "chunked"})
      EXPECT_EQ(converser(serveur.base("clair", cadre, scenario)), attendu) << scenario << ' ' << cadre;
  for (const char* ou : {"clair", "localhost"})
    for (const char* cadre : {"brut1", "chunked1"})
      EXPECT_EQ(converser(serveur.base(ou, cadre, "tour")), cas[0].second) << ou << ' ' << cadre;
}

TEST(HermesReel, NeParleQuACeluiQuOnLuiANomme) {
  auto& serveur = ServeurFlux::commun();
  const std::string refus =
      "GET; la liaison chiffrée a échoué, 2; GET; la liaison chiffrée a échoué, 2; arretee";
  EXPECT_EQ(ecouter(serveur.base("ailleurs.example", "brut", "ouverte"), 2), refus);
  EXPECT_EQ(ecouter(serveur.base("perime", "brut", "ouverte"), 2), refus);
  serveur.approuver(false);
  EXPECT_EQ(ecouter(serveur.base("localhost", "brut", "ouverte"), 2), refus);
  EXPECT_EQ(converser(serveur.base("localhost", "brut", "tour")), "la liaison chiffrée a échoué, rejouer");
  serveur.approuver(true);
  EXPECT_EQ(converser("http://127.0.0.1:1"), "la passerelle d'Hermès est injoignable, rejouer");
}

/// Starts and stops the ear or a turn that many times, at every moment of its life.
template <class Ecoute, class Suivre>
void partirEtRevenir(int fois, Ecoute creer, Suivre suivre) {
  for (int i = 0; i < fois; ++i) {
    auto ecoute = creer();
    std::thread fil([&] { suivre(*ecoute); });
    std::this_thread::sleep_for(std::chrono::microseconds(i % 40 * 100));
    ecoute->arreter();
    fil.join();
  }
}

TEST(HermesReel, MilleDepartsNeLaissentRien) {
  auto& serveur = ServeurFlux::commun();
  const auto tout = [&](int fois) {
    for (const char* ou : {"clair", "localhost"}) {
      const int n =
          std::string_view(ou) == "clair" ? fois : fois / 10;  // the authorities are read at each start
      const auto base = serveur.base(ou, "chunked", "ouverte");
      partirEtRevenir(
          n, [] { return std::make_unique<EcouteNtfy>(OreilleNtfy::Rappels{}); },
          [&](EcouteNtfy& ecoute) {
            const ReglageNtfy reglage{base, "abcdefghijklmnopqrst-_", "tk"};
            EXPECT_EQ(dire(ecoute.ecouter(reglage, {})), "arretee");
          });
      partirEtRevenir(
          n, [] { return std::make_unique<ConversationHermes>(); },
          [&](ConversationHermes& conversation) {
            const auto issue = conversation.jouer({.base = base, .message = "m", .modele = "m"}, {});
            EXPECT_EQ(dire(issue), "arretee");
          });
    }
  };
  tout(20);
  const auto fils = essai::compter("task");
  const auto descripteurs = essai::compter("fd");
  tout(departs);
  EXPECT_LE(essai::retomber("task", fils), fils);
  EXPECT_LE(essai::retomber("fd", descripteurs), descripteurs);
}

}  // namespace
}  // namespace tarnavelle
