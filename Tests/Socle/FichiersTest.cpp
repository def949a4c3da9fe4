#include "Socle/Fichiers.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <iterator>
#include <string>

#include "DossierTemporaire.hpp"

namespace tarnavelle {
namespace {

using namespace std::string_literals;

TEST(Fichiers, LectureBornee) {
  const DossierTemporaire dossier;
  for (const std::size_t taille : {0u, 1u, 16384u, 16385u, 100'000u}) {
    const auto contenu = std::string(taille / 2, '\0') + std::string(taille - taille / 2, '\xFF');
    const auto chemin = dossier.ecrire("f", contenu);
    EXPECT_EQ(lireFichier(chemin, taille), contenu) << taille;
    EXPECT_EQ(lireFichier(chemin, taille + 1), contenu) << taille;
    EXPECT_EQ(lireFichier(chemin, taille / 2), taille == 0 ? std::optional("") : std::nullopt) << taille;
  }
}

TEST(Fichiers, Executables) {
  const DossierTemporaire dossier;
  const auto lien = [&](const char* vers, const char* nom) {
    std::filesystem::create_symlink(vers, dossier.chemin() / nom);
  };
  using std::filesystem::perms;
  std::filesystem::permissions(dossier.ecrire("programme", "#!/bin/sh\n"), perms::owner_all);
  dossier.ecrire("document", "#!/bin/sh\n");
  std::filesystem::create_directory(dossier.chemin() / "dossier");
  lien("programme", "lien");
  lien("dossier", "lien-dossier");
  lien("absent", "lien-mort");
  for (const char* nom : {"programme", "lien", "dossier/../programme"})
    EXPECT_TRUE(fichierExecutable(dossier.chemin() / nom)) << nom;
  for (const char* nom : {"document", "dossier", "lien-dossier", "lien-mort", "absent", "programme/x", ""})
    EXPECT_FALSE(fichierExecutable(dossier.chemin() / nom)) << nom;
  EXPECT_FALSE(fichierExecutable(""));
}

// None of these may be read, nor make the reader wait for a writer.
TEST(Fichiers, CeQuiNEstPasUnFichier) {
  const DossierTemporaire dossier;
  const auto tube = dossier.chemin() / "tube";
  ASSERT_EQ(::mkfifo(tube.c_str(), 0600), 0);
  std::filesystem::create_symlink(dossier.ecrire("f", "x"), dossier.chemin() / "lien");
  std::filesystem::create_symlink("boucle", dossier.chemin() / "boucle");
  for (const auto& chemin :
       {tube, dossier.chemin(), dossier.chemin() / "absent", dossier.chemin() / "boucle",
        dossier.chemin() / "f" / "f", std::filesystem::path("/dev/zero"), std::filesystem::path()})
    EXPECT_EQ(lireFichier(chemin, 100), std::nullopt) << chemin;
  EXPECT_EQ(lireFichier(dossier.chemin() / "lien", 100), "x");
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

TEST(Environnement, ValeurRognee) {
  struct {
    std::string brute;
    std::optional<std::string> lue;
  } const cas[] = {
      {"x", "x"},     {" \tx y\r\n", "x y"}, {"\u2028\u00A0é\u3000", "é"}, {"", {}},
      {" \n\t ", {}}, {"\u200B", "\u200B"},  {"a\xFF ", "a\uFFFD"},
  };
  for (const auto& c : cas)
    EXPECT_EQ(Variables({{"NOM", c.brute}}).texte("NOM"), c.lue) << "«" << c.brute << "»";
  EXPECT_EQ(Variables({{"NOM", "x"}}).texte("AUTRE"), std::nullopt);
}

TEST(Environnement, DuProcessus) {
  const auto lues = Variables::duProcessus();
  ::setenv("TARNAVELLE_ESSAI", " a\xFF ", 1);
  EXPECT_EQ(lues.octets("TARNAVELLE_ESSAI"), " a\xFF ");
  EXPECT_EQ(lues.texte("TARNAVELLE_ESSAI"), "a\uFFFD");
  ::unsetenv("TARNAVELLE_ESSAI");
  EXPECT_EQ(lues.octets("TARNAVELLE_ESSAI"), std::nullopt);
}

TEST(Fichiers, DossiersDeLUtilisateur) {
  EXPECT_EQ(dossierPersonnel({{"HOME", "/maison/m\xE9 "}}), "/maison/m\xE9 ");
  EXPECT_EQ(dossierPersonnel({{"HOME", " "}}), dossierPersonnel({}));
  EXPECT_TRUE(dossierPersonnel({}).is_absolute()) << dossierPersonnel({});
  EXPECT_EQ(dossierApplicationSupport({{"HOME", "/maison/m"}}), "/maison/m/Library/Application Support");
}

}  // namespace
}  // namespace tarnavelle
