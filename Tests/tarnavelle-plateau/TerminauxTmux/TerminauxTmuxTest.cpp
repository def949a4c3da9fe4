#include "TerminauxTmux/TerminauxTmux.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <string>

#include "Socle/Fichiers.hpp"
#include "Terrain.hpp"

namespace tarnavelle::Plateau {
namespace {

class TerminauxReels : public essai::Terrain {
 protected:
  std::string lire(const std::string& nom) const {
    return lireFichier(dossier.chemin() / nom, 1'000'000).value_or("");
  }
  /// Runs, and does not merely wait for its parent to hear of its end.
  static bool vit(const std::string& pid) {
    return std::system(
               ("ps -o stat= -p " + std::to_string(std::atoi(pid.c_str())) + " | grep -q '^[^Z]'").c_str()) ==
           0;
  }
};

TEST_F(TerminauxReels, UnProgrammeRecoitSesMotsEtSesSecretsSansQueNulNeLesVoie) {
  reglages.environnement["CLAUDECODE"] = "1";
  reglages.environnement["TARNAVELLE_CONTROL_TOKEN"] = "ailleurs";
  poser();
  auto l = lancement("agent-1",
                     {"sh", "-c",
                      "printf '<%s>' \"$@\" > mots; printf '%s %s %s %s ' \"$JETON\" \"$TMUX$TMUX_PANE\" "
                      "\"$CLAUDECODE\" \"$TARNAVELLE_CONTROL_TOKEN\" > env; pwd > ici; echo PRET; exec cat",
                      "--", "l'été \"x\"", "#{pid} #(touch canari)", "$HOME `id`;", "a\nb", ";", "", "%1"});
  l.environnement = {{"JETON", "s3cr3t"}};
  const auto terminal = terrain->ouvrir(l);
  ASSERT_TRUE(terminal);
  EXPECT_TRUE(temoin.entendre("apparu cle-agent-1"));
  ASSERT_TRUE(attendreTexte(terminal->id, "PRET"));
  EXPECT_EQ(lire("mots"), "<l'été \"x\"><#{pid} #(touch canari)><$HOME `id`;><a\nb><;><><%1>");
  EXPECT_EQ(lire("env"), "s3cr3t    ");
  EXPECT_EQ(lire("ici"), dossier.chemin().string() + "\n");
  EXPECT_EQ(lire("canari"), "");
  EXPECT_NE(tmux("show-environment -g | grep -E 's3cr3t|CLAUDECODE|ailleurs'"), 0);

  // Its launch is gone; whatever stays in the folder is ours alone.
  for (const auto& entree : std::filesystem::directory_iterator(reglages.dossier)) {
    EXPECT_EQ(entree.path().filename().string().find("lancement"), std::string::npos);
    EXPECT_EQ(static_cast<int>(entree.status().permissions()) & 077, 0) << entree.path();
  }
  EXPECT_EQ(static_cast<int>(std::filesystem::status(reglages.dossier).permissions()), 0700);

  const auto liste = terrain->lister();
  ASSERT_TRUE(liste);
  ASSERT_EQ(liste->size(), 1u);
  EXPECT_EQ(liste->front().cle, "cle-agent-1");
  EXPECT_EQ(liste->front().session, "agent-1");
  EXPECT_EQ(liste->front().processus, terminal->processus);
  EXPECT_FALSE(liste->front().mort);
  EXPECT_EQ(terrain->ouvrir(l).raison(), Panne::refuse);  // the name is taken
}

TEST_F(TerminauxReels, RefuseCeQuiNeDesigneRien) {
  for (const char* nom : {"", "a:b", "a.b", "=a", "%1", "$1", "a b", "#{pid}", "plateau", "-x"})
    EXPECT_EQ(terrain->ouvrir(lancement(nom, {"cat"})).raison(), Panne::refuse) << nom;
  for (const char* id : {"", "%", "1", "%1;kill-server", "=plateau:", "plateau", "%99999"}) {
    EXPECT_EQ(terrain->ecran({id}).raison(), Panne::inconnu) << id;
    EXPECT_EQ(terrain->coller({id}, "x").raison(), Panne::inconnu) << id;
    EXPECT_EQ(terrain->presser({id}, {"esc"}).raison(), Panne::inconnu) << id;
    EXPECT_EQ(terrain->valider({id}, {"x"}).raison(), Panne::inconnu) << id;
    EXPECT_EQ(terrain->historique({id}, 5).raison(), Panne::inconnu) << id;
    EXPECT_EQ(terrain->redimensionner({id}, {}).raison(), Panne::inconnu) << id;
    EXPECT_EQ(terrain->terminer({id}).raison(), Panne::inconnu) << id;
  }
}

TEST_F(TerminauxReels, UnProgrammeFiniLaisseSonEcranEtSonStatut) {
  const auto id = ouvrir("bref", "echo ADIEU; read x; exit 3");
  ASSERT_TRUE(attendreTexte(id, "ADIEU"));
  ASSERT_TRUE(terrain->valider(id, {}));
  EXPECT_TRUE(temoin.entendre("termine " + id.valeur + " 3"));
  const auto ecran = terrain->ecran(id);
  ASSERT_TRUE(ecran);
  EXPECT_EQ(ecran->lignes.front(), "ADIEU");
  EXPECT_EQ(ecran->lignes.back(), "");
  // A dead pane, into which a paste would take the server down.
  EXPECT_EQ(terrain->coller(id, "x").raison(), Panne::mort);
  EXPECT_EQ(terrain->presser(id, {"entree"}).raison(), Panne::mort);
  EXPECT_EQ(terrain->valider(id, {}).raison(), Panne::mort);

  // Anew in the same terminal, even while it is watched.
  terrain->guetter(id);
  const auto relance =
      terrain->relancer(id, lancement("bref", {"sh", "-c", "echo ENCORE; read x; kill -KILL $$"}));
  ASSERT_TRUE(relance);
  EXPECT_EQ(relance->id, id);
  EXPECT_TRUE(attendreTexte(id, "ENCORE"));
  ASSERT_TRUE(terrain->valider(id, {}));
  EXPECT_TRUE(temoin.entendre("termine " + id.valeur + " 137"));
  const auto vivant = ouvrir("vivant", "exec cat");
  EXPECT_EQ(terrain->relancer(vivant, lancement("vivant", {"cat"})).raison(), Panne::condition);

  const auto absent = terrain->ouvrir(lancement("absent", {"/nulle/part"}));
  ASSERT_TRUE(absent);
  EXPECT_TRUE(temoin.entendre("termine " + absent->id.valeur + " 127"));
  EXPECT_TRUE(porte(*terrain->ecran(absent->id), "le programme n'a pas pu être lancé « /nulle/part »"));
  auto ailleurs = lancement("ailleurs", {"cat"});
  ailleurs.dossier = "/nulle/part #{pid}";
  const auto perdu = terrain->ouvrir(ailleurs);
  ASSERT_TRUE(perdu);
  EXPECT_TRUE(temoin.entendre("termine " + perdu->id.valeur + " 126"));
}

TEST_F(TerminauxReels, TerminerEmporteToutCeQuIlALance) {
  // It heeds neither hang-up nor TERM, nor do its children, one of them in a session of its own, which has a
  // daemon: that one is nobody's here.
  reglages.sursis = std::chrono::milliseconds(100);
  poser();
  const auto id =
      ouvrir("tenace",
             "trap '' HUP TERM; (trap '' HUP TERM; echo $$ > pere; exec sleep 1000) & echo $! > fils; "
             "python3 -c 'import os, subprocess, sys, time; os.setsid(); d = subprocess.Popen([sys.executable, "
             "\"-c\", \"import time; time.sleep(1000)\"], start_new_session=True); "
             "open(\"parti\", \"w\").write(str(os.getpid())); open(\"demon\", \"w\").write(str(d.pid)); "
             "print(\"PRET\", flush=True); time.sleep(1000)' & while :; do sleep 1; done");
  ASSERT_TRUE(attendreTexte(id, "PRET"));
  const auto pere = lire("pere"), fils = lire("fils"), parti = lire("parti"), demon = lire("demon");
  ASSERT_TRUE(vit(pere) && vit(fils) && vit(parti) && vit(demon));
  EXPECT_TRUE(terrain->terminer(id));
  EXPECT_TRUE(temoin.entendre("disparu " + id.valeur));
  EXPECT_FALSE(vit(pere));
  EXPECT_FALSE(vit(fils));
  EXPECT_FALSE(vit(parti));
  EXPECT_TRUE(vit(demon));
  ::kill(std::atoi(demon.c_str()), SIGKILL);
  EXPECT_EQ(terrain->terminer(id).raison(), Panne::inconnu);
  // Also what a program that has ended left behind.
  const auto orphelin =
      ouvrir("orphelin", "(trap '' HUP; echo PRET; exec sleep 1000) & echo $! > fils; wait $! & sleep 0");
  ASSERT_TRUE(temoin.entendre("termine " + orphelin.valeur + " 0"));
  EXPECT_TRUE(terrain->terminer(orphelin));
  EXPECT_FALSE(vit(lire("fils")));
}

#if defined(__linux__)
TEST_F(TerminauxReels, CeQuiASurviveASonProgrammeFinitAvecSonTerminal) {
  // Processes of the whole machine are looked at: a mark that no other run of this test has.
  const std::string marque = "MARQUE=" + dossier.chemin().string() + "-";
  reglages.marque = [&](const std::string& cle) { return marque + cle; };
  reglages.demons = {"partage"};
  poser();
  std::filesystem::copy_file("/bin/sleep", dossier.chemin() / "partage");
  for (const bool fermeAvant : {false, true}) {
    const auto id = ouvrir("mort", "export '" + marque +
                                       "cle-mort'; rm -f parti demon; "
                                       "setsid sh -c 'echo $$ > parti; exec sleep 1000' & "
                                       "setsid sh -c 'echo $$ > demon; exec ./partage 1000' & "
                                       "until [ -s parti ] && [ -s demon ]; do sleep 0.01; done");
    ASSERT_TRUE(temoin.entendre("termine " + id.valeur + " 0"));
    const auto parti = lire("parti"), demon = lire("demon");
    ASSERT_TRUE(vit(parti) && vit(demon));
    if (fermeAvant) tmux("kill-session -t mort");  // by a person's hand
    EXPECT_EQ(static_cast<bool>(terrain->terminer({fermeAvant ? "" : id.valeur, "cle-mort"})), !fermeAvant);
    EXPECT_FALSE(vit(parti));
    EXPECT_TRUE(vit(demon));
    ::kill(std::atoi(demon.c_str()), SIGKILL);
  }
}
#endif

TEST_F(TerminauxReels, LesTerminauxSurviventAuPlateau) {
  const auto id = ouvrir("durable", "echo PRET; read x; exit 5");
  ASSERT_TRUE(attendreTexte(id, "PRET"));
  auto autre = reglages;
  autre.dossier = dossier.chemin() / "autre";
  const auto second = TerminauxTmux::ouvrir(autre);
  ASSERT_FALSE(second);
  EXPECT_EQ(second.raison(),
            "un autre plateau tient déjà ces terminaux (processus " + std::to_string(::getpid()) + ").");
  const auto reste = dossier.ecrire("plateau/collage-1-1", "secret");
  const auto jeune = dossier.ecrire("plateau/lancement-1-2", "à lire");
  std::filesystem::last_write_time(reste, std::filesystem::last_write_time(jeune) - std::chrono::minutes(2));
  poser();
  EXPECT_FALSE(std::filesystem::exists(reste));
  EXPECT_TRUE(std::filesystem::exists(jeune));
  EXPECT_TRUE(temoin.entendre("apparu cle-durable"));
  EXPECT_TRUE(terrain->valider(id, {}));
  EXPECT_TRUE(temoin.entendre("termine " + id.valeur + " 5"));
}

TEST_F(TerminauxReels, LaTailleNeDependPasDeQuiRegarde) {
  const auto id = ouvrir("taille", "while read x; do stty size; done");
  ASSERT_TRUE(terrain->redimensionner(id, {120, 40}));
  ASSERT_TRUE(terrain->presser(id, {"entree"}));
  EXPECT_TRUE(attendreTexte(id, "40 120"));
  EXPECT_EQ(terrain->redimensionner(id, {0, 40}).raison(), Panne::refuse);
  EXPECT_EQ(terrain->redimensionner(id, {100'000, 40}).raison(), Panne::refuse);
  EXPECT_EQ(terrain->motsPourRegarder("taille").back(), "=taille");
}

}  // namespace
}  // namespace tarnavelle::Plateau
