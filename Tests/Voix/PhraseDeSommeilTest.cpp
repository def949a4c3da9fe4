#include "Voix/PhraseDeSommeil.hpp"

#include <gtest/gtest.h>

namespace tarnavelle {
namespace {

TEST(PhraseDeSommeil, Normalise) {
  const struct {
    std::string texte;
    std::string normalise;
  } cas[] = {
      {"Arrête d'écouter !", "arrete d ecouter"},
      {"  C’EST\u00A0tout…merci", "c est tout merci"},
      {"e\u0301teins, n°2 (œuf)", "eteins n 2 œuf"},
      {"!?\n", ""},
  };
  for (const auto& c : cas) EXPECT_EQ(PhraseDeSommeil::normaliser(c.texte), c.normalise) << c.texte;
}

TEST(PhraseDeSommeil, CorrespondEnEntier) {
  for (const auto phrase : PhraseDeSommeil::corpus) EXPECT_TRUE(PhraseDeSommeil::correspond(phrase)) << phrase;
  EXPECT_EQ(PhraseDeSommeil::corpusNormalise().size(), PhraseDeSommeil::corpus.size());
  for (const char* oui :
       {"BONNE NUIT, Tarnavelle.", "Arre\u0302te d’e\u0301couter !", "That’s all, Tarnavelle"})
    EXPECT_TRUE(PhraseDeSommeil::correspond(oui)) << oui;
  for (const char* non :
       {"", "bonne nuit à tous", "bonne nuit les amis", "bonnenuit", "dis bonne nuit", "c est"})
    EXPECT_FALSE(PhraseDeSommeil::correspond(non)) << non;
}

}  // namespace
}  // namespace tarnavelle
