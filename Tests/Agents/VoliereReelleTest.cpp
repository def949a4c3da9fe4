// The flight log and the aviary against a real tmux on a private socket, under each shell that the other
// machine may have. The operator's terminal is a pane of a second tmux; claude is doublure.py.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "Agents/CarnetDeVol.hpp"
#include "Agents/Interprete.hpp"
#include "Agents/Montrer.hpp"
#include "Agents/VoliereTmux.hpp"
#include "DossierTemporaire.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/LignesJSON.hpp"

namespace tarnavelle {
namespace {

using E = EvenementVol;
using Mots = std::vector<std::string>;

template <class Condition>
bool attendre(Condition vraie) {
  const auto limite = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (!vraie()) {
    if (std::chrono::steady_clock::now() > limite) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

/// A machine of its own: its home, its tmux, and agents that are doublure.py.
class Ailleurs {
 public:
  explicit Ailleurs(essai::Interprete shell) : shell_(std::move(shell)) {
    for (const char* agent : {"claude", "codex"}) {
      const auto programme =
          maison.ecrire(std::string("bin/") + agent, "#!/bin/sh\nexec '" PYTHON "' '" DOUBLURE "' \"$@\"\n");
      std::filesystem::permissions(programme, std::filesystem::perms::owner_all);
    }
    std::filesystem::create_directory(dossier());
    // A tmux that loses its last session ends, and the next terminal would find it ending.
    operateur({"new-session", "-d", "cat"});
  }
  ~Ailleurs() {
    tmux({"kill-server"});
    operateur({"kill-server"});
  }
  Ailleurs(const Ailleurs&) = delete;
  Ailleurs& operator=(const Ailleurs&) = delete;

  const DossierTemporaire maison;

  std::filesystem::path dossier() const { return maison.chemin() / "proj é"; }

  /// Runs a line that ends by itself, as SSH would.
  std::string executer(std::string_view ligne) const {
    const auto sortie = shell_.executer(ligne, environnement());
    EXPECT_EQ(sortie.statut, 0) << shell_ << sortie;
    return sortie.texte;
  }

  /// Runs a line in a new terminal, where it stays.
  void ouvrir(const std::string& ligne) const {
    Mots mots = {"new-session", "-d", "-c", dossier().string(), "env", "-u", "TMUX", "-u", "TMUX_PANE"};
    mots.insert(mots.end(), shell_.mots.begin(), shell_.mots.end());
    mots.push_back(ligne);
    const auto sortie = operateur(std::move(mots));
    ASSERT_EQ(sortie.statut, 0) << sortie;
  }

  essai::Sortie tmux(const Mots& arguments) const { return programme({"tmux"}, arguments); }

  std::ptrdiff_t clients() const { return std::ranges::count(tmux({"list-clients"}).texte, '\n'); }

  /// The words of each agent started so far.
  std::vector<Mots> lancements() const {
    std::vector<Mots> tous;
    LignesJSON::parcourir(
        lireFichier(maison.chemin() / "lancements", 1'000'000).value_or(""),
        [&](std::string_view ligne) { tous.push_back(LectureJSON::valeur(ligne)->get<Mots>()); });
    return tous;
  }

  /// Has the agent play a scene, and names it.
  std::string jouer(const std::string& maniere, const Mots& evenements) {
    const auto scene = "jeu/" + std::to_string(++scenes_);
    const auto brouillon = maison.ecrire(
        scene, EcritureJSON::compacte({{"maniere", maniere}, {"evenements", evenements}}).value());
    std::filesystem::rename(brouillon, maison.chemin() / (scene + ".json"));
    return scene;
  }
  /// Whether the scene was played, by hooks that said nothing and succeeded.
  bool joue(const std::string& scene) const {
    const auto ennuis = lireFichier(maison.chemin() / (scene + ".fait"), 1'000'000);
    EXPECT_EQ(ennuis.value_or(""), "") << shell_;
    return ennuis.has_value();
  }

 private:
  Environnement environnement() const {
    return {{"HOME", maison.chemin().string()},
            {"PATH", (maison.chemin() / "bin").string() + ":" + ::getenv("PATH")},
            {"TMUX_TMPDIR", maison.chemin().string()},
            {"LC_ALL", "C.UTF-8"},
            {"SHELL", "/bin/sh"}};
  }
  essai::Sortie programme(Mots mots, const Mots& arguments) const {
    mots.insert(mots.end(), arguments.begin(), arguments.end());
    return essai::executer(std::move(mots), environnement());
  }
  essai::Sortie operateur(const Mots& arguments) const {
    return programme({"tmux", "-L", "operateur", "-f", "/dev/null"}, arguments);
  }

  const essai::Interprete shell_;
  int scenes_ = 0;
};

/// The log of a session, read as the cockpit does.
struct Lecteur {
  const Ailleurs& ailleurs;
  std::string session;
  std::int64_t curseur = 0;
  std::vector<EvenementVol> evenements = {};
  std::optional<std::string> transcript = {};

  /// One read; whether the cursor moved.
  bool lire() {
    const std::string tranche = ailleurs.executer(CarnetDeVol::commandeLecture(session, curseur));
    auto lecture = CarnetDeVol::lire(tranche);
    evenements.insert(evenements.end(), lecture.evenements.begin(), lecture.evenements.end());
    if (lecture.transcript) transcript = lecture.transcript;
    const auto avant =
        std::exchange(curseur, CarnetDeVol::curseurSuivant(curseur, tranche.size(), lecture.consommes));
    return curseur != avant;
  }
  std::vector<EvenementVol> prendre() { return std::exchange(evenements, {}); }
};

struct Envoi {
  std::string texte;
  EvenementVol evenement;
};

Mots textes(const std::vector<Envoi>& envois) {
  Mots liste;
  for (const Envoi& envoi : envois) liste.push_back(envoi.texte);
  return liste;
}

std::vector<EvenementVol> attendus(const std::vector<Envoi>& envois) {
  std::vector<EvenementVol> liste;
  for (const Envoi& envoi : envois) liste.push_back(envoi.evenement);
  return liste;
}

std::string consigne(const std::string& texte) {
  return EcritureJSON::compacte({{"hook_event_name", "UserPromptSubmit"}, {"prompt", texte}}).value();
}

std::string ecriture(char motif, std::size_t taille) {
  return EcritureJSON::compacte(
             {{"hook_event_name", "PreToolUse"},
              {"tool_name", "Write"},
              {"tool_input",
               {{"file_path", std::string("/a/") + motif}, {"content", std::string(taille, motif)}}}})
      .value();
}

class VoliereReelle : public testing::TestWithParam<essai::Interprete> {
 protected:
  Ailleurs ailleurs{GetParam()};
};

TEST_P(VoliereReelle, SuitListeEtTueUnAgent) {
  const std::string session = "tarnavelle-claude";
  const auto journal = ailleurs.maison.ecrire(CarnetDeVol::journalDistant(session), "un vieux vol\n");
  const auto transcript = ailleurs.maison.ecrire(
      "projets/a b.jsonl", R"({"type":"ai-title","aiTitle":"Refonte du « parseur »","sessionId":"s"})"
                           "\n");
  const std::string ligne =
      CarnetDeVol::commandeLancement(AgentCLI::claude(), session, {"-p", "l'été\n\"$HOME\" `id`"});

  // A first launch empties the log and starts claude with its hooks.
  ailleurs.ouvrir(ligne);
  ASSERT_TRUE(attendre([&] { return !ailleurs.lancements().empty(); }));
  const Mots mots = {"-p", "l'été\n\"$HOME\" `id`", "--settings",
                     (ailleurs.maison.chemin() / CarnetDeVol::reglagesDistant(session)).string()};
  EXPECT_EQ(ailleurs.lancements(), std::vector<Mots>{mots});
  EXPECT_EQ(std::filesystem::file_size(journal), 0u);
  Lecteur lecteur{ailleurs, session};
  EXPECT_FALSE(lecteur.lire());

  // The log is read while it grows.
  const std::string dit = "« l'été » \"$HOME\" `id` \\n 100% 😀\nbis";
  const std::vector<Envoi> vol = {
      {EcritureJSON::compacte({{"hook_event_name", "SessionStart"}, {"transcript_path", transcript.string()}})
               .value() +
           "\n",
       {E::demarre{}}},
      {consigne(dit), {E::consigne{dit}}},
      {ecriture('x', 200'000) + "\n", {E::outil{"Write", "x"}}},
      {R"({"hook_event_name":"Notification"})", {E::besoin{""}}},
      {"{\r\n  \"hook_event_name\" : \"Stop\"\r\n}\r\n", {E::fini{}}},
  };
  const auto suivre = [&](const char* maniere, const std::vector<Envoi>& envois) {
    const auto scene = ailleurs.jouer(maniere, textes(envois));
    ASSERT_TRUE(attendre([&] {
      lecteur.lire();
      return lecteur.evenements.size() >= envois.size() && ailleurs.joue(scene);
    })) << testing::PrintToString(lecteur.evenements);
    EXPECT_EQ(lecteur.prendre(), attendus(envois));
    EXPECT_EQ(static_cast<std::uintmax_t>(lecteur.curseur), std::filesystem::file_size(journal));
  };
  suivre("enchaine", vol);
  EXPECT_EQ(lecteur.transcript, transcript.string());
  suivre("entrelace", {{ecriture('a', 100'000), {E::outil{"Write", "a"}}},
                       {consigne("au milieu"), {E::consigne{"au milieu"}}},
                       {ecriture('b', 70'000), {E::outil{"Write", "b"}}}});

  // Hooks that write at the very same time may share lines, which no reader could tell apart, and a line
  // may be longer than a read: those are passed over, no byte is lost, and what is decoded was sent.
  const Mots melee = {ecriture('f', 300'000), ecriture('c', 150'000), ecriture('d', 150'000),
                      consigne("c"),          consigne("d"),          consigne("e")};
  std::size_t attendue = std::filesystem::file_size(journal);
  for (const std::string& evenement : melee) attendue += evenement.size() + 1;
  const auto scene = ailleurs.jouer("ensemble", melee);
  ASSERT_TRUE(attendre([&] { return ailleurs.joue(scene); }));
  EXPECT_EQ(std::filesystem::file_size(journal), attendue);
  while (lecteur.lire()) {
  }
  EXPECT_EQ(static_cast<std::uintmax_t>(lecteur.curseur), attendue);
  for (const EvenementVol& evenement : lecteur.prendre())
    EXPECT_TRUE(std::ranges::any_of(melee, [&](const std::string& envoi) {
      return CarnetDeVol::decoder(envoi).evenement == evenement;
    })) << testing::PrintToString(evenement);
  suivre("enchaine", {{consigne("après"), {E::consigne{"après"}}}});

  // A second launch attaches another terminal to the same agent and leaves its log alone.
  ailleurs.ouvrir(ligne);
  ASSERT_TRUE(attendre([&] { return ailleurs.clients() == 2; }));
  EXPECT_EQ(static_cast<std::uintmax_t>(lecteur.curseur), std::filesystem::file_size(journal));
  EXPECT_EQ(ailleurs.lancements().size(), 1u);
  EXPECT_EQ(ailleurs.tmux({"show-options", "-v", "-t", session, "mouse"}).texte, "on\n");
  suivre("enchaine", {{R"({"hook_event_name":"SessionEnd"})", {E::fini{}}}});

  // The sessions as tmux lists them, with the titles after them.
  const auto lister = [&] {
    return VoliereTmux::lire(ailleurs.tmux({"list-sessions", "-F", std::string(VoliereTmux::format)}).texte +
                             ailleurs.executer(CarnetDeVol::commandeTitres(VoliereTmux::marqueTitre, 65536)));
  };
  const std::string codex = VoliereTmux::nommer({"codex", 2});
  ailleurs.ouvrir(CarnetDeVol::commandeLancement(AgentCLI::codex(), codex, {"-c", "a=\"l'été\""}));
  ASSERT_TRUE(attendre([&] { return ailleurs.lancements().size() == 2; }));
  EXPECT_EQ(ailleurs.lancements().back(), (Mots{"-c", "a=\"l'été\""}));
  for (const char* autre : {"work", "mon-tarnavelle-claude", "tarnavelle-a b"}) {
    ASSERT_EQ(ailleurs.tmux({"new-session", "-d", "-s", autre, "cat"}).statut, 0) << autre;
    EXPECT_EQ(VoliereTmux::commandeTuer(autre), std::nullopt) << autre;
  }
  const VoliereTmux::SessionLaBas agents[] = {{session, ailleurs.dossier().string(), "Refonte du « parseur »"},
                                              {codex, ailleurs.dossier().string(), ""}};
  EXPECT_EQ(lister(), std::vector(agents, agents + 2));

  // Killing spares the others, and is no error for a session that is dead already.
  const auto tuer = VoliereTmux::commandeTuer(session).value();
  EXPECT_EQ(ailleurs.executer(tuer), "");
  EXPECT_NE(ailleurs.executer(tuer), "");
  EXPECT_EQ(lister(), std::vector{agents[1]});
  ailleurs.executer(VoliereTmux::commandeTuer(codex).value());
  EXPECT_EQ(lister(), std::vector<VoliereTmux::SessionLaBas>{});
  EXPECT_EQ(ailleurs.tmux({"list-sessions", "-F", "#S"}).texte,
            "mon-tarnavelle-claude\ntarnavelle-a b\nwork\n");

  // A new session begins a new log.
  ailleurs.ouvrir(ligne);
  ASSERT_TRUE(attendre([&] { return ailleurs.lancements().size() == 3; }));
  EXPECT_EQ(std::filesystem::file_size(journal), 0u);
}

TEST_P(VoliereReelle, AucunNomNAjouteDeMotNiDeCommande) {
  const std::string temoin = (ailleurs.maison.chemin() / "canari").string();
  const Mots hostiles = {"l'été \"x\" 😀",
                         "$(touch " + temoin + ")",
                         "`touch " + temoin + "`",
                         "'; touch " + temoin + "; '",
                         "\"; touch " + temoin + "; \"",
                         "#(touch " + temoin + ")",
                         "a\\",
                         "a\nTV_VOL_EOF\ntouch " + temoin,
                         "fin;",
                         ";",
                         "\\;",
                         "-d",
                         "--",
                         "a && touch " + temoin + " &",
                         "*"};
  std::size_t lances = 0;
  const auto lancer = [&](AgentCLI agent, const std::string& nom) {
    agent.arguments = {nom, "--"};
    Mots attendus = {nom, "--"};
    attendus.insert(attendus.end(), hostiles.begin(), hostiles.end());
    if (agent.id == "claude")
      attendus.insert(attendus.end(),
                      {"--settings", (ailleurs.maison.chemin() / CarnetDeVol::reglagesDistant(nom)).string()});
    ailleurs.ouvrir(CarnetDeVol::commandeLancement(agent, nom, hostiles));
    ASSERT_TRUE(attendre([&] { return ailleurs.lancements().size() > lances; })) << nom;
    EXPECT_EQ(ailleurs.lancements().at(lances++), attendus) << nom;
  };
  for (const std::string& nom : hostiles) lancer(AgentCLI::claude(), nom);
  lancer(AgentCLI::codex(), hostiles[0] + "2");
  EXPECT_FALSE(std::filesystem::exists(temoin));
}

INSTANTIATE_TEST_SUITE_P(Shells, VoliereReelle, testing::ValuesIn(essai::interpretes()), [](const auto& shell) {
  std::string nom;
  for (const std::string& mot : shell.param.mots)
    for (const char c : mot)
      if (std::isalpha(static_cast<unsigned char>(c))) nom += c;
  return nom;
});

}  // namespace
}  // namespace tarnavelle
