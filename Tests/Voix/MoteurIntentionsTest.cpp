#include "Voix/MoteurIntentions.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <set>

namespace tarnavelle {
namespace {

using namespace std::string_literals;
using I = IntentionTarnavelle;
using Commandes = std::vector<I>;
namespace M = MoteurIntentions;

// Only the board, the programs and the last block change.
TEST(MoteurIntentions, Prompt) {
  using enum AdresseVoix;
  const auto vide = M::prompt({}, {}, microOuvert);
  const auto debut =
      vide.find(".\n\nRENDS EXACTEMENT CE JSON, sans prose, sans balises de code :\n{\"adressee\": <bool>");
  ASSERT_NE(debut, vide.npos);
  const auto regles = vide.substr(debut, vide.size() - debut - M::queue(microOuvert).size());
  const std::string tete =
      "Tu es le MOTEUR D'INTENTIONS de Tarnavelle, un cockpit d'agents de code piloté à la voix. Tu convertis "
      "UNE phrase parlée (déjà transcrite, parfois mal) en commandes du cockpit. Tu ne parles à personne : tu "
      "ne rends que du JSON.\n\nLE PLATEAU, MAINTENANT. ";
  EXPECT_EQ(vide, tete + "Le plateau est vide.\nCLIs d'agents installés : aucun" + regles +
                      std::string(M::queue(microOuvert)));
  EXPECT_EQ(
      M::prompt({.recit = "SCÈNE « API ».", .nomsAgents = {"Merlin"}}, {"claude", "codex"}, pressionTouche),
      tete + "SCÈNE « API ».\nCLIs d'agents installés : claude, codex" + regles +
          std::string(M::queue(pressionTouche)));
  EXPECT_NE(M::prompt({}, {"", "codex"}, microOuvert).find(" installés : , codex.\n"), vide.npos);
  std::size_t i = 0;
  for (const char* morceau :
       {"RÈGLES QUI COMPTENT :\n- DICTER EXIGE UNE ADRESSE.", "tu es le microphone, pas l'auteur",
        "\n- LES NOMS SONT CEUX DU PLATEAU (Merlin, Milan…), JAMAIS le nom du CLI.", "\n- PLUSIEURS CONSIGNES",
        "Le repli n'est pas un échec : c'est la porte de l'orchestrateur.\n- LES QUESTIONS",
        "\n- TU N'INVENTES NI CHEMIN, NI URL, NI NOM.",
        "\n- AUCUNE prose, AUCUN commentaire, AUCUNE balise ```.\n"}) {
    i = regles.find(morceau, i);
    ASSERT_NE(i, regles.npos) << morceau;
  }
}

// The prompt asks for nothing that the decoder would not take.
TEST(MoteurIntentions, ChaqueModeleDeCommandeEstLu) {
  const auto texte = M::prompt({}, {}, AdresseVoix::pressionTouche);
  std::set<std::size_t> cas;
  std::size_t rien = 0;
  for (auto i = texte.find("- {"); i != texte.npos; i = texte.find("- {", i + 1)) {
    auto ligne = texte.substr(i + 2, texte.find('\n', i) - i - 2);
    if (const auto libre = ligne.find(":<bool>"); libre != ligne.npos) ligne.replace(libre, 7, ":true");
    const auto objet = M::objetJSON(ligne);
    ASSERT_TRUE(objet) << ligne;
    const auto intention = M::commande(*objet);
    if (intention)
      EXPECT_TRUE(cas.insert(intention->cas.index()).second) << ligne;
    else
      rien += Champ::texte(*objet, "action") == "rien";
  }
  EXPECT_EQ(cas.size(), 9u);
  EXPECT_EQ(rien, 1u);
}

TEST(MoteurIntentions, Commandes) {
  const struct {
    const char* objet;
    std::optional<I> attendu;
  } cas[] = {
      {R"({"action":"DICTER","agent":"null","text":"  lance les tests "})",
       I{I::dicter{"", "lance les tests", true}}},
      {R"({"action":"Prompt_Agent","agent":"Merlin","texte":"t","text":"u","valider":false})",
       I{I::dicter{"Merlin", "t", false}}},
      {R"({"action":"dicter","agent":7,"texte":" Null ","text":"u","valider":"false"})",
       I{I::dicter{"", "Null", true}}},
      {R"({"action":"dicter","texte":"NULL","text":"u"})", I{I::dicter{"", "u", true}}},
      {R"({"action":"dicter","agent":"Merlin"})", {}},
      {R"({"action":"dicter","texte":" \n","text":["u"]})", {}},
      {R"({"action":"focus","target":"Milan"})", I{I::focus{"Milan"}}},
      {R"({"action":" focus","cible":"Milan"})", {}},
      {R"({"action":"focus","cible":null})", {}},
      {R"({"action":"aller_scene","nom":"\u00a0API\n"})", I{I::allerScene{"API"}}},
      {R"({"action":"aller_scene","cible":"API"})", {}},
      {R"({"action":"ouvrir_agent"})", I{I::ouvrirAgent{"", "", ""}}},
      {R"({"action":"spawn_agent","agent":"codex","dossier":"null","hote":"h"})",
       I{I::ouvrirAgent{"codex", "", "h"}}},
      {R"({"action":"open_browser","url":"exemple"})", I{I::ouvrirWeb{"exemple", false}}},
      {R"({"action":"ouvrir_web","cible":"c","url":"u","externe":true})", I{I::ouvrirWeb{"c", true}}},
      {R"({"action":"ouvrir_web","externe":true})", {}},
      {R"({"action":"lire","agent":null,"depuis_prompt":true})", I{I::lire{"", true}}},
      {R"({"action":"lire","agent":"Milan","depuis_prompt":1})", I{I::lire{"Milan", false}}},
      {R"({"action":"resumer"})", I{I::resumer{""}}},
      {R"({"action":"ETAT"})", I{I::etat{}}},
      {R"({"action":"repli","texte":"p"})", I{I::repli{"p"}}},
      {R"({"action":"repli","text":"p"})", {}},
      {R"({"action":"rien"})", {}},
      {R"({"action":"verdict"})", {}},
      {R"({"action":["etat"]})", {}},
      {R"({})", {}},
      {R"("etat")", {}},
  };
  for (const auto& c : cas)
    EXPECT_TRUE(M::commande(LectureJSON::valeur(c.objet).value()) == c.attendu) << c.objet;
}

TEST(MoteurIntentions, Nombres) {
  const struct {
    Json valeur;
    std::optional<double> attendu;
  } cas[] = {
      {0.25, 0.25},
      {7, 7.0},
      {-2, -2.0},
      {std::numeric_limits<std::uint64_t>::max(), 18446744073709551615.0},
      {"0,85", 0.85},
      {"0.85", 0.85},
      {"-1e-1", -0.1},
      {"+1", 1.0},
      {",5", 0.5},
      {"1,", 1.0},
      {"", {}},
      {"beaucoup", {}},
      {" 0.5", {}},
      {"0.5 ", {}},
      {"0.5%", {}},
      {"1.000,5", {}},
      {"nan", {}},
      {"inf", {}},
      {"0x1", {}},
      {"1e999", {}},
      {true, {}},
      {nullptr, {}},
      {Json::array({1}), {}},
  };
  for (const auto& c : cas) EXPECT_EQ(M::nombre(c.valeur), c.attendu) << c.valeur;
}

TEST(MoteurIntentions, Verdicts) {
  const Commandes etat = {I{I::etat{}}};
  const struct {
    std::string reponse;
    std::optional<VerdictIntentions> attendu;
  } cas[] = {
      {"Voici :\n```json\n{\"adressee\":true,\"confiance\":0.9,\"raison\":\"ordre\",\"commandes\":[{\"action\":"
       "\"etat\"}]}\n```",
       VerdictIntentions{true, 0.9, "ordre", etat}},
      {"\xFF{}\xFE", VerdictIntentions{true, 0, "", {}}},  // only the object need be readable
      {R"({"directed_at_app":false,"confidence":"0,85","reasoning":"r","commands":[{"action":"etat"}]})",
       VerdictIntentions{false, 0.85, "r", etat}},
      {R"({"adressee":"false","directed_at_app":false,"confiance":"beaucoup","confidence":0.5,"raison":null,)"
       R"("reasoning":"r","commandes":{"action":"lire"},"commands":[{"action":"etat"}]})",
       VerdictIntentions{false, 0.5, "r", etat}},
      {R"({"adressee":true,"directed_at_app":false,"confiance":0,"confidence":1,"raison":"","reasoning":"r",)"
       R"("commandes":[],"commands":[{"action":"etat"}]})",
       VerdictIntentions{true, 0, "", {}}},
      {R"({"confiance":7,"commandes":[{"action":"focus","cible":"Milan"},7,null,{"action":"dicter"},)"
       R"({"action":"rien"},{"action":"lire"},{"action":"focus","cible":"Milan"}]})",
       VerdictIntentions{true, 1, "", {I{I::focus{"Milan"}}, I{I::lire{"", false}}, I{I::focus{"Milan"}}}}},
      {R"({"confiance":-2})", VerdictIntentions{true, 0, "", {}}},
      {R"({"confiance":"beaucoup"})", VerdictIntentions{true, 0, "", {}}},
      {"", {}},
      {"Je n'ai pas compris.", {}},
      {"}{", {}},
      {"{", {}},
      {"[]", {}},
      {R"({"adressee":true} et {"adressee":false})", {}},
      {"{\"raison\":\"\xFF\"}", {}},
      {R"({"confiance":NaN})", {}},
      {R"({"a":)" + std::string(600, '[') + std::string(600, ']') + "}", {}},
      {std::string(100000, '{') + std::string(100000, '}'), {}},
  };
  for (const auto& c : cas) EXPECT_TRUE(M::decoder(c.reponse) == c.attendu) << c.reponse.substr(0, 300);

  std::string longue;
  for (int i = 0; i < 200; ++i) longue += "e\u0301";
  EXPECT_EQ(M::decoder("{\"raison\":\"" + longue + "\"}")->raison, longue.substr(0, 120 * 3));
  EXPECT_TRUE(VerdictIntentions::silence() == (VerdictIntentions{false, 0, "", {}}));
}

}  // namespace
}  // namespace tarnavelle
