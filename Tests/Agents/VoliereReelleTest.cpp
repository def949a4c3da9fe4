// The flight log and the aviary against a real tmux on a private socket, under each shell that the other
// machine may have. The operator's terminal is a pane of a second tmux; an agent notes its words and stays.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "Agents/CarnetDeVol.hpp"
#include "Agents/EvenementVol.hpp"
#include "Agents/HooksVol.hpp"
#include "Agents/Interprete.hpp"
#include "Agents/LancementVol.hpp"
#include "Agents/VoliereTmux.hpp"
#include "DossierTemporaire.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/Fichiers.hpp"

namespace tarnavelle {
namespace {

using E = EvenementVol;
using Mots = std::vector<std::string>;

#if defined(__APPLE__)
constexpr auto localeUTF8 = "en_US.UTF-8";
#else
constexpr auto localeUTF8 = "C.UTF-8";
#endif

template <class Condition>
bool attendre(Condition vraie) {
  const auto limite = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (!vraie()) {
    if (std::chrono::steady_clock::now() > limite) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

/// A machine of its own: its home, its tmux and its agents.
class VoliereReelle : public testing::TestWithParam<essai::Interprete> {
 protected:
  VoliereReelle() {
    for (const char* agent : {"claude", "codex"}) {
      const auto programme = maison.ecrire(
          std::string("bin/") + agent,
          "#!/bin/sh\n{ printf '%s\\037' \"$@\"; printf '\\036'; } >> \"$HOME/lancements\"\nexec cat\n");
      std::filesystem::permissions(programme, std::filesystem::perms::owner_all);
    }
    std::filesystem::create_directory(dossier);
    // A tmux that loses its last session ends, and the next terminal would find it ending.
    operateur({"new-session", "-d", "cat"});
  }
  ~VoliereReelle() override {
    tmux({"kill-server"});
    operateur({"kill-server"});
  }

  /// Runs a line that ends by itself, as SSH would.
  std::string executer(std::string_view ligne) const {
    const auto sortie = essai::executerLigne(GetParam(), ligne, ailleurs);
    EXPECT_EQ(sortie.statut, 0) << sortie;
    return sortie.texte;
  }

  /// Runs a line in a new terminal, where it stays, and waits for its agent to be the `n`th started.
  bool ouvrir(const std::string& ligne, std::size_t n) {
    Mots mots = {"new-session", "-d", "-c", dossier.string(), "env", "-u", "TMUX", "-u", "TMUX_PANE"};
    mots.insert(mots.end(), GetParam().begin(), GetParam().end());
    mots.push_back(ligne);
    return operateur(mots).statut == 0 && attendre([&] { return lancements().size() == n; });
  }

  /// The words of each agent started so far.
  std::vector<Mots> lancements() const {
    const std::string notes = lireFichier(maison.chemin() / "lancements", 1'000'000).value_or("");
    std::vector<Mots> tous;
    Mots mots;
    for (std::size_t debut = 0, fin; (fin = notes.find_first_of("\036\037", debut)) != notes.npos;
         debut = fin + 1)
      if (notes[fin] == '\037')
        mots.push_back(notes.substr(debut, fin - debut));
      else
        tous.push_back(std::exchange(mots, {}));
    return tous;
  }

  essai::Sortie tmux(Mots mots) const {
    mots.insert(mots.begin(), "tmux");
    return essai::executer(std::move(mots), ailleurs);
  }
  essai::Sortie operateur(Mots mots) const {
    mots.insert(mots.begin(), {"-L", "operateur", "-f", "/dev/null"});
    return tmux(std::move(mots));
  }

  std::string reglages(std::string_view session) const {
    return maison.chemin() / CarnetDeVol::reglagesDistant(session);
  }

  const DossierTemporaire maison;
  const std::filesystem::path dossier = maison.chemin() / "proj é";
  const Environnement ailleurs = {{"HOME", maison.chemin().string()},
                                  {"PATH", (maison.chemin() / "bin").string() + ":" + ::getenv("PATH")},
                                  {"TMUX_TMPDIR", maison.chemin().string()},
                                  {"LC_ALL", localeUTF8},
                                  {"SHELL", "/bin/sh"}};
};

TEST_P(VoliereReelle, SuitListeEtTueUnAgent) {
  const std::string session = "tarnavelle-claude";
  const auto journal = maison.ecrire(CarnetDeVol::journalDistant(session), "un vieux vol\n");
  const std::string transcript =
      maison.ecrire("projets/a b.jsonl", "{\"type\":\"ai-title\",\"aiTitle\":\"Refonte du « parseur »\"}\n");
  const std::string ligne = CarnetDeVol::commandeLancement(AgentCLI::claude(), session, {"-p", "l'été"});

  const auto lister = [&] {
    auto sansLocale = ailleurs;
    sansLocale["LC_ALL"] = "C";
    const auto sortie = essai::executerLigne(GetParam(), VoliereTmux::commandeLister(65536), sansLocale);
    EXPECT_EQ(std::to_string(sortie.statut) + sortie.erreurs, "0");
    return VoliereTmux::lire(sortie.texte);
  };
  EXPECT_TRUE(lister().empty());

  // A first launch empties the log and starts claude with its hooks.
  ASSERT_TRUE(ouvrir(ligne, 1));
  EXPECT_EQ(lancements(), std::vector<Mots>({{"-p", "l'été", "--settings", reglages(session)}}));
  EXPECT_EQ(std::filesystem::file_size(journal), 0u);
  EXPECT_EQ(executer(CarnetDeVol::commandeLecture("absente", 0)), "");

  // What goes through the hooks is read back; a line longer than a read is passed over.
  const std::string dit = "« l'été » \"$HOME\" `id` \\n 100% 😀\nbis";
  const std::pair<Json, EvenementVol> vol[] = {
      {{{"hook_event_name", "SessionStart"}, {"transcript_path", transcript}}, {E::demarre{}}},
      {{{"hook_event_name", "PreToolUse"}, {"tool_name", std::string(300'000, 'x')}}, {E::inconnu{}}},
      {{{"hook_event_name", "UserPromptSubmit"}, {"prompt", dit}}, {E::consigne{dit}}},
      {{{"hook_event_name", "Stop"}}, {E::fini{}}}};
  const auto installes = CarnetDeVol::Reglages::lire(lireFichier(reglages(session), 100'000).value_or(""));
  ASSERT_TRUE(installes);
  std::vector<EvenementVol> attendus;
  for (const auto& [envoi, evenement] : vol) {
    const auto& hook = installes->hooks.at(envoi["hook_event_name"]).at(0).hooks.at(0);
    const auto sortie = essai::executer({"sh", "-c", hook.command}, ailleurs,
                                        "\n" + EcritureJSON::compacte(envoi).value() + "\r\n");
    EXPECT_EQ(std::to_string(sortie.statut) + sortie.texte + sortie.erreurs, "0");
    if (evenement != EvenementVol{E::inconnu{}}) attendus.push_back(evenement);
  }
  std::vector<EvenementVol> lus;
  std::string vu;
  std::int64_t curseur = 0;
  for (std::int64_t avant = -1; curseur != std::exchange(avant, curseur);) {
    const std::string tranche = executer(CarnetDeVol::commandeLecture(session, curseur));
    const auto lecture = CarnetDeVol::lire(tranche);
    lus.insert(lus.end(), lecture.evenements.begin(), lecture.evenements.end());
    vu = lecture.transcript.value_or(vu);
    curseur = FichierDistant::curseurSuivant(curseur, tranche.size(), lecture.consommes);
  }
  EXPECT_EQ(lus, attendus);
  EXPECT_EQ(vu, transcript);
  EXPECT_EQ(static_cast<std::uintmax_t>(curseur), std::filesystem::file_size(journal));

  // A second launch attaches another terminal to the same agent and leaves its log alone.
  ASSERT_TRUE(ouvrir(ligne, 1));
  ASSERT_TRUE(attendre([&] { return std::ranges::count(tmux({"list-clients"}).texte, '\n') == 2; }));
  EXPECT_EQ(static_cast<std::uintmax_t>(curseur), std::filesystem::file_size(journal));
  EXPECT_EQ(lancements().size(), 1u);
  EXPECT_EQ(tmux({"show-options", "-v", "-t", session, "mouse"}).texte, "on\n");

  const std::string codex = VoliereTmux::nommer({"codex", 2});
  ASSERT_TRUE(ouvrir(CarnetDeVol::commandeLancement(AgentCLI::codex(), codex, {"-c", "a=\"l'été\""}), 2));
  EXPECT_EQ(lancements().back(), (Mots{"-c", "a=\"l'été\""}));
  ASSERT_EQ(tmux({"new-session", "-d", "-s", "mon-tarnavelle-claude", "cat"}).statut, 0);
  const VoliereTmux::SessionLaBas agents[] = {{session, dossier.string(), "Refonte du « parseur »"},
                                              {codex, dossier.string(), ""}};
  EXPECT_EQ(lister(), std::vector(agents, agents + 2));

  // Killing spares the others, and is no error for a session that is dead already.
  const auto tuer = VoliereTmux::commandeTuer(session).value();
  EXPECT_EQ(executer(tuer), "");
  EXPECT_NE(executer(tuer), "");
  EXPECT_EQ(lister(), std::vector{agents[1]});
  executer(VoliereTmux::commandeTuer(codex).value());
  EXPECT_EQ(tmux({"list-sessions", "-F", "#S"}).texte, "mon-tarnavelle-claude\n");

  // A new session begins a new log.
  ASSERT_TRUE(ouvrir(ligne, 3));
  EXPECT_EQ(std::filesystem::file_size(journal), 0u);
}

TEST_P(VoliereReelle, AucunNomNAjouteDeMotNiDeCommande) {
  const std::string temoin = (maison.chemin() / "canari").string();
  const Mots hostiles = {"l'été \"x\" 😀 `touch " + temoin + "`",
                         "\"; $(touch " + temoin + "); '",
                         "#(touch " + temoin + ")",
                         "a\nTV_VOL_EOF\ntouch " + temoin,
                         "fin;",
                         "\\;",
                         "--",
                         "* &"};
  std::size_t lances = 0;
  for (const std::string& nom : hostiles) {
    AgentCLI agent = lances % 2 ? AgentCLI::codex() : AgentCLI::claude();
    agent.arguments = {nom, "--"};
    Mots attendus = agent.arguments;
    attendus.insert(attendus.end(), hostiles.begin(), hostiles.end());
    if (agent.id == "claude") attendus.insert(attendus.end(), {"--settings", reglages(nom)});
    ASSERT_TRUE(ouvrir(CarnetDeVol::commandeLancement(agent, nom, hostiles), ++lances)) << nom;
    EXPECT_EQ(lancements().back(), attendus) << nom;
    EXPECT_EQ(std::filesystem::exists(reglages(nom)), agent.id == "claude") << nom;
  }
  EXPECT_FALSE(std::filesystem::exists(temoin));
}

INSTANTIATE_TEST_SUITE_P(Shells, VoliereReelle, testing::ValuesIn(essai::interpretes()),
                         [](const auto& shell) { return "n" + std::to_string(shell.index); });

}  // namespace
}  // namespace tarnavelle
