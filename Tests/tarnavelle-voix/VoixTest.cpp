#include <gtest/gtest.h>

#include "DossierTemporaire.hpp"
#include "Options.hpp"
#include "Outils.hpp"
#include "Plateau.hpp"
#include "ReglagesVoix.hpp"
#include "Touches.hpp"

namespace tarnavelle::Voix {
namespace {

TEST(Touches, CeQueDitLeTerminalQuelsQueSoientLesMorceaux) {
  using enum Touche;
  struct Cas {
    std::string_view octets;
    std::vector<Touche> touches;
    bool saitLacher = false;
  };
  for (const auto& [octets, attendues, sait] : {
           Cas{"  ", {espace, espace}},
           Cas{"\x03", {quitter}},
           Cas{"\x04", {quitter}},
           Cas{"aq", {quitter}},
           Cas{"\x0c", {redessiner}},
           Cas{"\033[A\033[1;5C ", {espace}},
           Cas{"\033[?0u\033[?1;2c", {}, true},
           Cas{"\033[32u\033[32;1:2u\033[32;1:2u\033[32;1:3u", {espace, espaceLachee}},
           Cas{"\033[32:32;1:1;32u", {espace}},
           Cas{"\033[99;5u\033[99;5:3u", {quitter}},
           Cas{"\033[99;133u", {quitter}},  // with Num Lock
           Cas{"\033[99;1u", {}},
           Cas{"\033[27u\033[27;1:3u", {echap}},
           Cas{"\033x", {echap}},
           Cas{"\033[99999999999999999999;5u", {}},
       }) {
    Touches entieres, coupees;
    EXPECT_EQ(entieres.lire(octets), attendues) << testing::PrintToString(octets);
    EXPECT_EQ(entieres.saitLacher(), sait);
    std::vector<Touche> unes;
    for (const char c : octets)
      for (const Touche t : coupees.lire({&c, 1})) unes.push_back(t);
    EXPECT_EQ(unes, attendues) << testing::PrintToString(octets);
  }
  Touches seule;
  EXPECT_TRUE(seule.lire("\033").empty());
  EXPECT_EQ(seule.calme(), std::vector{echap});
  Touches sansFin;
  EXPECT_TRUE(sansFin.lire("\033[" + std::string(1000, '1')).empty());
  EXPECT_EQ(sansFin.lire("u "), std::vector{espace}) << "what is too long is let go";
}

TEST(Outils, UnVerdictNeVaPasAUnAutre) {
  const std::vector<AgentVu> deux = {{"Merlin", "claude", "", ""}, {"Milan", "claude", "", ""}};
  const std::vector un(deux.begin(), deux.begin() + 1);
  EXPECT_EQ(viseParLeVerdict(un, "Milan")->nom, "Merlin");
  EXPECT_EQ(viseParLeVerdict(deux, "milan")->nom, "Milan");
  for (const char* lu : {"", "Harfang"}) EXPECT_EQ(viseParLeVerdict(deux, lu), nullptr) << lu;
}

TEST(Outils, LesTouchesDUnVerdict) {
  constexpr std::string_view claude = "Do you want to proceed?\n│ ❯ 1. Yes          │\n│   2. No, tell it   │";
  constexpr std::string_view descendu = "Do you want to proceed?\n  1. Yes\n❯ 2. No, and tell Claude";
  struct Cas {
    bool accord;
    std::string_view programme, ecran;
    std::optional<std::string> touches;
  };
  for (const auto& [accord, programme, ecran, touches] :
       {Cas{true, "claude", claude, "entree"}, Cas{false, "claude", claude, "esc"},
        Cas{true, "claude", descendu, std::nullopt}, Cas{false, "claude", descendu, "esc"},
        Cas{true, "codex", "› 1. Nouvelle branche\n  2. Non", "entree"},
        Cas{true, "gemini", "● Refuser", std::nullopt}, Cas{true, "codex", "", "entree"},
        Cas{true, "hermes", descendu, "o"}, Cas{false, "hermes", "", "n"}})
    EXPECT_EQ(touchesDuVerdict(accord, programme, ecran), touches) << ecran;
}

TEST(Plateau, CeQuEnDitLaPorte) {
  const auto vu = PlateauVu::lire(R"({"ok":true,"data":{"scene":"Sources","autres_scenes":["Atelier"],"crew":[],
    "agents":[{"nom":"Merlin","cli":"claude","etat":"attend une réponse","hote":""},{"nom":7}],
    "ailleurs":[{"nom":"Mi\u001b[2Jlan","cli":"codex","etat":"travaille","scene":"Atelier","hote":"studio"}]}})");
  ASSERT_TRUE(vu);
  EXPECT_EQ(
      vu->monde.recit,
      "Scène visible : Sources. Agents : Merlin (claude) : attend une réponse ; Mi[2Jlan (codex sur studio) : "
      "travaille, sur la scène Atelier. Autres scènes : Atelier.");
  EXPECT_EQ(vu->monde.nomsAgents, (std::vector<std::string>{"Merlin", "Mi[2Jlan"}));
  EXPECT_EQ(appelsNouveaux({}, *vu), std::vector<std::string>{"Merlin"});
  EXPECT_TRUE(appelsNouveaux(*vu, *vu).empty());
  for (const char* autre : {"", "[]", R"({"ok":false,"error":"non"})", R"({"data":{}})"})
    EXPECT_FALSE(PlateauVu::lire(autre)) << autre;
  EXPECT_EQ(PlateauVu::lire(R"({"ok":true,"data":{"agents":"x","scene":3}})"), PlateauVu{});
}

TEST(Service, CeluiDontLaCleEstRegleeOuPourquoiAucun) {
  const DossierTemporaire dossier;
  struct Cas {
    Environnement regles;
    std::optional<std::string> choisi;
    std::string attendu;  ///< the service's id and key, or the beginning of the refusal
  };
  for (const auto& [regles, choisi, attendu] : {
           Cas{{{"OPENAI_API_KEY", "a"}, {"XAI_API_KEY", "b"}}, {}, "openai a"},
           Cas{{{"XAI_API_KEY", "b"}}, {}, "grok b"},
           Cas{{{"OPENAI_API_KEY", "a"}, {"TARNAVELLE_VOIX_SERVICE", "openai-2.1"}}, {}, "openai-2.1 a"},
           Cas{{{"OPENAI_API_KEY", "a"}, {"TARNAVELLE_VOIX_SERVICE", "openai-2.1"}}, "openai", "openai a"},
           Cas{{{"OPENAI_API_KEY", "a"}}, "grok", "La clé de Grok Voice manque."},
           Cas{{}, {}, "Aucune clé de service vocal"},
           Cas{{}, "perdu", "Service inconnu : « perdu »."},
           Cas{{{"TARNAVELLE_VOIX_URL", "wss://voix.exemple/v1"}, {"TARNAVELLE_VOIX_CLE", "c"}}, {}, "autre c"},
           Cas{{{"TARNAVELLE_VOIX_URL", "ws://127.0.0.1:8/v1"}, {"TARNAVELLE_VOIX_CLE", "c"}}, {}, "autre c"},
           Cas{{{"TARNAVELLE_VOIX_URL", "ws://voix.exemple/v1"}, {"TARNAVELLE_VOIX_CLE", "c"}},
               {},
               "TARNAVELLE_VOIX_URL n'est pas"},
           Cas{{{"TARNAVELLE_VOIX_URL", "wss://voix.exemple/v1"}}, {}, "La clé de cet autre service manque."},
           Cas{{{"TARNAVELLE_VOIX_URL", "wss://v.exemple"}, {"TARNAVELLE_VOIX_DIALECTE", "latin"}},
               {},
               "TARNAVELLE_VOIX_DIALECTE vaut"},
       }) {
    Environnement table = regles;
    table["XDG_CONFIG_HOME"] = table["HOME"] = dossier.chemin().string();
    const auto service = choisirService(Reglages::lire(table, familleVoix()), choisi);
    const std::string obtenu = service ? service->provider.id + " " + service->cle : service.raison().phrase;
    EXPECT_TRUE(obtenu.starts_with(attendu)) << obtenu;
  }
}

TEST(Options, UneLigneSensee) {
  const auto lues = Options::lire({"--pousser", "--entree=-", "--micro", "2", "--profil", "casque"});
  ASSERT_TRUE(lues);
  EXPECT_TRUE(lues->pousser && lues->entree == "-" && lues->micro == "2" && lues->profil == "casque" &&
              !lues->json);
  for (const std::vector<std::string>& mots : {std::vector<std::string>{"--rien"},
                                               {"mot"},
                                               {"--micro"},
                                               {"--micro="},
                                               {"--json=1"},
                                               {"--profil", "bas"}})
    EXPECT_FALSE(Options::lire(mots)) << mots.front();
}

}  // namespace
}  // namespace tarnavelle::Voix
