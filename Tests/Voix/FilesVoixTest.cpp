#include <gtest/gtest.h>

#include "Voix/FileAnnoncesVoix.hpp"
#include "Voix/FileAppelsRealtime.hpp"

namespace tarnavelle {
namespace {

using File = std::deque<std::string>;

TEST(FileAnnoncesVoix, GardeLesDernieres) {
  FileAnnoncesVoix file;
  for (const char* texte : {" a\n", "a", "", "\t\u2028", "b", "a"}) file.enfiler(texte);
  EXPECT_EQ(file.attente, (File{"a", "b", "a"}));
  for (const char* texte : {"c", "d", "e"}) file.enfiler(texte);
  EXPECT_EQ(file.attente, (File{"b", "a", "c", "d", "e"}));
  file.remettre("z");
  EXPECT_EQ(file.attente, (File{"z", "b", "a", "c", "d"}));
  file.attente.insert(file.attente.end(), {"f", "g"});
  file.remettre("y");
  EXPECT_EQ(file.attente, (File{"y", "z", "b", "a", "c"}));
  file.vider();
  EXPECT_EQ(file, FileAnnoncesVoix{});
}

TEST(FileAnnoncesVoix, LivreQuandLaConversationEstLibre) {
  FileAnnoncesVoix file{{"a", "b"}};
  for (const FileAnnoncesVoix::Conversation& occupee : {FileAnnoncesVoix::Conversation{},
                                                        {.connecte = true, .reponseActive = true},
                                                        {.connecte = true, .appelEnCours = true},
                                                        {.connecte = true, .feuVertEnAttente = true}}) {
    EXPECT_FALSE(file.prochaine(occupee));
    EXPECT_EQ(file.attente.size(), 2u);
  }
  const FileAnnoncesVoix::Conversation libre{.connecte = true};
  EXPECT_EQ(file.prochaine(libre), "a");
  EXPECT_EQ(file.prochaine(libre), "b");
  EXPECT_FALSE(file.prochaine(libre));
}

TEST(FileAppelsRealtime, UnAppelALaFois) {
  using Appel = FileAppelsRealtime::Appel;
  const Appel a{"etat", "{}", "1"}, b{"etat", "{}", "1"}, c{"lire", "{}", "3"};
  FileAppelsRealtime file;
  EXPECT_FALSE(file.terminer());
  EXPECT_EQ(file.enfiler(a), a);
  EXPECT_FALSE(file.enfiler(b));  // the same call twice is two calls
  EXPECT_FALSE(file.enfiler(c));
  EXPECT_EQ(file.callIDsEnVol(), (std::vector<std::string>{"1", "1", "3"}));
  EXPECT_EQ(file.terminer(), b);
  EXPECT_EQ(file.terminer(), c);
  EXPECT_EQ(file.courant, c);
  EXPECT_FALSE(file.vide());
  EXPECT_FALSE(file.terminer());
  EXPECT_TRUE(file.vide());
  EXPECT_EQ(file.executes, 3);
  file.enfiler(a);
  file.enfiler(b);
  file.vider();
  EXPECT_EQ(file, FileAppelsRealtime{.executes = 3});
}

}  // namespace
}  // namespace tarnavelle
