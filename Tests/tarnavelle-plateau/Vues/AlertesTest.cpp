#include "Vues/Alertes.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <future>

#include "DossierTemporaire.hpp"
#include "Reseau/PairTCP.hpp"
#include "Socle/LectureJSON.hpp"

namespace tarnavelle::Plateau {
namespace {

using Genre = Alerte::Genre;

Apercu apercu(Etat etat, std::vector<FicheTache> closes = {}, int depuis = 0) {
  Apercu a;
  a.elements = {{.id = "1",
                 .nom = "Merlin",
                 .programme = "claude",
                 .etat = etat,
                 .depuis = Instant(std::chrono::seconds(depuis)),
                 .besoin = "Bash"}};
  a.closes = std::move(closes);
  return a;
}

TEST(GuetAlertes, UneFoisParBesoinEtParTacheMemeApresUnRedemarrage) {
  Registre registre = *Registre::enMemoire();
  const Alerte besoin{Genre::besoin, "Merlin", "Bash"};
  const std::vector<FicheTache> closes = {
      {.numero = 1, .nomAgent = "Milan", .etat = FicheTache::Etat::done, .note = "vu"},
      {.numero = 2, .nomAgent = "Buse", .prompt = "range", .etat = FicheTache::Etat::unknown}};
  const struct {
    Apercu vu;
    std::vector<Alerte> attendues;
  } suite[] = {
      {apercu(Etat::inconnu), {}},
      {apercu(Etat::besoin), {besoin}},
      {apercu(Etat::besoin), {}},
      {apercu(Etat::inconnu), {}},  // it may still need him
      {apercu(Etat::besoin, {}, 1), {}},
      {apercu(Etat::besoin, {}, 2), {besoin}},  // it was answered, and needs him again
      {apercu(Etat::besoin, {}, 2), {}},
      {apercu(Etat::travaille), {}},
      {apercu(Etat::besoin), {besoin}},
      {apercu(Etat::repos, closes),
       {{Genre::tacheFinie, "Milan", "vu"}, {Genre::tacheSansPreuve, "Buse", "range"}}},
      {apercu(Etat::repos, closes), {}},
      {apercu(Etat::repos, {closes[0]}), {}},  // the other one was opened again
      {apercu(Etat::repos, closes), {{Genre::tacheSansPreuve, "Buse", "range"}}},
      {apercu(Etat::besoin, closes), {besoin}},
  };
  GuetAlertes guet(registre);
  for (const auto& [vu, attendues] : suite) EXPECT_EQ(guet.nouvelles(vu), attendues);
  GuetAlertes apres(registre);  // the next door
  EXPECT_EQ(apres.nouvelles(apercu(Etat::besoin, closes)), std::vector<Alerte>());
  EXPECT_EQ(apres.nouvelles(apercu(Etat::sorti)), std::vector<Alerte>());
  EXPECT_EQ(GuetAlertes(registre).nouvelles(apercu(Etat::besoin)), std::vector<Alerte>{besoin});
}

/// Takes as long as the test wants.
class CanalLent final : public CanalAlertes {
 public:
  CanalLent(std::shared_future<void> suite, std::atomic<int>& donnees)
      : suite_(std::move(suite)), donnees_(donnees) {}
  std::optional<std::string> donner(const Alerte& alerte, const std::function<bool()>& arret) override {
    ++donnees_;
    while (!arret() && suite_.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) continue;
    return alerte.nom == "0" ? std::optional<std::string>("raté") : std::nullopt;
  }

 private:
  std::shared_future<void> suite_;
  std::atomic<int>& donnees_;
};

TEST(AlertesEnFile, NeFontAttendrePersonneEtDisentCeQuiSePerd) {
  std::promise<void> suite;
  std::promise<void> derniere;
  std::atomic<int> donnees = 0;
  std::vector<std::string> plaintes;
  std::vector<std::unique_ptr<CanalAlertes>> canaux;
  canaux.push_back(std::make_unique<CanalLent>(suite.get_future().share(), donnees));
  AlertesEnFile alertes(std::move(canaux), [&](const std::string& plainte) {
    plaintes.push_back(plainte);
    if (plaintes.size() == 2) derniere.set_value();
  });
  alertes.donner({Genre::besoin, "0", ""});
  while (donnees == 0) std::this_thread::yield();  // it is being given
  for (std::size_t i = 0; i < AlertesEnFile::enAttenteMax + 7; ++i)
    alertes.donner({Genre::besoin, "Merlin", ""});
  suite.set_value();
  derniere.get_future().wait();
  EXPECT_EQ(plaintes, (std::vector<std::string>{"raté", "Trop d'alertes à la fois : 7 de perdues."}));
}

TEST(AlertesEnFile, NeRetiennentPasQuiFerme) {
  std::promise<void> jamais;
  std::atomic<int> donnees = 0;
  std::vector<std::unique_ptr<CanalAlertes>> canaux;
  for (int i = 0; i < 2; ++i)
    canaux.push_back(
        std::make_unique<CanalLent>(i ? std::shared_future<void>() : jamais.get_future().share(), donnees));
  {
    AlertesEnFile alertes(std::move(canaux), [](const std::string&) {});
    alertes.donner({});
    while (donnees == 0) std::this_thread::yield();
  }
  EXPECT_EQ(donnees, 1);
}

TEST(CanalNtfy, PousseNomEtGenreEtLeDetailSurDemande) {
  const auto sansArret = [] { return false; };
  EXPECT_EQ(*canalNtfy({}), nullptr);
  EXPECT_EQ(canalNtfy({{"TARNAVELLE_NTFY_TOPIC", "court"}}).raison(),
            "Le topic ntfy fait 5 caractères ; il en faut au moins 22 — c'est un mot de passe, pas un nom.");
  for (const char* detail : {"", "1"}) {
    std::promise<std::string> recue;
    const essai::PairTCP serveur({[&](essai::Connexion& c) {
      recue.set_value(c.lireRequete());
      c.envoyer("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}");
    }});
    const auto canal =
        canalNtfy({{"TARNAVELLE_NTFY_TOPIC", "un-topic-de-24-lettres--"},
                   {"TARNAVELLE_NTFY_SERVEUR", "http://127.0.0.1:" + std::to_string(serveur.port())},
                   {"TARNAVELLE_NTFY_JETON", "tk_secret"},
                   {"TARNAVELLE_NTFY_DETAIL", detail}});
    EXPECT_EQ((*canal)->donner({Genre::besoin, "Merlin", "rm \033[1m-rf"}, sansArret), std::nullopt);
    const std::string requete = recue.get_future().get();
    EXPECT_TRUE(requete.starts_with("POST / HTTP/1.1\r\n")) << requete;
    EXPECT_NE(requete.find("\r\nAuthorization: Bearer tk_secret\r\n"), std::string::npos) << requete;
    const auto corps = LectureJSON::valeur(requete.substr(requete.find("\r\n\r\n") + 4)).value_or(nullptr);
    EXPECT_EQ(corps,
              (Json{{"topic", "un-topic-de-24-lettres--"},
                    {"title", "Tarnavelle"},
                    {"message", std::string("Merlin a besoin de vous.") + (*detail ? "\nrm [1m-rf" : "")},
                    {"priority", 4}}));
  }
}

#if !defined(__APPLE__)
TEST(CanalBureau, AppelleLeBureauAvecDesMots) {
  EXPECT_EQ(canalBureau({}), nullptr);
  const DossierTemporaire dossier;
  const auto faux =
      dossier.ecrire("notify-send", "#!/bin/sh\nprintf '<%s>' \"$@\" > \"${0%/*}/mots\"\nexit 0\n");
  std::filesystem::permissions(faux, std::filesystem::perms::owner_all);
  const std::string avant = ::getenv("PATH");
  ::setenv("PATH", (dossier.chemin().string() + ":" + avant).c_str(), 1);
  const auto sansArret = [] { return false; };
  const auto bureau = canalBureau({{"DISPLAY", ":9"}});
  EXPECT_EQ(bureau->donner({Genre::tacheFinie, "$(id) <b>", "x"}, sansArret), std::nullopt);
  ::setenv("PATH", "/nulle/part", 1);
  EXPECT_EQ(bureau->donner({}, sansArret),
            "Les alertes ne vont pas au bureau : notify-send n'est pas installé.");
  EXPECT_EQ(bureau->donner({}, sansArret), std::nullopt);
  ::setenv("PATH", avant.c_str(), 1);
  std::ifstream mots(dossier.chemin() / "mots");
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(mots), {}),
            "<--app-name><Tarnavelle><--><Tarnavelle><$(id)  b  a fini sa tâche.>");
}
#endif

}  // namespace
}  // namespace tarnavelle::Plateau
