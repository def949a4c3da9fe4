#include "Vues/VuesTmux.hpp"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <mutex>

#include "Personne.hpp"
#include "tarnavelle-plateau/TerminauxTmux/Terrain.hpp"

namespace tarnavelle::Plateau {
namespace {

using essai::Personne;
using Rangement = Vues::Rangement;

/// Agents do what the test says.
class VeilleDictee final : public Veille {
 public:
  void dicter(const std::string& cle, Etat etat, const std::string& element = "") {
    const std::lock_guard garde(verrou_);
    Situation& s = situations_[cle];
    s.etat = s.activite = etat;
    s.preuve.element = element;
  }
  Constat constat(const std::string& cle) override {
    const std::lock_guard garde(verrou_);
    Constat constat;
    constat.situation = situations_[cle];
    return constat;
  }
  void suivre(const std::string&, const std::string&, const IdTerminal&) override {}
  void oublier(const std::string&) override {}
  void termine(const std::string&, std::optional<int>) override {}
  LectureEcran lire(const std::string&, const Ecran&) override { return {}; }
  bool saitLire(const std::string&) override { return false; }
  std::vector<std::string> gardes(const std::string&) override { return {}; }
  Signes signes(const std::string&) override { return {}; }
  std::vector<std::string> depuisConsigne(const std::string&, const std::vector<std::string>&) override {
    return {};
  }
  void consigne(const std::string&, std::string_view) override {}
  void touches(const std::string&, const std::vector<Touche>&) override {}
  void declarerFini(const std::string&) override {}
  void declarerBloque(const std::string&, std::string_view) override {}
  void guetter(const std::string&) override {}
  void laisser(const std::string&) override {}
  void actualiser(Instant) override {}
  std::optional<Instant> prochainRegard() override { return std::nullopt; }
  void observer(std::function<void(const std::string&)>) override {}

 private:
  std::mutex verrou_;
  std::map<std::string, Situation> situations_;
};

class AlertesRetenues final : public Alertes {
 public:
  void donner(const Alerte& alerte) override {
    const std::lock_guard garde(verrou_);
    donnees_.push_back(alerte);
  }
  std::vector<Alerte> donnees() {
    const std::lock_guard garde(verrou_);
    return donnees_;
  }

 private:
  std::mutex verrou_;
  std::vector<Alerte> donnees_;
};

class Retenus {
 public:
  void garder(const std::string& mot) {
    const std::lock_guard garde(verrou_);
    tout_ += mot + " ";
  }
  std::string tout() {
    const std::lock_guard garde(verrou_);
    return tout_;
  }

 private:
  std::mutex verrou_;
  std::string tout_;
};

class VuesReelles : public essai::Terrain {
 protected:
  void SetUp() override {
    Terrain::SetUp();
    if (!terrain) return;
    ASSERT_TRUE(registre.ajouterScene("Sources", "/"));
    ouvrirPorte();
  }
  void TearDown() override {
    vues.reset();
    Terrain::TearDown();
  }
  void ouvrirPorte() {
    vues = std::make_unique<VuesTmux>(
        *terrain, registre, veille, alertes,
        ReglagesVues{.dossier = dossier.chemin() / "vues",
                     .liste = {PLATEAU, "liste"},
                     .regard = [this](const std::vector<std::string>& mots) { regards.garder(mots.back()); }});
    ASSERT_EQ(vues->demarrer(), std::nullopt);
  }
  void agent(const std::string& nom, std::int64_t scene = 1, const std::string& script = "exec cat") {
    FicheAgent fiche;
    fiche.id = "cle-" + nom;
    fiche.nom = nom;
    fiche.programme = "claude";
    fiche.scene = scene;
    fiche.session = nom;
    fiche.ouverture = Date::Instant(std::chrono::milliseconds(++agents_));
    auto l = lancement(nom, {"sh", "-c", script});
    l.taille = {};
    fiche.terminal = terrain->ouvrir(l)->id.valeur;
    ASSERT_TRUE(registre.garderAgent(fiche));
    vues->rafraichir();
  }
  std::unique_ptr<Personne> personne(unsigned short colonnes, unsigned short lignes) {
    return std::make_unique<Personne>(vues->motsPourRegarder(), colonnes, lignes);
  }
  std::string dit(const std::string& commande) {
    const auto ecrits = terrain->commander(commande);
    return ecrits && !ecrits->empty() ? ecrits->front() : "";
  }
  std::string volets(int scene = 1) {
    return dit("list-panes -t =tarnavelle-scene-" + std::to_string(scene) +
               ": -F \"#{?@tarnavelle-liste,liste,#{@tarnavelle-vue}} "
               "#{pane_left},#{pane_top} #{pane_width}x#{pane_height}\"");
  }
  std::string tailles() {
    return dit(
        "list-panes -a -f \"#{@tarnavelle-cle}\" -F \"#{session_name} #{window_width}x#{window_height}\"");
  }
  /// Waits until it reads so, and tells what it read else.
  template <class Lecture>
  void attendre(Lecture lecture, const std::string& attendu) {
    jusqua([&] { return lecture() == attendu; });
    EXPECT_EQ(lecture(), attendu);
  }

  Registre registre = *Registre::enMemoire();
  VeilleDictee veille;
  AlertesRetenues alertes;
  Retenus regards;
  std::unique_ptr<VuesTmux> vues;
  int agents_ = 0;
};

constexpr const char* toutesOrdinaires = "a 200x50\nb 200x50\nc 200x50\nd 200x50\ne 200x50\nf 200x50\n";

TEST_F(VuesReelles, SixAgentsDontQuatreSontVusATailleLisible) {
  for (const char* nom : {"a", "b", "c", "d", "e", "f"}) agent(nom);
  registre.regarder(1, "cle-f");
  EXPECT_EQ(tailles(), toutesOrdinaires);
  attendre([&] { return volets(); }, "liste 0,1 200x49\n");
  EXPECT_EQ(*vues->ranger(1, "grille", ""), Rangement::ignore);  // nobody sees it

  // Another program's control client sees what it is told, not what we draw.
  auto mots = vues->motsPourRegarder();
  mots.insert(std::ranges::find(mots, "attach-session"), "-C");
  Personne programme(mots, 90, 30);
  attendre([&] { return dit("list-clients -F \"#{client_control_mode}\""); }, "1\n1\n");
  EXPECT_EQ(*vues->ranger(1, "grille", ""), Rangement::ignore);
  EXPECT_EQ(tailles(), toutesOrdinaires);
  programme.partir();

  auto p = personne(200, 50);
  const auto lire = [&] { return volets() + tailles(); };
  attendre(lire,
           "liste 0,1 30x48\ncle-a 31,1 84x23\ncle-b 116,1 84x23\ncle-c 31,25 84x24\ncle-f 116,25 84x24\n"
           "a 84x24\nb 84x24\nc 84x24\nd 200x50\ne 200x50\nf 84x24\n");
  EXPECT_EQ(*vues->ranger(1, "grille", "cle-e"), Rangement::sansVue);
  EXPECT_EQ(*vues->ranger(1, "apercu_agents", "cle-e"), Rangement::vu);
  EXPECT_EQ(lire(),
            "liste 0,1 30x48\ncle-e 31,1 88x48\ncle-a 120,1 80x14\ncle-b 120,16 80x15\ncle-f 120,32 80x17\n"
            "a 80x24\nb 80x24\nc 200x50\nd 200x50\ne 88x48\nf 80x24\n");
  EXPECT_EQ(*vues->ranger(1, "scene", ""), Rangement::vu);
  EXPECT_EQ(volets(), "liste 0,1 30x48\ncle-f 31,1 169x23\ncle-a 31,25 84x24\ncle-b 116,25 84x24\n");
  EXPECT_EQ(*vues->ranger(1, "colonnes", ""), Rangement::vu);
  EXPECT_EQ(volets(), "liste 0,1 30x48\ncle-a 31,1 84x48\ncle-f 116,1 84x48\n");

  // A wide one: all on one row, where two would be too low.
  p->redimensionner(290, 40);
  EXPECT_EQ(*vues->ranger(1, "grille", ""), Rangement::vu);
  attendre([&] { return volets(); },
           "liste 0,1 30x38\ncle-a 31,1 85x38\ncle-b 117,1 85x38\ncle-f 203,1 87x38\n");

  // A small terminal: one view, which pans.
  p->redimensionner(60, 20);
  attendre(lire,
           "liste 0,1 60x2\ncle-f 0,4 60x15\na 200x50\nb 200x50\nc 200x50\nd 200x50\ne 200x50\nf 80x24\n");
  p->redimensionner(60, 6);
  attendre([&] { return volets(); }, "liste 0,1 60x4\n");
  EXPECT_EQ(*vues->ranger(1, "grille", ""), Rangement::sansVue);
  p->partir();
  attendre([&] { return tailles(); }, toutesOrdinaires);
  attendre([&] { return dit("list-clients -F \"#{client_control_mode}\""); }, "1\n");
}

TEST_F(VuesReelles, CeQuiNeTientPasEstCompteApresCeQuiAttend) {
  for (int n = 1; n <= 64; ++n) {
    FicheAgent fiche;
    fiche.id = fiche.nom = "n" + std::to_string(n);
    fiche.programme = "claude";
    fiche.scene = 1;
    fiche.ouverture = Date::Instant(std::chrono::milliseconds(n));
    ASSERT_TRUE(registre.garderAgent(fiche));
    veille.dicter(fiche.id, n == 40 || n == 41 ? Etat::besoin : Etat::repos, std::string(60, 'x'));
  }
  registre.coller({.texte = "un post-it qui tient sur toute la ligne d'une petite fenêtre", .scene = 1});
  registre.souffler({.destinataire = "n3", .texte = "x"});
  auto p = personne(80, 24);
  const auto ligne = [&] { return dit("show-options -v -t =tarnavelle-scene-1: @tarnavelle-ligne"); };
  constexpr auto appel = " #[fg=colour231,bg=colour160,bold] ▲ ";
  constexpr auto barre = "#[fg=colour240] │#[default]";
  attendre(ligne, std::string("#[default] Sources") + appel + "n40 #[default]" + appel + "n41 #[default]" +
                      barre + " ✉ 1" + barre + " ▪ un post-it qui tient…" + barre + " ○ n1 … et 61 autres\n");
  const auto liste = [&] { return dit("capture-pane -p -t =tarnavelle-scene-1:"); };
  const std::string debut = "Sources\n▲ n40 … · " + std::string(48, 'x');
  ASSERT_TRUE(jusqua([&] { return liste().starts_with(debut); })) << liste();
  EXPECT_NE(liste().find("\n○ n3 ✉ 1 … · au repos\n"), std::string::npos) << liste();
  EXPECT_NE(liste().find("\n… et 45 autres\n"), std::string::npos) << liste();
  ASSERT_TRUE(registre.ajouterScene("Atelier", "/"));  // where nobody is
  p->redimensionner(80, 90);
  EXPECT_TRUE(jusqua([&] { return liste().find("\n▫ Atelier · scène vide\n") != std::string::npos; }))
      << liste();
}

TEST_F(VuesReelles, FermerUneVueNeTerminePersonne) {
  agent("a", 1, "read ligne; echo \"lu $ligne\"; exec cat");
  agent("b");
  auto p = personne(200, 50);
  const std::string deux = "liste 0,1 30x48\ncle-a 31,1 84x48\ncle-b 116,1 84x48\n";
  attendre([&] { return volets(); }, deux);
  p->taper("va\r");  // the keyboard is the first view's
  const auto terminal = registre.agent("cle-a")->value().terminal;
  EXPECT_TRUE(attendreTexte({terminal}, "lu va"));
  dit("kill-pane -t =tarnavelle-scene-1:.1");
  attendre([&] { return volets() + tailles(); }, "liste 0,1 30x48\ncle-b 31,1 169x48\na 200x50\nb 169x48\n");
  EXPECT_FALSE(terrain->lister()->front().mort);
  EXPECT_EQ(*vues->ranger(1, "grille", ""), Rangement::vu);  // asked for: it is there again
  EXPECT_EQ(volets(), deux);

  // fermer: the window is gone from the scene, not its agent. A view of what ends ends too.
  FicheAgent ferme = **registre.agent("cle-a");
  ferme.ouvert = false;
  registre.garderAgent(ferme);
  vues->rafraichir();
  attendre([&] { return volets(); }, "liste 0,1 30x48\ncle-b 31,1 169x48\n");
  EXPECT_TRUE(terrain->terminer({registre.agent("cle-b")->value().terminal}));
  attendre([&] { return volets() + tailles(); }, "liste 0,1 200x48\na 200x50\n");

  // A list that was closed comes back; a pane of the person's own stays.
  dit("split-window -t =tarnavelle-scene-1: -- cat -");
  dit("kill-pane -t =tarnavelle-scene-1:.0");
  EXPECT_EQ(*vues->ranger(1, "grille", ""), Rangement::sansVue);
  EXPECT_EQ(volets().find("liste 0,1 "), 0U) << volets();
  EXPECT_NE(volets().find("\n 0,"), std::string::npos) << volets();

  // It may bear the name that he likes.
  dit("rename-session -t =tarnavelle-scene-1: \"mon plateau\"");
  attendre([&] { return regards.tout(); }, "=tarnavelle-scene-1 =mon plateau ");
  registre.coller({.texte = "vu", .scene = 1});
  EXPECT_EQ(*vues->ranger(1, "scene", ""), Rangement::sansVue);
  EXPECT_TRUE(jusqua([&] { return p->voit("▪ vu"); }));
  EXPECT_EQ(dit("show-options -v -t \"=mon plateau:\" @tarnavelle-plan"), "scene \n");
  dit("rename-session -t \"=mon plateau:\" tarnavelle-scene-1");

  // So does the scene's window, beside one of the person's own, and a scene that was killed.
  dit("new-window -t =tarnavelle-scene-1: -- cat - ; kill-window -t =tarnavelle-scene-1:0");
  EXPECT_EQ(*vues->ranger(1, "grille", ""), Rangement::sansVue);
  EXPECT_EQ(volets().find("liste 0,1 "), 0U) << volets();
  dit("kill-session -t =tarnavelle-scene-1:");
  attendre([&] { return volets(); }, "liste 0,1 200x49\n");
}

TEST_F(VuesReelles, LaPersonneSuitLaSceneEtLaSceneSuitLaPersonne) {
  ASSERT_TRUE(registre.ajouterScene("Atelier", "/"));
  agent("a");
  agent("b", 2);
  auto p = personne(120, 40);
  attendre([&] { return tailles(); }, "a 89x38\nb 200x50\n");
  registre.montrerScene(2);
  vues->rafraichir();
  attendre([&] { return tailles(); }, "a 200x50\nb 89x38\n");
  EXPECT_EQ(regards.tout(), "=tarnavelle-scene-1 =tarnavelle-scene-2 ");  // for whoever comes back
  p->taper("\x02(");                                                      // tmux's own key: the session before
  attendre([&] { return tailles() + ((*registre.scenes())[0].visible ? "1" : "2"); }, "a 89x38\nb 200x50\n1");
  attendre([&] { return regards.tout(); }, "=tarnavelle-scene-1 =tarnavelle-scene-2 =tarnavelle-scene-1 ");
  p->taper(
      "\x02"
      "d");
  attendre([&] { return tailles(); }, "a 200x50\nb 200x50\n");

  // Straight to an agent, as big as the terminal; the prefix leads out.
  Personne direct(terrain->motsPourRegarder("b"), 90, 30);
  attendre([&] { return tailles(); }, "a 200x50\nb 90x30\n");
  veille.dicter("cle-a", Etat::besoin);
  vues->rafraichir();
  EXPECT_TRUE(jusqua([&] { return direct.voit("a a besoin de vous."); })) << direct.dessine();
  direct.taper(
      "\x02"
      "d");
  attendre([&] { return tailles(); }, "a 200x50\nb 200x50\n");
}

TEST_F(VuesReelles, CeQuiVientDAilleursSeLitEtNeFaitRien) {
  const std::string canari = (dossier.chemin() / "canari").string();
  const std::string vil = "#(touch " + canari + ") #{E:pane_title} ##{pid} #[bg=red]%H\n\033[2J;\"'$(id)}";
  agent("a", 1, "printf '\\033]2;#(touch " + canari + ")\\007'; exec cat");
  FicheAgent fiche = **registre.agent("cle-a");
  fiche.nom = "Milan #(touch " + canari + ")";
  registre.garderAgent(fiche);
  registre.coller({.texte = vil, .scene = 1});
  registre.souffler({.destinataire = "cle-a", .texte = "x"});
  auto p = personne(200, 50);
  ASSERT_TRUE(jusqua([&] { return volets().find("cle-a") != std::string::npos; }));
  veille.dicter("cle-a", Etat::besoin, vil);
  vues->rafraichir();
  ASSERT_TRUE(jusqua([&] { return p->voit("a besoin de vous"); }));
  ASSERT_TRUE(jusqua([&] { return p->voit("\a"); }));
  ASSERT_TRUE(jusqua([&] { return p->voit("▪ #(touch "); }));
  const std::string debut = "#(touch " + canari.substr(0, 8);
  EXPECT_TRUE(p->voit(" ▲ Milan " + debut.substr(0, 10))) << p->dessine();
  EXPECT_TRUE(p->voit("✉ 1"));
  EXPECT_FALSE(p->voit("#{E:pane_title} #(")) << "expanded";
  const auto ligne = dit("show-options -v -t =tarnavelle-scene-1: @tarnavelle-ligne");
  EXPECT_EQ(ligne.find("#(touch"), ligne.find("##(touch") + 1);
  EXPECT_EQ(ligne.find("\n"), ligne.size() - 1);
  EXPECT_FALSE(std::filesystem::exists(canari));
  ASSERT_EQ(alertes.donnees().size(), 1U);
  EXPECT_EQ(alertes.donnees()[0].detail, vil);

  // The next door finds the scene, its view and what was told already.
  vues.reset();
  EXPECT_TRUE(jusqua([&] { return p->voit("La porte est fermée"); }));
  const auto avant = volets();
  ouvrirPorte();
  EXPECT_EQ(*vues->ranger(1, "auto", ""), Rangement::vu);
  EXPECT_EQ(volets(), avant);
  EXPECT_EQ(alertes.donnees().size(), 1U);
}

}  // namespace
}  // namespace tarnavelle::Plateau
