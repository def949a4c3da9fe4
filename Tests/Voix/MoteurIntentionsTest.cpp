#include "Voix/MoteurIntentions.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <set>

#include "Socle/LectureJSON.hpp"

namespace tarnavelle {
namespace {

using I = IntentionTarnavelle;
namespace M = MoteurIntentions;

TEST(MoteurIntentions, Prompt) {
  using enum AdresseVoix;
  const auto vide = M::prompt({}, {}, microOuvert);
  const auto plein = M::prompt({.recit = "SCÈNE.", .nomsAgents = {"M"}}, {"", "codex"}, pressionTouche);
  for (const auto& [texte, couture] : {
           std::pair(vide, "MAINTENANT. Le plateau est vide.\nCLIs d'agents installés : aucun.\n\nRENDS"),
           {plein, "MAINTENANT. SCÈNE.\nCLIs d'agents installés : , codex.\n\nRENDS"},
           {plein, "{\"action\":\"rien\"}\n\nRÈGLES QUI COMPTENT"},
           {plein, "balise ```.\n\nIMPORTANT — ON T'A"},
           {vide, "balise ```.\n\nCRUCIAL — EST-CE QU'ON TE PARLE ?"},
       })
    EXPECT_NE(texte.find(couture), texte.npos) << couture;
}

// The prompt asks for nothing that the decoder would not take, and for all that it takes.
TEST(MoteurIntentions, ChaqueModeleDeCommandeEstLu) {
  const auto texte = M::prompt({}, {}, AdresseVoix::pressionTouche);
  std::set<std::size_t> cas;
  for (auto i = texte.find("- {"); i != texte.npos; i = texte.find("- {", i + 1)) {
    auto ligne = texte.substr(i + 2, texte.find('\n', i) - i - 2);
    if (const auto libre = ligne.find(":<bool>"); libre != ligne.npos) ligne.replace(libre, 7, ":true");
    const auto objet = M::objetJSON(ligne);
    ASSERT_TRUE(objet) << ligne;
    if (const auto intention = M::commande(*objet))
      EXPECT_TRUE(cas.insert(intention->cas.index()).second) << ligne;
    else
      EXPECT_EQ(Champ::texte(*objet, "action"), "rien");
  }
  EXPECT_EQ(cas.size(), 9u);
}

TEST(MoteurIntentions, Commandes) {
  const std::pair<const char*, I> cas[] = {
      {R"({"action":"DICTER","agent":"null","text":"  lance les tests "})", {I::dicter{"", "lance les tests"}}},
      {R"({"action":"Prompt_Agent","agent":"M","texte":"t","valider":false})", {I::dicter{"M", "t", false}}},
      {R"({"action":"dicter","agent":7,"texte":" Null ","text":"u","valider":""})", {I::dicter{"", "Null"}}},
      {R"({"action":"dicter","texte":"NULL","text":"u"})", {I::dicter{"", "u"}}},
      {R"({"action":"focus","target":"Milan"})", {I::focus{"Milan"}}},
      {R"({"action":"aller_scene","nom":"\u00a0API\n"})", {I::allerScene{"API"}}},
      {R"({"action":"spawn_agent","agent":"c","dossier":"null","hote":"h"})", {I::ouvrirAgent{"c", "", "h"}}},
      {R"({"action":"open_browser","url":"exemple"})", {I::ouvrirWeb{"exemple", false}}},
      {R"({"action":"ouvrir_web","cible":"c","url":"u","externe":true})", {I::ouvrirWeb{"c", true}}},
      {R"({"action":"lire","agent":null,"depuis_prompt":true})", {I::lire{"", true}}},
      {R"({"action":"lire","agent":"Milan","depuis_prompt":1})", {I::lire{"Milan", false}}},
  };
  for (const auto& [objet, attendu] : cas)
    EXPECT_TRUE(M::commande(LectureJSON::valeur(objet).value()) == attendu) << objet;
  for (const char* refus :
       {R"({"action":"dicter","texte":" \n","text":["u"]})", R"({"action":" focus","cible":"Milan"})",
        R"({"action":"focus","cible":null})", R"({"action":"aller_scene","cible":"API"})",
        R"({"action":"ouvrir_web","externe":true})", R"({"action":"repli","text":"p"})",
        R"({"action":"verdict"})", R"({"action":["etat"]})", R"("etat")"})
    EXPECT_FALSE(M::commande(LectureJSON::valeur(refus).value())) << refus;
}

TEST(MoteurIntentions, Nombres) {
  EXPECT_EQ(M::nombre(std::numeric_limits<std::uint64_t>::max()), 18446744073709551615.0);
  EXPECT_EQ(M::nombre("0,85"), .85);
  EXPECT_EQ(M::nombre("-1e-1"), -.1);
  for (const Json& refus : {Json(""), Json(" 0.5"), Json("0.5 "), Json("1.000,5"), Json("nan"), Json("0x1"),
                            Json("1e999"), Json(true), Json::array({1})})
    EXPECT_FALSE(M::nombre(refus)) << refus;
}

TEST(MoteurIntentions, Verdicts) {
  const std::vector<I> etat = {I{I::etat{}}};
  const std::pair<std::string, VerdictIntentions> lus[] = {
      {"\xFF{\"confiance\":-2}\xFE", {true, 0, "", {}}},  // only the object need be readable
      {R"({"adressee":"false","directed_at_app":false,"confiance":"beaucoup","confidence":0.5,"raison":null,)"
       R"("reasoning":"r","commandes":{"action":"lire"},"commands":[{"action":"etat"}]})",
       {false, 0.5, "r", etat}},
      {R"({"adressee":true,"directed_at_app":false,"confiance":0,"confidence":1,"raison":"","reasoning":"r",)"
       R"("commandes":[],"commands":[{"action":"etat"}]})",
       {true, 0, "", {}}},
      {R"({"confiance":7,"commandes":[{"action":"focus","cible":"Milan"},7,null,{"action":"dicter"},)"
       R"({"action":"rien"},{"action":"lire"},{"action":"focus","cible":"Milan"}]})",
       {true, 1, "", {I{I::focus{"Milan"}}, I{I::lire{"", false}}, I{I::focus{"Milan"}}}}},
  };
  for (const auto& [reponse, attendu] : lus) EXPECT_TRUE(M::decoder(reponse) == attendu) << reponse;
  for (const char* refus : {"", "}{", "{", "{\"raison\":\"\xFF\"}"}) EXPECT_FALSE(M::decoder(refus)) << refus;
  std::string longue;
  for (int i = 0; i < 121; ++i) longue += "e\u0301";
  EXPECT_EQ(M::decoder("{\"raison\":\"" + longue + "\"}")->raison, longue.substr(3));
}

TEST(MoteurIntentions, VerdictsCommeLesModelesLesEcrivent) {
  const std::string verdict = R"({"adressee":true,"confiance":0.5,"commandes":[{"action":"etat"}]})";
  const VerdictIntentions lu = {true, .5, "", {I{I::etat{}}}};
  for (const std::string& reponse :
       {"<think>\nDisons {\"adressee\":false}, {\"action\":\"focus\"… non.\n</think>\n" + verdict,
        "Je mets {action} ainsi :\n```json\n" + verdict + "\n```\nSi {ambigu} il y a.",
        verdict + "\n" + R"({"adressee":false,"commandes":[]})", R"({"note":1} )" + verdict,
        R"({"verdict":)" + verdict, verdict.substr(0, verdict.size() - 2) + ",],}",
        R"({"a":"\ud83c"} )" + verdict})
    EXPECT_TRUE(M::decoder(reponse) == lu) << reponse;

  const VerdictIntentions seules = {true, 0, "", {I{I::etat{}}, I{I::focus{"Milan"}}}};
  EXPECT_TRUE(M::decoder(R"([{"action":"etat"}, {"action":"rien"},
                            {"action":"focus","cible":"Milan"}])") == seules);
  const char* seule = R"(Soit : {"action":"etat","confiance":0.5}.)";
  EXPECT_TRUE(M::lire(seule).verdict == lu);
  EXPECT_TRUE(M::decoder(seule) == (VerdictIntentions{true, .5, "", {}}));
  for (const char* refus : {
           R"({"adressee":false,"commandes":[{"action":"etat"})",  // cut: it may say no
           R"({"action":"etat"},{"action":"etat"} {"adressee":false,"raison":"il pen)",
           R"(<think>{"action":"etat"} ou {"adressee":true}</think> Je ne sais pas.)",
           R"(<think>{"action":"etat"} ou {"adressee":true} ?)",
           R"({"erreur":"quota"} {"code":429})",
       })
    EXPECT_FALSE(M::decoder(refus)) << refus;
  for (const char* vide :
       {R"({"action":"etat"} {"adressee":false)", R"(<think>{"action":"etat"}</think> Je ne sais pas.)"})
    EXPECT_TRUE(M::decoder(vide) == (VerdictIntentions{true, 0, "", {}})) << vide;
}

TEST(MoteurIntentions, RienDeDemandeOuRienDeLisible) {
  using enum TeneurReponse;
  const std::pair<const char*, TeneurReponse> cas[] = {
      {R"({"commandes":[{"action":"Rien"},{"action":"etat"}]})", demande},
      {R"({"action":"etat"})", demande},
      {R"({"adressee":false,"commandes":[{"action":"etat"}]})", rien},
      {R"({"adressee":true,"commandes":[{"action":"RIEN"}]})", rien},
      {R"({"commandes":[]})", rien},
      {R"({"action":"rien"})", rien},
      {R"({"adressee":true,"commandes":[{"action":"rien"},{"action":"focus"}]})", illisible},
      {R"({"adressee":true,"commandes":"etat"})", illisible},
      {R"({"adressee":true})", illisible},
      {R"({"erreur":"quota"})", illisible},
      {"Je n'ai pas compris.", illisible},
  };
  for (const auto& [reponse, teneur] : cas) EXPECT_EQ(M::lire(reponse).teneur, teneur) << reponse;
}

}  // namespace
}  // namespace tarnavelle
