#include <gtest/gtest.h>

#include <fstream>

#include "DossierTemporaire.hpp"
#include "Machine/LanceursReels.hpp"
#include "Machine/MachineReelle.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

using namespace std::chrono_literals;

TEST(Machine, AttesteParLeStatutDeSortie) {
  const DossierTemporaire dossier;
  MachineReelle machine(Variables{}, {{"PATH", "/usr/bin:/bin"}, {"ICI", "la"}});
  const auto verifier = [&](std::string commande, std::string ou, std::chrono::milliseconds auPlus,
                            std::function<bool()> arret = {}) {
    return machine.verifier({std::move(commande), std::move(ou), auPlus, std::move(arret)});
  };
  const struct {
    std::string commande;
    std::chrono::milliseconds auPlus;
    int statut;
    bool horsDelai;
    std::string sortie;
  } cas[] = {
      {"pwd -P | sed 's|.*/||'", 20s, 0, false, dossier.chemin().filename().string() + "\n"},
      {"echo a; echo b >&2; printf '\\377'; exit 3", 20s, 3, false, "a\nb\n\xEF\xBF\xBD"},
      {"env | grep -v -e ^PWD= -e ^SHLVL= -e ^_= | sort", 20s, 0, false, "ICI=la\nPATH=/usr/bin:/bin\n"},
      {"ls /dev/fd | wc -l | tr -d ' '", 20s, 0, false, "4\n"},  // its three, and the one of ls
      {"kill -9 $$", 20s, -1, false, ""},
      {"sleep 600 & exit 0", 20s, 0, false, ""},  // what it leaves behind is ended, not waited for
      {"exec >&- 2>&-; sleep 0.05; exit 4", 20s, 4, false, ""},
      {"echo ici; sleep 600", 200ms, -1, true, "ici\n"},
  };
  for (const auto& c : cas) {
    const auto issue = verifier(c.commande, dossier.chemin().string(), c.auPlus);
    EXPECT_EQ(issue.statut, c.statut) << c.commande;
    EXPECT_EQ(issue.horsDelai, c.horsDelai) << c.commande;
    EXPECT_EQ(issue.sortie, c.sortie) << c.commande;
  }
  EXPECT_EQ(verifier("true", "/nulle/part", 20s).statut, 127);
  EXPECT_EQ(verifier("yes | head -c 100000", "/", 20s).sortie.size(), MachineReelle::sortieMax);
  EXPECT_TRUE(verifier("sleep 600", "/", 20s, [] { return true; }).arretee);
  EXPECT_TRUE(machine.ouvrirWeb("https://example.org"));  // no desktop here
}

TEST(Lanceurs, AucunJetonDansLesMots) {
  const DossierTemporaire maison;
  const auto bin = maison.chemin() / "bin";
  std::filesystem::create_directories(bin);
  for (const char* nom : {"claude", "codex", "opencode"}) {
    std::ofstream(bin / nom) << "#!/bin/sh\n";
    std::filesystem::permissions(bin / nom, std::filesystem::perms::owner_all);
  }
  LanceursReels lanceurs(
      {.url = [] { return "http://127.0.0.1:9"; },
       .jeton = [](std::string_view cle) { return "s3cret-" + std::string(cle); },
       .pont = "/p/tarnavelle-mcp",
       .ctl = "/p/tarnavellectl",
       .dossier = maison.chemin() / "agents",
       .journal = [&](std::string_view cle) { return maison.chemin() / "j" / (std::string(cle) + ".jsonl"); },
       .environnement = Variables{{"PATH", "relatif::" + bin.string()}, {"HOME", maison.chemin().string()}}});
  EXPECT_EQ(lanceurs.usuel(), "claude");
  const auto embarquer = [&](std::string programme, std::string conversation = "", bool entamee = true) {
    return lanceurs.agent({.cle = "a1",
                           .nom = "Merlin",
                           .programme = std::move(programme),
                           .session = "t",
                           .dossier = "~/bin",
                           .hote = "",
                           .conversation = std::move(conversation),
                           .entamee = entamee});
  };
  const std::pair<std::string, std::string> cas[] = {
      {"claude", " --session-id "},
      {"codex",
       " -c features.shell_snapshot=false -c mcp_servers.tarnavelle.env_vars=[\"TARNAVELLE_CONTROL_TOKEN\"] "},
      {"opencode", "opencode"}};
  for (const auto& [programme, attendu] : cas) {
    const auto depart = embarquer(programme);
    ASSERT_TRUE(depart) << depart.raison();
    const std::string mots = Texte::joindre(depart->lancement.mots, " ");
    EXPECT_EQ(depart->lancement.mots.front(), (bin / programme).string());
    EXPECT_EQ(mots.find("s3cret"), mots.npos) << mots;
    EXPECT_NE(mots.find(attendu), mots.npos) << mots;
    EXPECT_EQ(depart->lancement.environnement.at("TARNAVELLE_CONTROL_TOKEN"), "s3cret-a1");
    EXPECT_EQ(depart->lancement.environnement.at("TARNAVELLE_MCP_ETENDU"), "1");
    EXPECT_EQ(depart->lancement.environnement.at("COLORTERM"), "truecolor");
    EXPECT_EQ(depart->lancement.environnement.at("TARNAVELLE_NODE_ID"), "Merlin");
    EXPECT_EQ(depart->lancement.dossier, bin.string());
  }
  const auto repris = embarquer("claude", "abc");
  EXPECT_EQ(repris->conversation, "abc");
  const auto jamaisDite = embarquer("claude", "abc", false);  // claude knows no conversation without a turn
  EXPECT_EQ(jamaisDite->conversation, "abc");
  EXPECT_NE(Texte::joindre(jamaisDite->lancement.mots, " ").find("--session-id abc"), std::string::npos);
  EXPECT_NE(Texte::joindre(repris->lancement.mots, " ").find("--resume abc"), std::string::npos);
  const auto reglages = embarquer("opencode")->lancement.environnement.at("OPENCODE_CONFIG_CONTENT");
  EXPECT_NE(reglages.find(R"("command":["/p/tarnavelle-mcp"])"), std::string::npos) << reglages;
  EXPECT_EQ(reglages.find("s3cret"), std::string::npos);
  EXPECT_EQ(embarquer("codex", "abc")->lancement.mots[1], "resume");
  for (const auto& entree : std::filesystem::recursive_directory_iterator(maison.chemin() / "agents"))
    EXPECT_EQ(entree.status().permissions() & std::filesystem::perms::mask,
              entree.is_directory() ? std::filesystem::perms::owner_all
                                    : std::filesystem::perms::owner_read | std::filesystem::perms::owner_write)
        << entree.path();
  for (const char* cle : {"..", "", "a1"}) lanceurs.oublier(cle);
  EXPECT_TRUE(std::filesystem::is_empty(maison.chemin() / "agents"));  // no token stays
  EXPECT_EQ(embarquer("grok").raison(),
            "Grok CLI n'est pas installé : « grok » n'est ni sur le PATH, ni là où il s'installe d'habitude.");
}

TEST(Lanceurs, SansPontNiClientRienNEstBranche) {
  const DossierTemporaire maison;
  const auto bin = maison.chemin() / "bin";
  std::filesystem::create_directories(bin);
  std::ofstream(bin / "claude") << "#!/bin/sh\n";
  std::filesystem::permissions(bin / "claude", std::filesystem::perms::owner_all);
  LanceursReels lanceurs(
      {.url = [] { return ""; },
       .jeton = [](std::string_view) { return "s"; },
       .pont = "",
       .ctl = "",
       .dossier = maison.chemin() / "agents",
       .journal = [&](std::string_view cle) { return maison.chemin() / "j" / cle; },
       .environnement = Variables{{"PATH", bin.string()}, {"HOME", maison.chemin().string()}}});
  const auto depart = lanceurs.agent({.cle = "a",
                                      .nom = "Merlin",
                                      .programme = "claude",
                                      .session = "t",
                                      .dossier = "~",
                                      .hote = "",
                                      .conversation = "abc"});
  ASSERT_TRUE(depart);
  EXPECT_EQ(depart->lancement.mots,
            (std::vector<std::string>{(bin / "claude").string(), "--session-id", "abc"}));
  EXPECT_EQ(lanceurs.manques(),
            "tarnavelle-mcp n'est pas à côté du plateau : les agents n'auront pas les outils de la porte.\n"
            "tarnavellectl n'est pas à côté du plateau : ce que font les agents ne se lira que sur leur écran, "
            "et sera su plus tard.");
}

}  // namespace
}  // namespace tarnavelle::Plateau
