#include <gtest/gtest.h>

#include "Voix/AnnonceVoix.hpp"
#include "Voix/LectureDepuisPrompt.hpp"
#include "Voix/PhraseDeSommeil.hpp"

namespace tarnavelle {
namespace {

TEST(AnnonceVoix, Textes) {
  using namespace AnnonceVoix;
  const std::pair<std::string, std::string> cas[] = {
      {annonce({.texte = " Rouge.\n", .consigne = "\tDis-le. "}), "[tarnavelle] Rouge. Dis-le."},
      {annonce({.texte = "Rien d'autre.", .consigne = " "}), "[tarnavelle] Rien d'autre."},
      {annonce({.texte = " \n", .consigne = "Dis-le."}), ""},
      {evenement({.titre = " Merlin ", .corps = "attend ta réponse\n"}),
       "[tarnavelle] (Événement : Merlin — attend ta réponse) Dis-le en une phrase courte."},
      {evenement({.titre = " ", .corps = "Build rouge"}),
       "[tarnavelle] (Événement : Build rouge) Dis-le en une phrase courte."},
      {evenement({.titre = " ", .corps = "\n"}), ""},
      {aFini({.agent = " Merlin", .resume = "\n"}),
       "[tarnavelle] Merlin a fini. Dis-le en une phrase courte et propose la suite."},
      {aFini({.agent = "Merlin", .resume = " Tests au vert. "}),
       "[tarnavelle] Merlin a fini : Tests au vert. Dis-le en une phrase courte et propose la suite."},
  };
  for (const auto& [obtenu, attendu] : cas) EXPECT_EQ(obtenu, attendu);
}

TEST(LectureDepuisPrompt, AncrePuisSuite) {
  std::string longue = " x";
  for (int i = 0; i < 160; ++i) longue += "e\u0301";
  EXPECT_EQ(LectureDepuisPrompt::ancre(longue + "\n\u00A0"), longue.substr(2));

  const std::tuple<std::string, std::optional<std::string>, std::string> cas[] = {
      {"> tests\nrouge\n> tests\nvert\n", "> tests", "\nvert\n"},
      {"aaa", "aa", ""},
      {"la suite seule", "> tests", "la suite seule"},
      {"écran", "", "écran"},
      {"écran", {}, "écran"},
  };
  for (const auto& [ecran, ancre, suite] : cas)
    EXPECT_EQ(LectureDepuisPrompt::depuis(ecran, ancre), suite) << ecran;
}

TEST(PhraseDeSommeil, CorrespondEnEntier) {
  EXPECT_EQ(PhraseDeSommeil::normaliser(" !e\u0301teins,  n°2 (C’EST\u00A0l'Œuf)…"), "eteins n 2 c est l œuf");
  for (const char* oui :
       {"BONNE NUIT, Tarnavelle.", "Arre\u0302te d’e\u0301couter !", "That’s all, Tarnavelle"})
    EXPECT_TRUE(PhraseDeSommeil::correspond(oui)) << oui;
  for (const char* non : {"", "bonne nuit à tous", "bonnenuit", "dis bonne nuit", "c est"})
    EXPECT_FALSE(PhraseDeSommeil::correspond(non)) << non;
}

}  // namespace
}  // namespace tarnavelle
