// tmux missing, too old, stopped, killed, without its socket.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <utility>

#include "Socle/Fichiers.hpp"
#include "Terrain.hpp"

namespace tarnavelle::Plateau {
namespace {

using namespace std::chrono_literals;

class AvariesTmux : public essai::Terrain {
 protected:
  void TearDown() override {
    if (serveur_ > 0) ::kill(serveur_, SIGCONT);
    Terrain::TearDown();
  }
  pid_t serveur() {
    EXPECT_EQ(tmux("run-shell 'echo #{pid} > " + (dossier.chemin() / "pid").string() + "'"), 0);
    return serveur_ = std::atoi(lireFichier(dossier.chemin() / "pid", 100).value_or("0").c_str());
  }
  pid_t serveur_ = 0;
};

TEST_F(AvariesTmux, UnTmuxQuiNeConvientPasEstRefuseParSonNom) {
  ASSERT_TRUE(terrain->eteindre());  // no program is being started while one is written
  terrain.reset();
  const auto refus = [&](const std::string& tmux) {
    auto autres = reglages;
    autres.dossier = dossier.chemin() / "autre";
    autres.tmux = tmux;
    const auto ouvert = TerminauxTmux::ouvrir(autres);
    return ouvert ? "" : ouvert.raison();
  };
  const auto faux = [&](const std::string& version) {
    const auto programme = dossier.ecrire("tmux", "#!/bin/sh\necho '" + version + "'\n");
    std::filesystem::permissions(programme, std::filesystem::perms::owner_all);
    return refus(programme.string());
  };
  for (const char* version : {"tmux 3.2", "tmux 3.2a", "tmux 3.10", "tmux next-3.6", "tmux 4.0-rc",
                              "tmux master", "tmux openbsd-7.4"})
    EXPECT_EQ(faux(version), "") << version;
  for (const char* version : {"tmux 3.1c", "tmux 2.9", "tmux 1", "3.4", "tmux", "zutmux 3.4"})
    EXPECT_EQ(faux(version), "ce tmux est trop ancien (« " + std::string(version) +
                                 " ») : il en faut un de version 3.2 ou plus récente.");
  for (const std::string& absent : {std::string("/nulle/part/tmux"), std::string("/bin/true")})
    EXPECT_EQ(
        refus(absent),
        "tmux est introuvable : c'est lui qui tient les terminaux. Installez-le (version 3.2 ou plus récente), "
        "puis relancez.");
  auto autres = reglages;
  autres.dossier = dossier.ecrire("fichier", "");
  EXPECT_EQ(TerminauxTmux::ouvrir(autres).raison(),
            "le dossier « " + autres.dossier.string() + " » ne peut pas servir.");
}

TEST_F(AvariesTmux, UnServeurArreteNeRetientPersonne) {
  reglages.delai = 2s;
  poser();
  ASSERT_TRUE(jusqua([&] { return bool(terrain->lister()); }));  // the server's start is another matter
  const auto id = ouvrir("arrete", "stty -echo; echo PRET; while read x; do echo RECU $x; done");
  ASSERT_TRUE(attendreTexte(id, "PRET"));
  ASSERT_GT(serveur(), 1);
  ::kill(serveur_, SIGSTOP);
  const auto debut = std::chrono::steady_clock::now();
  EXPECT_EQ(terrain->coller(id, "une").raison(), Panne::muet);
  // While that one is overdue nothing more is sent, and nobody waits for it.
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(terrain->coller(id, "autre").raison(), Panne::muet);
  EXPECT_EQ(terrain->ecran(id).raison(), Panne::muet);
  EXPECT_LT(std::chrono::steady_clock::now() - debut, 2 * reglages.delai);
  ::kill(serveur_, SIGCONT);
  EXPECT_TRUE(jusqua([&] { return bool(terrain->lister()); }));
  ASSERT_TRUE(terrain->valider(id, {}));
  EXPECT_TRUE(attendreTexte(id, "RECU une"));
}

TEST_F(AvariesTmux, UnServeurTueSeDitEtUnAutreReprend) {
  const auto id = ouvrir("tue", "echo PRET; exec cat");
  ASSERT_TRUE(attendreTexte(id, "PRET"));
  terrain->guetter(id);
  ASSERT_GT(serveur(), 1);
  ::kill(std::exchange(serveur_, 0), SIGKILL);
  EXPECT_TRUE(temoin.entendre("perdu"));
  EXPECT_TRUE(jusqua([&] { return bool(terrain->lister()); }));
  const auto liste = terrain->lister();
  ASSERT_TRUE(liste);
  EXPECT_TRUE(liste->empty());
  EXPECT_EQ(terrain->ecran(id).raison(), Panne::inconnu);
  const auto neuf = ouvrir("neuf", "echo PRET; exec cat");
  EXPECT_TRUE(attendreTexte(neuf, "PRET"));
  // The numbers begin again: what was meant for the one that is gone is not for whoever has its number.
  ASSERT_EQ(neuf.valeur, id.valeur);
  for (const auto& panne : {terrain->coller(id, "x").raison(), terrain->presser(id, {"x"}).raison(),
                            terrain->valider(id, {}).raison(), terrain->ecran(id).raison(),
                            terrain->peinture(id).raison(), terrain->historique(id, 5).raison(),
                            terrain->terminer(id).raison(), terrain->relancer(id, {}).raison()})
    EXPECT_EQ(panne, Panne::inconnu);
  EXPECT_TRUE(terrain->historique(neuf, 5));
  EXPECT_TRUE(terrain->peinture(neuf));
  EXPECT_TRUE(terrain->valider(neuf, {"absent"}));
}

TEST_F(AvariesTmux, UnePorteQuiFermeNeDemarreRien) {
  ASSERT_TRUE(attendreTexte(ouvrir("reste", "echo PRET; exec cat"), "PRET"));
  terrain->neRienDemarrer();
  EXPECT_TRUE(terrain->lister());
  ::kill(serveur(), SIGKILL);
  serveur_ = 0;
  EXPECT_TRUE(temoin.entendre("perdu"));
  EXPECT_EQ(terrain->commander("display-message x").raison(), Panne::absent);
  EXPECT_NE(tmux("-N list-sessions"), 0);
}

TEST_F(AvariesTmux, UnSocketRetireSeRetrouve) {
  const auto id = ouvrir("cache", "stty -echo; echo PRET; while read x; do echo RECU $x; done");
  ASSERT_TRUE(attendreTexte(id, "PRET"));
  ASSERT_EQ(::unlink(reglages.prise.c_str()), 0);
  EXPECT_TRUE(attendreTexte(id, "PRET"));  // whoever is in stays in
  poser();
  const auto liste = terrain->lister();
  ASSERT_TRUE(liste);
  ASSERT_EQ(liste->size(), 1u);
  EXPECT_EQ(liste->front().id, id);
}

}  // namespace
}  // namespace tarnavelle::Plateau
