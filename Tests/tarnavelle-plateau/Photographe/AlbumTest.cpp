#include "Photographe/Album.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <thread>
#include <vector>

#include "DossierTemporaire.hpp"
#include "Socle/Fichiers.hpp"

namespace tarnavelle::Plateau {
namespace {

TEST(Album, NomDate) {
  const auto quand = std::chrono::sys_days(std::chrono::year(2026) / 11 / 22) + std::chrono::seconds(50'101);
  const Calendrier paris{[](std::chrono::sys_seconds) { return std::chrono::hours(1); }};
  const struct {
    std::string sujet, attendu;
  } cas[] = {
      {"Merlin", "tarnavelle-2026-11-22-145501-Merlin.png"},
      {"../l'Établi\n/x", "tarnavelle-2026-11-22-145501-l-Établi-x.png"},
      {"…", "tarnavelle-2026-11-22-145501.png"},
  };
  for (const auto& [sujet, attendu] : cas) EXPECT_EQ(Album::nomDeFichier(sujet, quand, paris), attendu);
  EXPECT_LT(Album::nomDeFichier(std::string(5000, 'a'), quand, paris).size(), 100U);
}

TEST(Album, NeRemplaceNiNeSuitRien) {
  const DossierTemporaire dossier;
  const auto& ici = dossier.chemin();
  const auto ailleurs = dossier.ecrire("cible", "intacte");
  std::filesystem::create_symlink(ailleurs, ici / "p-2.png");
  std::filesystem::create_symlink(ici / "absente", ici / "p-3.png");
  for (const char* attendu : {"p.png", "p-4.png", "p-5.png"}) {
    const auto ou = Album::ranger(ici / "p.png", attendu);
    ASSERT_TRUE(ou) << ou.raison();
    EXPECT_EQ(*ou, ici / attendu);
    EXPECT_EQ(lireFichier(*ou, 100), attendu);
    struct stat etat {};
    ASSERT_EQ(::lstat(ou->c_str(), &etat), 0);
    EXPECT_EQ(etat.st_mode, static_cast<mode_t>(S_IFREG | 0600));
    EXPECT_EQ(etat.st_nlink, 1U);  // nothing left beside it
  }
  EXPECT_EQ(lireFichier(ailleurs, 100), "intacte");
  EXPECT_FALSE(std::filesystem::exists(ici / "absente"));
  EXPECT_EQ(Album::ranger(ici / "nulle-part" / "p.png", "x").raison(),
            "Impossible d'écrire dans « " + (ici / "nulle-part").string() + " » : le dossier n'existe pas.");
}

TEST(Album, ChacunLeSien) {
  const DossierTemporaire dossier;
  std::vector<std::thread> fils;
  for (int i = 0; i < 8; ++i)
    fils.emplace_back([&, i] { EXPECT_TRUE(Album::ranger(dossier.chemin() / "p.png", std::to_string(i))); });
  for (auto& fil : fils) fil.join();
  std::string contenus;
  for (const auto& entree : std::filesystem::directory_iterator(dossier.chemin()))
    contenus += lireFichier(entree.path(), 100).value_or("?");
  std::ranges::sort(contenus);
  EXPECT_EQ(contenus, "01234567");
}

}  // namespace
}  // namespace tarnavelle::Plateau
