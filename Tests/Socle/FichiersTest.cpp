#include "Socle/Fichiers.hpp"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <iterator>
#include <string>

#include "DossierTemporaire.hpp"

namespace tarnavelle {
namespace {

using namespace std::string_literals;

TEST(Fichiers, LectureBornee) {
  const DossierTemporaire dossier;
  for (const std::size_t taille : {1u, 16384u, 16385u, 100'000u}) {
    const auto contenu = std::string(taille / 2, '\0') + std::string(taille - taille / 2, '\xFF');
    const auto chemin = dossier.ecrire("f", contenu);
    EXPECT_EQ(lireFichier(chemin, taille), contenu) << taille;
    EXPECT_EQ(lireFichier(chemin, taille - 1), std::nullopt) << taille;
  }
}

TEST(Fichiers, Executables) {
  const DossierTemporaire dossier;
  std::filesystem::permissions(dossier.ecrire("programme", ""), std::filesystem::perms::owner_all);
  dossier.ecrire("document", "#!/bin/sh\n");
  std::filesystem::create_directory(dossier.chemin() / "dossier");
  for (const char* vers : {"programme", "dossier", "absent"})
    std::filesystem::create_symlink(vers, dossier.chemin() / ("lien-"s + vers));
  EXPECT_TRUE(fichierExecutable(dossier.chemin() / "lien-programme"));
  for (const char* nom : {"document", "dossier", "lien-dossier", "lien-absent"})
    EXPECT_FALSE(fichierExecutable(dossier.chemin() / nom)) << nom;
}

// None of these may be read, nor make the reader wait for a writer.
TEST(Fichiers, CeQuiNEstPasUnFichier) {
  const DossierTemporaire dossier;
  const auto tube = dossier.chemin() / "tube";
  ASSERT_EQ(::mkfifo(tube.c_str(), 0600), 0);
  for (const auto& chemin :
       {tube, dossier.chemin(), dossier.chemin() / "absent", std::filesystem::path("/dev/zero")})
    EXPECT_EQ(lireFichier(chemin, 100), std::nullopt) << chemin;
}

TEST(Fichiers, EcriturePrivee) {
  const DossierTemporaire dossier;
  const auto cible = dossier.ecrire("cible", "intacte");
  const auto ancien = dossier.ecrire("ancien", "long contenu précédent");
  std::filesystem::permissions(ancien, std::filesystem::perms::all);
  std::filesystem::create_symlink("cible", dossier.chemin() / "lien");
  std::filesystem::create_directory(dossier.chemin() / "dossier");
  for (const char* nom : {"neuf", "ancien", "lien"}) {
    const auto chemin = dossier.chemin() / nom;
    EXPECT_TRUE(ecrireFichierPrive(chemin, "un\0deux"s)) << nom;
    EXPECT_EQ(lireFichier(chemin, 100), "un\0deux"s) << nom;
    struct stat etat {};
    ASSERT_EQ(::lstat(chemin.c_str(), &etat), 0) << nom;
    EXPECT_EQ(etat.st_mode, mode_t{S_IFREG | 0600}) << nom;
  }
  EXPECT_EQ(lireFichier(cible, 100), "intacte");
  for (const char* nom : {"dossier", "absent/f", "cible/f", ""}) {
    EXPECT_FALSE(ecrireFichierPrive(nom[0] ? dossier.chemin() / nom : nom, "x")) << nom;
    EXPECT_NE(errno, 0) << nom;
  }
  // No temporary file is left.
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dossier.chemin()), {}), 5);
}

TEST(Fichiers, UnDisquePleinLaisseLAncien) {
  const DossierTemporaire dossier;
  const auto chemin = dossier.ecrire("f", "ancien");
  rlimit avant{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &avant), 0);
  const auto signal = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit plein{2, avant.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &plein), 0);
  const bool ecrit = ecrireFichierPrive(chemin, "nouveau");
  const auto raison = raisonEcriture(errno);
  ::setrlimit(RLIMIT_FSIZE, &avant);
  std::signal(SIGXFSZ, signal);
  EXPECT_FALSE(ecrit);
  EXPECT_EQ(raison, "le disque est plein");
  EXPECT_EQ(lireFichier(chemin, 100), "ancien");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dossier.chemin()), {}), 1);
}

TEST(Fichiers, DossierReserve) {
  const DossierTemporaire dossier;
  const auto ouvert = dossier.chemin() / "ouvert";
  std::filesystem::create_directory(ouvert);
  std::filesystem::permissions(ouvert, std::filesystem::perms{0755});
  for (const auto& chemin : {ouvert, dossier.chemin() / "neuf/dessous"}) {
    EXPECT_TRUE(reserverDossier(chemin));
    EXPECT_EQ(std::filesystem::status(chemin).permissions(), std::filesystem::perms::owner_all);
  }
  EXPECT_FALSE(reserverDossier(dossier.ecrire("fichier", "")));
}

TEST(Environnement, ValeurRognee) {
  const std::pair<const char*, std::optional<std::string>> cas[] = {
      {" \tx y\r\n", "x y"}, {"\u2028\u00A0é\u3000", "é"}, {" \n\t ", {}}, {"a\xFF ", "a\uFFFD"}};
  const auto processus = Variables::duProcessus();
  for (const auto& [brute, lue] : cas) {
    EXPECT_EQ(Variables({{"NOM", brute}}).texte("NOM"), lue) << "«" << brute << "»";
    ::setenv("TARNAVELLE_ESSAI", brute, 1);
    EXPECT_EQ(processus.octets("TARNAVELLE_ESSAI"), brute);
    EXPECT_EQ(processus.texte("TARNAVELLE_ESSAI"), lue);
  }
  ::unsetenv("TARNAVELLE_ESSAI");
  EXPECT_EQ(processus.octets("TARNAVELLE_ESSAI"), std::nullopt);
}

TEST(Fichiers, DossiersDeLUtilisateur) {
  EXPECT_EQ(dossierPersonnel({{"HOME", "/maison/m\xE9 "}}), "/maison/m\xE9 ");
  EXPECT_TRUE(dossierPersonnel({{"HOME", " "}}).is_absolute());
  EXPECT_EQ(dossierApplicationSupport({{"HOME", "/maison/m"}}), "/maison/m/Library/Application Support");
}

}  // namespace
}  // namespace tarnavelle
