#include "Etats/Crochets.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

#include "Agents/CarnetDeVol.hpp"
#include "Agents/CrochetAgent.hpp"
#include "Agents/EvenementVol.hpp"
#include "Agents/HooksVol.hpp"
#include "DossierTemporaire.hpp"
#include "Etats/GuetFichiers.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/LectureJSON.hpp"

namespace tarnavelle::Plateau {
namespace {

using namespace std::chrono_literals;
using Genre = Crochet::Genre;

std::string note(std::string_view dit, std::string_view evenement = "Stop") {
  return CrochetAgent::ligne({"claude", evenement, dit, 7ms});
}

TEST(Crochets, CeQuUnCrochetNoteSeRelit) {
  const struct {
    std::string dit;
    std::vector<Crochet> lus;
  } cas[] = {
      {R"({"hook_event_name":"UserPromptSubmit","session_id":"s","prompt_id":"p","prompt":" va\n","transcript_path":"/t","x":1})",
       {{Genre::consigne, "UserPromptSubmit", "s", "p", "va", "/t"}}},
      {R"({"hook_event_name":"PermissionRequest","turn_id":"t","tool_name":"Bash","tool_input":{"command":"ls"}})",
       {{Genre::permission, "PermissionRequest", "", "t", "Bash", ""}}},
      {R"({"hook_event_name":"Notification","notification_type":"ToolPermission","message":"m"})",
       {{Genre::permission, "Notification", "", "", "m", ""}}},
      {R"({"hook_event_name":"Notification","notification_type":"idle_prompt"})",
       {{Genre::attention, "Notification"}}},
      {R"({"hook_event_name":"SessionStart","source":"compact"})", {{Genre::autre, "SessionStart"}}},
      {R"({"hook_event_name":"SessionEnd","reason":"clear"})", {{Genre::autre, "SessionEnd"}}},
      {R"({"hook_event_name":"SessionEnd","reason":"exit"})", {{Genre::sorti, "SessionEnd"}}},
      {R"({"hook_event_name":"Stop","last_assistant_message":" fait\n"})",
       {{Genre::fini, "Stop", "", "", "fait", "", "fait"}}},
      {R"({"hook_event_name":"AfterAgent","prompt":"p"})", {{Genre::fini, "AfterAgent", "", "", "p", ""}}},
      {"{\"hook_event_name\":\"Stop\",\"prompt_id\":\"a\xFF\"}", {{Genre::fini, "Stop", "", "a\uFFFD"}}},
      {"pas du JSON", {{Genre::fini, "Stop"}}},
      {"", {{Genre::fini, "Stop"}}},
      {std::string(600, '['), {{Genre::fini, "Stop"}}},
      {R"({"hook_event_name":["Stop"],"prompt":{"a":1}})", {{Genre::fini, "Stop"}}},
      {R"({"hook_event_name":"Demain"})", {{Genre::autre, "Demain"}}},
  };
  for (const auto& [dit, lus] : cas) {
    const std::string ligne = note(dit);
    EXPECT_EQ(ligne.find('\n'), ligne.size() - 1) << dit;
    EXPECT_EQ(Crochets::decoder(ligne), lus) << dit;
  }
  EXPECT_EQ(Crochets::decoder("{}\n"), std::vector<Crochet>{});
  // The same lines are a flight log.
  const auto lecture = CarnetDeVol::lire(note(R"({"hook_event_name":"PreToolUse","tool_name":"Bash",)"
                                              R"("tool_input":{"command":"ls","secret":"x"}})"));
  EXPECT_EQ(lecture.evenements, (std::vector<EvenementVol>{{EvenementVol::outil{"Bash", "ls"}}}));
}

TEST(Crochets, UnLongTexteEstCoupeEntreDeuxCaracteres) {
  std::string prompt;
  while (prompt.size() < (std::size_t{1} << 20)) prompt += "é";
  const std::string ligne = note(R"({"hook_event_name":"UserPromptSubmit","prompt":"a)" + prompt + "\"}");
  EXPECT_LT(ligne.size(), 9000U);
  EXPECT_TRUE(Crochets::decoder(ligne).at(0).texte.starts_with("aéé"));
}

TEST(Crochets, LeJournalNeRecoitQueDansUnFichierOrdinaire) {
  const DossierTemporaire dossier;
  const auto journal = dossier.chemin() / "a.jsonl";
  EXPECT_TRUE(CrochetAgent::ajouter(journal, note("")));
  EXPECT_TRUE(CrochetAgent::ajouter(journal, note("")));
  EXPECT_EQ(lireFichier(journal, 1000), note("") + note(""));
  EXPECT_EQ(std::filesystem::status(journal).permissions(), std::filesystem::perms(0600));
  const auto refuse = [&](const char* nom) { return !CrochetAgent::ajouter(dossier.chemin() / nom, "x\n"); };
  std::filesystem::create_symlink(journal, dossier.chemin() / "lien");
  ASSERT_EQ(::mkfifo((dossier.chemin() / "tube").c_str(), 0600), 0);
  const int lecteur = ::open((dossier.chemin() / "tube").c_str(), O_RDONLY | O_NONBLOCK);
  EXPECT_TRUE(refuse("lien"));
  EXPECT_TRUE(refuse("tube"));
  EXPECT_TRUE(refuse("absent/a"));
  EXPECT_TRUE(refuse("."));
  EXPECT_FALSE(CrochetAgent::ajouter("/dev/null", "x\n"));
  ::close(lecteur);
}

TEST(Crochets, DeuxCrochetsALaFoisNePerdentRien) {
  const DossierTemporaire dossier;
  const auto fichier = dossier.chemin() / "a.jsonl";
  constexpr int chacun = 300;
  std::vector<std::thread> fils;
  for (int f = 0; f < 4; ++f)
    fils.emplace_back([&] {
      const std::string ligne =
          note(R"({"hook_event_name":"Stop","prompt_id":")" + std::string(150, 'p') + "\"}");
      for (int i = 0; i < chacun; ++i) CrochetAgent::ajouter(fichier, ligne);
    });
  JournalCrochets journal(fichier);
  std::size_t lus = 0;
  for (const auto fin = std::chrono::steady_clock::now() + 20s;
       lus < 4U * chacun && std::chrono::steady_clock::now() < fin;)
    for (const Crochet& crochet : journal.lire()) lus += crochet.tour == std::string(150, 'p') ? 1 : 0;
  for (auto& fil : fils) fil.join();
  EXPECT_EQ(lus, 4U * chacun);
}

TEST(Crochets, LeJournalSeSuitParCurseur) {
  const DossierTemporaire dossier;
  const auto fichier = dossier.chemin() / "a.jsonl";
  JournalCrochets journal(fichier);
  const auto noms = [&] {
    std::string suite;
    for (const Crochet& crochet : journal.lire()) suite += crochet.nom + " ";
    return suite;
  };
  EXPECT_EQ(noms(), "");
  const std::string a = note("", "A");
  dossier.ecrire("a.jsonl", a + a.substr(0, 10));
  EXPECT_EQ(noms(), "A ");
  EXPECT_EQ(noms(), "");
  std::ofstream(fichier, std::ios::app) << a.substr(10) << note("", "B");
  EXPECT_EQ(noms(), "A B ");
  std::ofstream(fichier, std::ios::app) << std::string(3'000'000, 'x') << "\n" << note("", "C");
  EXPECT_EQ(noms(), "C ");
  dossier.ecrire("a.jsonl", note("", "D"));  // begun anew
  EXPECT_EQ(noms(), "D ");
}

TEST(Crochets, UnJournalTropLongFaitPlaceSansRienPerdre) {
  const DossierTemporaire dossier;
  const auto fichier = dossier.chemin() / "a.jsonl";
  ASSERT_TRUE(JournalCrochets::commencer(fichier));
  JournalCrochets journal(fichier);
  std::size_t lus = 0, ecrits = 0;
  const std::string ligne = note(R"({"hook_event_name":"Stop","prompt":")" + std::string(8000, 'p') + "\"}");
  for (int tour = 0; tour < 3; ++tour) {
    std::ofstream retardataire(fichier, std::ios::app);  // opened before the log makes place
    for (std::int64_t octets = 0; octets <= JournalCrochets::longueurMax; ++ecrits) {
      ASSERT_TRUE(CrochetAgent::ajouter(fichier, ligne));
      octets += static_cast<std::int64_t>(ligne.size());
    }
    lus += journal.lire().size();
    retardataire << ligne << std::flush;
    ASSERT_TRUE(CrochetAgent::ajouter(fichier, ligne));
    ecrits += 2;
    lus += journal.lire().size();
    EXPECT_EQ(lus, ecrits) << tour;
  }
  EXPECT_LT(std::filesystem::file_size(fichier), 1 << 16);
  EXPECT_GT(JournalCrochets(fichier).lire().size(), 100u);  // the next door still reads what is behind it
  JournalCrochets::retirer(fichier);
  EXPECT_TRUE(std::filesystem::is_empty(dossier.chemin()));
}

TEST(GuetFichiers, DitCeQuiChangeEtSeLaisseInterrompre) {
  const DossierTemporaire dossier;
  GuetFichiers guet(dossier.chemin());
  EXPECT_TRUE(guet.attendre(0ms).noms.empty());
  CrochetAgent::ajouter(dossier.chemin() / "a.jsonl", "x\n");
  const auto vus = guet.attendre(20s);
  EXPECT_TRUE(vus.tous || vus.noms == std::set<std::string>{"a.jsonl"});
  guet.interrompre();
  EXPECT_TRUE(guet.attendre(20s).noms.empty());
  GuetFichiers sansDossier(dossier.chemin() / "absent");
  EXPECT_TRUE(sansDossier.attendre(20s).tous);
}

TEST(Crochets, LancementDeChaqueProgramme) {
  const Crochets::Lieux lieux{"/opt/d'ici/tarnavellectl", "/etat/agents/7", "/etat/agents/7/crochets.jsonl"};
  const auto claude = Crochets::branchement("claude", lieux, Json::object());
  ASSERT_TRUE(claude && claude->fichiers.size() == 1);
  const auto& [fichier, texte] = claude->fichiers[0];
  EXPECT_EQ(claude->mots, (std::vector<std::string>{"--settings", fichier.string()}));
  EXPECT_EQ(claude->environnement.at("TARNAVELLE_CROCHETS"), lieux.journal.string());
  const auto reglages = CarnetDeVol::Reglages::lire(texte);
  ASSERT_TRUE(reglages);
  EXPECT_EQ(
      reglages->hooks.at("Stop")[0].hooks[0],
      (CarnetDeVol::Reglages::Commande{"command", R"('/opt/d'\''ici/tarnavellectl' crochet claude Stop)", 5}));
  const auto codex = Crochets::branchement("codex", lieux, Json::object());
  ASSERT_TRUE(codex);
  EXPECT_EQ(codex->mots[1], R"(hooks.SessionStart=[{hooks=[{type="command",)"
                            R"(command="'/opt/d'\\''ici/tarnavellectl' crochet codex SessionStart"}]}])");
  EXPECT_EQ(codex->mots.back(), "--dangerously-bypass-hook-trust");
  const auto gemini = Crochets::branchement("gemini", lieux, Json::object());
  ASSERT_TRUE(gemini && gemini->mots.empty());
  EXPECT_EQ(gemini->environnement.at("GEMINI_CLI_SYSTEM_DEFAULTS_PATH"), gemini->fichiers[0].first.string());
  const Crochets::Lieux blanc{lieux.ctl, "/état 7", lieux.journal};
  const auto opencode = Crochets::branchement("opencode", blanc, {{"mcp", 1}});
  ASSERT_TRUE(opencode && opencode->fichiers.size() == 1);
  EXPECT_EQ(opencode->environnement.at("OPENCODE_CONFIG_CONTENT"),
            R"({"mcp":1,"plugin":["file:///%C3%A9tat%207/opencode-crochets.js"]})");
  EXPECT_NE(opencode->fichiers[0].second.find(R"(+ "\n")"), std::string::npos);
  EXPECT_EQ(Crochets::branchement("hermes", lieux, Json::object()), std::nullopt);
}

}  // namespace
}  // namespace tarnavelle::Plateau
