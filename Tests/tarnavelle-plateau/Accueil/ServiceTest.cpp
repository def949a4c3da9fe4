#include "Accueil/Service.hpp"

#include <gtest/gtest.h>

using namespace tarnavelle::Plateau;

namespace {

std::string ligne(const std::string& texte, const std::string& debut) {
  const auto ou = texte.find("\n" + debut);
  return ou == std::string::npos ? "" : texte.substr(ou + 1, texte.find('\n', ou + 1) - ou - 1);
}

const Service::Demande hostile{
    .mots = {"/un dossier/pl", "--socket", "a\"b\\c", "$HOME ${x}", "%h", "x\nExecStop=y"},
    .titre = "Titre",
    .nom = "nom",
    .chemins = "/b in:/$x:/%i",
    .personnel = "/maison & <co>"};

TEST(Service, AucunMotNeFaitDireAutreChoseASystemd) {
  const std::string unite = Service::systemd(hostile);
  EXPECT_EQ(ligne(unite, "ExecStart="),
            R"(ExecStart="/un dossier/pl" "--socket" "a\"b\\c" "$$HOME $${x}" "%%h" "x\x0aExecStop=y")");
  EXPECT_EQ(ligne(unite, "Environment="), R"(Environment="PATH=/b in:/$x:/%%i")");
  EXPECT_EQ(ligne(unite, "ExecStop"), "");
  EXPECT_EQ(ligne(unite, "KillMode="), "KillMode=process");
}

TEST(Service, AucunMotNeFaitDireAutreChoseALaunchd) {
  const std::string liste = Service::launchd(hostile);
  EXPECT_NE(liste.find("<string>/un dossier/pl</string>\n    <string>--socket</string>"), std::string::npos)
      << liste;
  EXPECT_NE(liste.find("<string>/maison &amp; &lt;co&gt;</string>"), std::string::npos) << liste;
  EXPECT_NE(liste.find("<string>xExecStop=y</string>"), std::string::npos) << liste;
}

}  // namespace
