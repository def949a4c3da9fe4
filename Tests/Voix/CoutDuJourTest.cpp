#include "Voix/CoutDuJour.hpp"

#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fcntl.h>

#include "DossierTemporaire.hpp"
#include "Socle/Fichiers.hpp"

namespace tarnavelle {
namespace {

using namespace std::chrono;

const auto soir = sys_days(2026y / March / 9) + 20h;

TEST(CoutDuJour, SAjouteAPlusieurs) {
  const DossierTemporaire dossier;
  const CoutDuJour cout(dossier.chemin() / "a" / "cout.json", Calendrier());
  EXPECT_FALSE(cout.ligne(soir));
  constexpr int programmes = 4, fois = 25;
  for (int p = 0; p < programmes; ++p)
    if (::fork() == 0) {
      int echecs = 0;
      for (int i = 0; i < fois; ++i) echecs += !cout.ajouter(0.25, soir);
      ::_exit(echecs);
    }
  for (int p = 0; p < programmes; ++p) {
    int issue = 0;
    ::wait(&issue);
    EXPECT_EQ(issue, 0);
  }
  EXPECT_EQ(cout.ligne(soir), "Aujourd'hui : 100 conversations · ~25.00 $");
  EXPECT_EQ(cout.ajouter(1, soir + days(1))->cumul, (CumulVoixDuJour{"2026-03-10", 1, 1}));
}

TEST(CoutDuJour, NEcraseRien) {
  const DossierTemporaire dossier;
  const auto fichier = dossier.ecrire("cout.json", "{coupé");
  const CoutDuJour cout(fichier, Calendrier(), milliseconds(10));
  EXPECT_FALSE(cout.lire());
  const auto ajout = cout.ajouter(0.5, soir);
  const std::string ecarte = fichier.string() + ".illisible";
  EXPECT_EQ(ajout->plainte,
            "Le coût du jour était illisible : il repart de zéro, et l'ancien fichier est mis de côté dans « " +
                ecarte + " ».");
  EXPECT_EQ(lireFichier(ecarte, 100), "{coupé");
  EXPECT_EQ(lireFichier(fichier, 100), "{\"jour\":\"2026-03-09\",\"sessions\":1,\"usd\":0.5}\n");

  // Another program holds it for too long; and a folder that cannot be.
  const int autre = ::open((fichier.string() + ".verrou").c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(::flock(autre, LOCK_EX), 0);
  EXPECT_EQ(cout.ajouter(0.5, soir).raison(),
            "Le coût du jour n'est pas gardé dans « " + fichier.string() + " » : un autre programme l'écrit.");
  ::close(autre);
  const auto dedans = CoutDuJour(fichier / "x.json", Calendrier()).ajouter(1, soir);
  EXPECT_TRUE(dedans.raison().ends_with(" : un élément du chemin n'est pas un dossier.")) << dedans.raison();
}

}  // namespace
}  // namespace tarnavelle
