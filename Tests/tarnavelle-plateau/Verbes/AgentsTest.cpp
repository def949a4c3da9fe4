// Agents that cannot be followed, read, or started: what is said of them, and what is not claimed.
#include <gtest/gtest.h>

#include "DossierTemporaire.hpp"
#include "Etats/VeilleReelle.hpp"
#include "HorlogeSauteuse.hpp"
#include "TerminauxSimules/TerminauxSimules.hpp"
#include "Verbes/Executeur.hpp"

namespace tarnavelle::Plateau {
namespace {

/// Starts so many, and no more.
class LanceursComptes final : public Lanceurs {
 public:
  int reste = 100;
  std::vector<std::string> oublies;

  std::optional<std::string> usuel() override { return "grok"; }
  std::optional<std::string> empechement(const Embarquement&) const override {
    return reste > 0 ? std::nullopt : std::optional<std::string>("Plus de place.");
  }
  Resultat<Depart, std::string> agent(const Embarquement& e) override {
    if (reste-- <= 0) return Sinon{std::string("Plus de place.")};
    return LanceursSimules().agent(e);
  }
  std::optional<Lancement> shell(const std::string&, const std::string&, const std::string&,
                                 const std::string&) override {
    return std::nullopt;
  }
  void oublier(const std::string& cle) override { oublies.push_back(cle); }
};

/// Its verifications end as it is told.
class MachineDite final : public Machine {
 public:
  Issue issue;
  Issue verifier(const Verification&) override { return issue; }
  std::optional<std::string> ouvrirWeb(const std::string&) override { return std::nullopt; }
};

class AgentsTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(registre_->ajouterScene("Sources", "/s")); }
  std::string dire(Json corps, const Appelant& appelant = {}) {
    const auto r = executeur_.executer(corps, appelant);
    return r.ok ? r.spoken_text.value() : "KO " + r.error.value();
  }

  DossierTemporaire dossier_;
  HorlogeSauteuse horloge_;
  Resultat<Registre, Avarie> registre_ = Registre::enMemoire();
  TerminauxSimules terminaux_{[this] { return horloge_.maintenant(); }};
  VeilleReelle veille_{terminaux_, CatalogueRegles(""), dossier_.chemin(),
                       [this] { return horloge_.maintenant(); }};
  LanceursComptes lanceurs_;
  MachineDite machine_;
  Executeur executeur_{{.terminaux = terminaux_,
                        .registre = *registre_,
                        .veille = veille_,
                        .horloge = horloge_,
                        .lanceurs = lanceurs_,
                        .machine = &machine_}};
};

TEST_F(AgentsTest, CeQuiNeSeLitPasNEstPasAffirme) {
  EXPECT_EQ(dire({{"action", "ouvrir_agent"}}), "Merlin est ouvert : grok dans /s.");
  EXPECT_EQ(dire({{"action", "dicter"}, {"texte", "va"}}),
            "Tapé chez Merlin, sans preuve que ce soit parti : le plateau ne sait pas lire l'écran de grok.");
  EXPECT_EQ(dire({{"action", "diffuser"}, {"texte", "va"}}),
            "Personne ne l'a reçu. Tapé sans preuve chez Merlin.");
  EXPECT_EQ(dire({{"action", "souffler"}, {"agent", "Merlin"}, {"texte", "va"}}),
            "Gardé pour Merlin : le plateau ne sait pas quand grok est au repos.");
}

TEST_F(AgentsTest, PersonneNEstTapeSansEtreSuivi) {
  // As a door leaves them that opened while tmux did not answer.
  const auto terminal = terminaux_.ouvrir(
      {.cle = "a1", .session = "t", .mots = {"grok"}, .environnement = {}, .dossier = "/s", .taille = {}});
  ASSERT_TRUE(registre_->garderAgent(
      {.id = "a1", .nom = "Merlin", .programme = "grok", .scene = 1, .terminal = terminal->id.valeur}));
  EXPECT_EQ(dire({{"action", "dicter"}, {"agent", "Merlin"}, {"texte", "va"}}),
            "KO Rien n'a été tapé chez Merlin : les terminaux ne répondent pas.");
  EXPECT_EQ(terminaux_.vie(terminal->id).soumises, 0U);
}

TEST_F(AgentsTest, CeuxQuiManquentSontDits) {
  lanceurs_.reste = 2;
  EXPECT_EQ(dire({{"action", "pondre_agent"}, {"cli", "grok"}, {"prompt", "va"}, {"nombre", 4}}),
            "Sans preuve que la consigne soit partie : Merlin, Milan. Il en manque 2 : Plus de place.");
  EXPECT_EQ(registre_->agents()->size(), 2U);
  EXPECT_EQ(lanceurs_.oublies.size(), 1U);  // of the third, nothing stays
  EXPECT_EQ(dire({{"action", "pondre_agent"}, {"cli", "grok"}, {"prompt", "va"}, {"nombre", 2}}),
            "KO Plus de place.");
}

TEST_F(AgentsTest, QuiNePeutPasEtreRelanceContinue) {
  dire({{"action", "ouvrir_agent"}});
  lanceurs_.reste = 0;
  EXPECT_EQ(dire({{"action", "relancer_agent"}, {"agent", "Merlin"}}),
            "KO Merlin n'est pas relancé. Plus de place.");
  EXPECT_TRUE(terminaux_.ecran({registre_->agents()->front().terminal}));
}

TEST_F(AgentsTest, UneTacheSeRepareEtSAttesteANouveau) {
  dire({{"action", "pondre_agent"}, {"cli", "grok"}, {"prompt", "va"}, {"verify", "make test"}});
  const struct {
    int statut;
    bool horsDelai;
    const char* attendu;
  } essais[] = {{1, false, "Merlin : unknown (statut 1)."},
                {-1, true, "Merlin : unknown (hors délai)."},
                {0, false, "Merlin : done."},
                {2, false, "Merlin : done."}};  // for good
  for (const auto& essai : essais) {
    machine_.issue.statut = essai.statut;
    machine_.issue.horsDelai = essai.horsDelai;
    const bool due = registre_->taches()->front().etat != FicheTache::Etat::done;
    dire({{"action", "fini"}, {"agent", "Merlin"}});
    EXPECT_EQ(dire({{"action", "taches"}}), due ? "Merlin : en cours (vérification)." : essai.attendu);
    executeur_.avancer();
    EXPECT_EQ(dire({{"action", "taches"}}), essai.attendu);
  }
}

TEST_F(AgentsTest, UnAgentOublieNeParlePlus) {
  EXPECT_EQ(dire({{"action", "retiens"}, {"texte", "x"}}, {.agent = "parti", .patience = {}}),
            "KO Ce jeton est celui d'un agent que le plateau a oublié.");
}

}  // namespace
}  // namespace tarnavelle::Plateau
