#include "Etats/VeilleReelle.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>

#include "Agents/CrochetAgent.hpp"
#include "DossierTemporaire.hpp"
#include "EcranEnregistre.hpp"

namespace tarnavelle::Plateau {
namespace {

using namespace std::chrono_literals;

/// Terminals that all show the same.
class Vitrine final : public Terminaux {
 public:
  std::atomic<int> regards = 0;
  std::atomic<Panne> panne = Panne::refuse;
  std::string montre;  ///< a recorded screen; none gives `panne`

  Ou<Ecran> ecran(const IdTerminal&) override {
    ++regards;
    if (montre.empty()) return Sinon{panne.load()};
    return ecranEnregistre(montre);
  }
  Ou<std::vector<Terminal>> lister() override { return Sinon{Panne::refuse}; }
  Ou<Terminal> ouvrir(const Lancement&) override { return Sinon{Panne::refuse}; }
  Ou<Terminal> relancer(const IdTerminal&, const Lancement&) override { return Sinon{Panne::refuse}; }
  Ou<Fait> terminer(const IdTerminal&) override { return Fait{}; }
  Ou<std::vector<std::string>> historique(const IdTerminal&, int) override { return Sinon{Panne::refuse}; }
  Ou<Peinture> peinture(const IdTerminal&) override { return Sinon{Panne::refuse}; }
  Ou<Fait> coller(const IdTerminal&, std::string_view) override { return Fait{}; }
  Ou<Fait> presser(const IdTerminal&, const std::vector<Touche>&) override { return Fait{}; }
  Ou<Fait> valider(const IdTerminal&, const std::vector<std::string>&) override { return Fait{}; }
  Ou<Fait> redimensionner(const IdTerminal&, Taille) override { return Fait{}; }
  void guetter(const IdTerminal&) override {}
  void laisser(const IdTerminal&) override {}
  void observer(Observateur*) override {}
};

class VeilleTest : public testing::Test {
 protected:
  void crochet(const std::string& cle, std::string_view evenement) {
    CrochetAgent::ajouter(veille.journal(cle), CrochetAgent::ligne({"claude", evenement, "{}", 0ms}));
  }
  Etat etat(const std::string& cle) { return veille.constat(cle).situation.etat; }

  DossierTemporaire dossier;
  Vitrine vitrine;
  std::atomic<int> secondes = 0;  ///< the clock
  VeilleReelle veille{vitrine, CatalogueRegles(""), dossier.chemin(),
                      [this] { return Instant{} + std::chrono::seconds(secondes); }};
};

TEST_F(VeilleTest, UnCrochetSeSaitAussitot) {
  std::mutex mutex;
  std::condition_variable reveil;
  std::vector<Etat> vus;
  veille.observer([&](const std::string& cle) {
    const std::lock_guard verrou(mutex);
    if (vus.empty() || vus.back() != etat(cle)) vus.push_back(etat(cle));
    reveil.notify_all();
  });
  veille.suivre("a/1", "claude", {"%1"});
  veille.demarrer();
  for (const auto& [evenement, attendu] : {std::pair("UserPromptSubmit", Etat::travaille),
                                           {"PermissionRequest", Etat::besoin},
                                           {"PostToolUse", Etat::travaille},
                                           {"Stop", Etat::repos}}) {
    crochet("a/1", evenement);
    std::unique_lock verrou(mutex);
    EXPECT_TRUE(reveil.wait_for(verrou, 20s, [&, a = attendu] { return !vus.empty() && vus.back() == a; }))
        << evenement;
  }
  veille.observer({});
}

TEST_F(VeilleTest, UnAgentQuiASurvecuEstRetrouveEtRegarde) {
  crochet("a", "UserPromptSubmit");
  veille.suivre("a", "claude", {"%1"});
  EXPECT_EQ(etat("a"), Etat::travaille);
  vitrine.montre = "claude/interrompu";
  for (int i = 0; i < 4; ++i) {
    ++secondes;
    veille.actualiser(Instant{} + std::chrono::seconds(secondes));
  }
  EXPECT_EQ(etat("a"), Etat::repos);
  EXPECT_EQ(veille.prochainRegard(), std::nullopt);
  veille.consigne("a", "trois\nlignes d'un seul\ntenant");
  EXPECT_EQ(veille.depuisConsigne("a", {"❯ trois", "  lignes d'un seul", "  tenant", "⏺ Oui."}),
            std::vector<std::string>{"⏺ Oui."});
  veille.suivre("a", "bash", {"%2"});
  EXPECT_FALSE(veille.saitLire("a"));
  veille.oublier("a");
  EXPECT_EQ(etat("a"), Etat::inconnu);
}

TEST_F(VeilleTest, DesTerminauxMuetsNeSontPasDemandesTourATour) {
  for (const char* cle : {"a", "b", "c"}) veille.suivre(cle, "claude", {cle});
  secondes = 10;
  vitrine.panne = Panne::muet;
  veille.actualiser(Instant{} + 10s);
  EXPECT_EQ(vitrine.regards, 1);
  vitrine.panne = Panne::mort;
  veille.actualiser(Instant{} + 10s);
  EXPECT_EQ(etat("a"), Etat::inconnu);
  EXPECT_EQ(etat("b"), Etat::sorti);
  EXPECT_EQ(etat("c"), Etat::sorti);
}

}  // namespace
}  // namespace tarnavelle::Plateau
