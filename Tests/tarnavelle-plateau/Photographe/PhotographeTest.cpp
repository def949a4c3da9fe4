#include "Photographe/PhotographeReel.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <random>

#include "Photographe/Couleurs.hpp"
#include "Pixels.hpp"
#include "Socle/Base64.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/LectureJSON.hpp"
#include "TerminauxSimules/TerminauxSimules.hpp"
#include "Terrain.hpp"
#include "Verbes/Executeur.hpp"

namespace tarnavelle::Plateau {
namespace {

using essai::Pixels;

mode_t droits(const std::filesystem::path& chemin) {
  struct stat etat {};
  return ::lstat(chemin.c_str(), &etat) == 0 ? etat.st_mode & 07777 : 0;
}

class HorlogeFixe final : public Horloge {
 public:
  Instant maintenant() const override { return {}; }
  void attendre(std::condition_variable&, std::unique_lock<std::mutex>&, Instant) override {}
  std::chrono::system_clock::time_point date() const override { return {}; }
};

/// The verb, over simulated terminals: an agent named Merlin and its scene.
class CaptureTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(registre_);
    scene_ = *registre_->ajouterScene("Sources", maison_.chemin().string());
  }
  void ouvrir(const std::string& nom) {
    FicheAgent agent{.id = "id-" + nom, .nom = nom, .programme = "claude", .scene = scene_};
    Lancement lancement;
    lancement.cle = agent.id;
    agent.terminal = terminaux_.ouvrir(lancement)->id.valeur;
    ASSERT_TRUE(registre_->garderAgent(agent));
    veille_.suivre(agent.id, agent.programme, {agent.terminal});
  }
  ReponsePorte capturer(Json corps) {
    corps["action"] = "capture";
    return executeur_.executer(corps);
  }
  std::string dit(const Json& corps) {
    const auto r = capturer(corps);
    return r.ok ? r.spoken_text.value() : "KO " + r.error.value();
  }
  std::string valeur(const Json& corps, const char* cle) {
    const auto r = capturer(corps);
    EXPECT_TRUE(r.ok) << r.error.value_or("");
    return r.ok ? Champ::texte(r.data->json(), cle) : "";
  }

  DossierTemporaire maison_;
  HorlogeFixe horloge_;
  Resultat<Registre, Avarie> registre_ = Registre::enMemoire();
  TerminauxSimules terminaux_{[] { return Instant{}; }};
  VeilleSimulee veille_{terminaux_};
  LanceursSimules lanceurs_;
  PhotographeReel photographe_{terminaux_,
                               {.dossier = maison_.chemin() / "captures",
                                .personnel = maison_.chemin(),
                                .peindre = Dessin::peindre,
                                .date = [] { return std::chrono::system_clock::time_point{}; },
                                .calendrier = Calendrier{}}};
  Executeur executeur_{{.terminaux = terminaux_,
                        .registre = *registre_,
                        .veille = veille_,
                        .horloge = horloge_,
                        .lanceurs = lanceurs_,
                        .photographe = &photographe_}};
  std::int64_t scene_ = 0;
};

TEST_F(CaptureTest, UnFichierASoiOuDuBase64) {
  EXPECT_EQ(dit({}), "KO La scène Sources est vide.");
  ouvrir("Merlin");
  const auto usuel = maison_.chemin() / "captures" / "tarnavelle-1970-01-01-000000-Merlin.png";
  EXPECT_EQ(valeur({{"cible", "merlin"}}, "chemin"), usuel.string());
  EXPECT_EQ(droits(usuel), 0600U);
  EXPECT_EQ(droits(usuel.parent_path()), 0700U);
  const auto octets = Base64::decoder(valeur({{"cible", "Merlin"}, {"inline", true}}, "png"));
  ASSERT_TRUE(octets);
  EXPECT_EQ(std::string(octets->begin(), octets->end()), lireFichier(usuel, 1 << 24));

  std::filesystem::create_directory(maison_.chemin() / "d");
  for (const auto& [chemin, attendu] : std::initializer_list<std::pair<std::string, std::string>>{
           {"d", "d/tarnavelle-1970-01-01-000000-Sources.png"},
           {" ~/d/", "d/tarnavelle-1970-01-01-000000-Sources-2.png"},
           {"d/x.png", "d/x.png"},
           {(maison_.chemin() / "d/x.PNG").string(), "d/x.PNG"},
           {"d/x.png", "d/x-2.png"}})
    EXPECT_EQ(valeur({{"chemin", chemin}}, "chemin"), (maison_.chemin() / attendu).string());
  EXPECT_EQ(dit({{"chemin", "nulle/part"}}),
            "KO « nulle/part » n'est ni un dossier qui existe, ni un fichier en .png.");
  EXPECT_EQ(dit({{"chemin", "a\nb.png"}}), "KO « chemin » porte un caractère de contrôle.");
  EXPECT_EQ(dit({{"chemin", std::string(20'000, 'a')}}), "KO « chemin » est trop long : 16384 octets au plus.");
}

TEST_F(CaptureTest, UnTerminalParti) {
  ouvrir("Merlin");
  ouvrir("Gandalf");
  const auto seul = Pixels(lireFichier(valeur({{"cible", "Merlin"}}, "chemin"), 1 << 24).value());
  const auto deux = Pixels(lireFichier(valeur({}, "chemin"), 1 << 24).value());
  EXPECT_EQ(deux.hauteur() - seul.hauteur(), seul.hauteur() - 2 * Dessin::marge + 2 * Dessin::hauteurCase);
  terminaux_.terminer({"s1"});
  EXPECT_EQ(dit({{"cible", "Merlin"}}), "KO Impossible de photographier Merlin : ce terminal n'existe plus.");
  const auto un = Pixels(lireFichier(valeur({}, "chemin"), 1 << 24).value());
  EXPECT_EQ(un.hauteur() - seul.hauteur(), 2 * Dessin::hauteurCase);  // a title, and a line for the other
}

class CaptureReelle : public essai::Terrain {};

TEST_F(CaptureReelle, LesCellulesDeTmux) {
  const auto id = ouvrir("peint",
                         "printf '\\033[44m  \\033[0m\\033[38;2;255;0;0mM\\033[0m\\n"
                         "\\033[7mM\\033[27m\\033[48;5;46m   \\033[0m\\n\\033(0q\\033(B\\033[5;4H'; cat");
  PhotographeReel photographe(
      *terrain, {.dossier = dossier.chemin() / "captures", .personnel = {}, .peindre = Dessin::peindre});
  ASSERT_TRUE(attendreTexte(id, "─"));
  attendreEcran(id, [](const Ecran& e) { return e.curseurLigne == 4; });
  const auto photo = photographe.photographier({.nom = "x", .vues = {{"x", "", id}}}, {});
  ASSERT_TRUE(photo) << photo.raison();
  const Pixels vus(lireFichier(photo->valeur, 1 << 24).value());
  EXPECT_EQ(vus.largeur(), 80 * Dessin::largeurCase + 2 * Dessin::marge);
  EXPECT_EQ(vus.hauteur(), 24 * Dessin::hauteurCase + 2 * Dessin::marge);
  EXPECT_EQ(vus.fond(0, 1), Couleurs::palette(4));
  EXPECT_GT(vus.couleurs(0, 2)[0xff0000], 5);
  EXPECT_EQ(vus.fond(1, 0), Couleurs::encrePropre);
  EXPECT_EQ(vus.fond(1, 3), 0x00ff00U);  // the blanks that end a line
  EXPECT_EQ(vus.couleurs(2, 0)[Couleurs::encrePropre], Dessin::largeurCase);
  EXPECT_EQ(vus.fond(4, 3), Couleurs::encrePropre);  // the cursor
  EXPECT_EQ(vus.fond(4, 4), Couleurs::fondPropre);
  EXPECT_EQ(photographe.photographier({.nom = "x", .vues = {{"x", "", {"%999"}}}}, {}).raison(),
            "Impossible de photographier x : ce terminal n'existe plus.");
}

/// Bytes that no program should write: a picture all the same.
TEST_F(CaptureReelle, OctetsHostiles) {
  std::mt19937 hasard(1);
  std::string octets;
  for (int i = 0; i < 60'000; ++i) octets += static_cast<char>(hasard() & 0xff);
  dossier.ecrire("octets", octets);
  const auto id = ouvrir("bruit", "stty -echo; cat octets; printf '\\030\\033\\\\\\nSUITE'; exec sleep 100");
  ASSERT_TRUE(attendreTexte(id, "SUITE"));
  PhotographeReel photographe(
      *terrain, {.dossier = dossier.chemin() / "captures", .personnel = {}, .peindre = Dessin::peindre});
  const auto photo = photographe.photographier({.nom = "x", .vues = {{"x", "", id}}}, {});
  ASSERT_TRUE(photo) << photo.raison();
  EXPECT_EQ(Pixels(lireFichier(photo->valeur, 1 << 24).value()).largeur(),
            80 * Dessin::largeurCase + 2 * Dessin::marge);
}

}  // namespace
}  // namespace tarnavelle::Plateau
