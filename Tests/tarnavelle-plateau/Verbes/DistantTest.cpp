// What is aimed at the cockpit of another Mac, and what is not.
#include <gtest/gtest.h>

#include "DossierTemporaire.hpp"
#include "Etats/VeilleReelle.hpp"
#include "HorlogeSauteuse.hpp"
#include "TerminauxSimules/TerminauxSimules.hpp"
#include "Verbes/Executeur.hpp"

namespace tarnavelle::Plateau {
namespace {

class Studio final : public Distant {
 public:
  const std::string& hote() const override { return nom_; }
  Vue vue(bool) override { return connu; }
  Resultat<ReponsePorte, std::string> relayer(const CommandeControle& commande) override {
    relaye = PorteDistante::corpsAction(commande).value();
    return ReponsePorte::succes("fait");
  }

  Vue connu{.plateau = PlateauMac{
                .scene = "Forge",
                .autresScenes = {"Sources", "Atelier"},
                .agents = {{"Milan", "actif"}, {"Buse", "sur « Atelier »"}, {"Buse", ""}},
                .crew = {"Notes"},
                .ancrages = {{"Milan", "Forge", "", ""}, {"Buse", "Atelier", "", ""}, {"Buse", "", "", ""}},
                .dossier = "/s"}};
  std::string relaye;

 private:
  const std::string nom_ = "anne@studio";
};

class DistantTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(registre_->ajouterScene("Sources", "/s"));
    ASSERT_EQ(dire({{"action", "ouvrir_agent"}}), "Merlin est ouvert : grok dans /s.");
  }
  std::string dire(const Json& corps, const Appelant& appelant = {}) {
    studio_.relaye.clear();
    const auto r = executeur_.executer(corps, appelant);
    return r.ok ? r.spoken_text.value() : "KO " + r.error.value();
  }

  DossierTemporaire dossier_;
  HorlogeSauteuse horloge_;
  Resultat<Registre, Avarie> registre_ = Registre::enMemoire();
  TerminauxSimules terminaux_{[this] { return horloge_.maintenant(); }};
  VeilleReelle veille_{terminaux_, CatalogueRegles(""), dossier_.chemin(),
                       [this] { return horloge_.maintenant(); }};
  class Grok final : public Lanceurs {
    std::optional<std::string> usuel() override { return "grok"; }
    Resultat<Depart, std::string> agent(const Embarquement& e) override { return LanceursSimules().agent(e); }
    std::optional<Lancement> shell(const std::string&, const std::string&, const std::string&,
                                   const std::string&) override {
      return std::nullopt;
    }
  } lanceurs_;
  Studio studio_;
  Executeur executeur_{{.terminaux = terminaux_,
                        .registre = *registre_,
                        .veille = veille_,
                        .horloge = horloge_,
                        .lanceurs = lanceurs_,
                        .distant = &studio_}};
};

TEST_F(DistantTest, CeQuiEstViseLaBasYEstRelaye) {
  const std::string fait = "Sur « anne@studio » : fait";
  const std::string seuls =
      " Seuls focus, aller_scene, ouvrir_agent et ouvrir_web se relaient sur un autre Mac.";
  const std::string pasIci = " est du plateau de « anne@studio », pas de celui-ci." + seuls;
  struct Cas {
    Json corps;
    std::string relaye, dit;
  } const tous[] = {
      {{{"action", "focus"}, {"cible", "Merlin@Anne@studio "}}, R"({"action":"focus","cible":"Merlin"})", fait},
      {{{"action", "focus"}, {"cible", "milan"}}, R"({"action":"focus","cible":"Milan"})", fait},
      {{{"action", "focus"}, {"cible", "notes"}}, R"({"action":"focus","cible":"Notes"})", fait},
      {{{"action", "focus"}, {"cible", "Merlin"}}, "", "Merlin est en grand."},
      {{{"action", "focus"}, {"cible", "Merlin@forge"}},
       "",
       "KO Aucune fenêtre ne s'appelle « Merlin@forge ». Ouvertes : Merlin."},
      {{{"action", "focus"}, {"cible", "buse"}},
       "",
       "KO Rien ne s'appelle « buse » ici, et plusieurs portent ce nom sur « anne@studio »."},
      {{{"action", "focus"}, {"cible", "@anne@studio"}}, "", "KO Il manque le nom devant « @ »."},
      {{{"action", "aller_scene"}, {"nom", "atelier"}}, R"({"action":"aller_scene","nom":"Atelier"})", fait},
      {{{"action", "aller_scene"}, {"nom", "sources"}}, "", "Scène Sources."},
      {{{"action", "aller_scene"}, {"nom", "Sources@anne@studio"}},
       R"({"action":"aller_scene","nom":"Sources"})",
       fait},
      {{{"action", "ouvrir_web"}, {"cible", "https://x.fr/@anne@studio"}}, "", "KO pas encore câblé"},
      {{{"action", "ouvrir_web"}, {"cible", "https://x.fr/@moi @anne@studio"}, {"externe", true}},
       R"({"action":"ouvrir_web","cible":"https://x.fr/@moi","externe":true})",
       fait},
      {{{"action", "ouvrir_agent"}, {"cli", "claude"}, {"dossier", "~/s"}, {"hote", "@anne@studio"}},
       R"({"action":"ouvrir_agent","cli":"claude","dossier":"~/s","hote":""})",
       fait},
      {{{"action", "ouvrir_agent"}, {"hote", "@autre"}},
       "",
       "KO Le second Mac est « anne@studio », pas « autre »."},
      {{{"action", "ouvrir_chat"}, {"hote", "@anne@studio"}}, "", "KO « @anne@studio »" + pasIci},
      {{{"action", "dicter"}, {"agent", "Milan"}, {"texte", "x"}}, "", "KO « Milan »" + pasIci},
      {{{"action", "dicter"}, {"agent", "Merlin@anne@studio"}, {"texte", "x"}}, "", "KO « Merlin »" + pasIci},
      {{{"action", "fermer"}, {"cible", "Notes"}}, "", "KO « Notes »" + pasIci},
  };
  for (const auto& cas : tous) {
    EXPECT_EQ(dire(cas.corps), cas.dit) << cas.corps;
    EXPECT_EQ(studio_.relaye, cas.relaye) << cas.corps;
  }
  // Agents stay on their own board.
  const Appelant merlin{.agent = registre_->agents()->front().id, .patience = {}};
  EXPECT_EQ(dire({{"action", "focus"}, {"cible", "Milan@anne@studio"}}, merlin),
            "KO Agir sur le plateau d'un autre Mac est réservé à l'opérateur.");
  EXPECT_EQ(dire({{"action", "focus"}, {"cible", "Milan"}}, merlin),
            "KO Aucune fenêtre ne s'appelle « Milan ». Ouvertes : Merlin.");
  EXPECT_EQ(studio_.relaye, "");
}

TEST_F(DistantTest, EtatDitLeSecondMac) {
  studio_.connu.age = std::chrono::seconds(40);
  studio_.connu.panne = "« anne@studio » ne répond pas.";
  studio_.connu.plateau->crew = {"\x1b[2J"};
  const auto etat = executeur_.executer({{"action", "etat"}});
  EXPECT_NE(
      etat.spoken_text.value().find(
          "SCÈNE VISIBLE sur le Mac : « Forge ». Autres scènes : « Sources », « Atelier ». Agents ouverts "
          "là-bas : Milan (actif), Buse (sur « Atelier »), Buse (). Fenêtres du cockpit : [2J. Vu il y a "
          "40 s. « anne@studio » ne répond pas."),
      std::string::npos)
      << *etat.spoken_text;
  const Json distant = etat.data->json().at("distant");
  EXPECT_EQ(distant.at("agents").at(0), Json({{"nom", "Milan"}, {"etat", "actif"}, {"scene", "Forge"}}));
  EXPECT_EQ(distant.at("age_s"), 40);
}

}  // namespace
}  // namespace tarnavelle::Plateau
