#include <gtest/gtest.h>

#include "Voix/AnnonceVoix.hpp"
#include "Voix/LectureDepuisPrompt.hpp"
#include "Voix/PhraseDeSommeil.hpp"

namespace tarnavelle {
namespace {

TEST(AnnonceVoix, Textes) {
  using namespace AnnonceVoix;
  const std::string phrase = " Dis-le en une phrase courte";
  EXPECT_EQ(annonce({" Rouge.\n", "\tDis-le. "}), "[tarnavelle] Rouge. Dis-le.");
  EXPECT_EQ(annonce({"Rien d'autre.", " "}), "[tarnavelle] Rien d'autre.");
  EXPECT_EQ(evenement({" Merlin ", "attend\n"}), "[tarnavelle] (Événement : Merlin — attend)" + phrase + ".");
  EXPECT_EQ(evenement({" ", "Build rouge"}), "[tarnavelle] (Événement : Build rouge)" + phrase + ".");
  EXPECT_EQ(evenement({" ", "\n"}), "");
  EXPECT_EQ(aFini({" M", "\n"}), "[tarnavelle] M a fini." + phrase + " et propose la suite.");
  EXPECT_EQ(aFini({"M", " Vert. "}), "[tarnavelle] M a fini : Vert." + phrase + " et propose la suite.");
}

TEST(LectureDepuisPrompt, AncrePuisSuite) {
  std::string longue = " x";
  for (int i = 0; i < 160; ++i) longue += "e\u0301";
  EXPECT_EQ(LectureDepuisPrompt::ancre(longue + "\n\u00A0"), longue.substr(2));

  using LectureDepuisPrompt::depuis;
  EXPECT_EQ(depuis("> tests\nrouge\n> tests\nvert\n", "> tests"), "\nvert\n");
  EXPECT_EQ(depuis("aaa", "aa"), "");
  EXPECT_EQ(depuis("la suite seule", "> tests"), "la suite seule");
  EXPECT_EQ(depuis("écran", {}), "écran");
}

TEST(PhraseDeSommeil, CorrespondEnEntier) {
  EXPECT_EQ(PhraseDeSommeil::normaliser(" !e\u0301teins,  n°2 (C’EST\u00A0l'Œuf)…"), "eteins n 2 c est l œuf");
  for (const char* oui : {"BONNE NUIT, Tarnavelle.", "Arre\u0302te d’e\u0301couter !"})
    EXPECT_TRUE(PhraseDeSommeil::correspond(oui)) << oui;
  for (const char* non : {"", "bonne nuit à tous", "bonnenuit", "dis bonne nuit", "c est"})
    EXPECT_FALSE(PhraseDeSommeil::correspond(non)) << non;
}

}  // namespace
}  // namespace tarnavelle
