#include <gtest/gtest.h>

#include "Voix/FileAnnoncesVoix.hpp"
#include "Voix/FileAppelsRealtime.hpp"

namespace tarnavelle {
namespace {

TEST(FileAnnoncesVoix, GardeLesDernieres) {
  FileAnnoncesVoix file;
  for (const char* texte : {" a\n", "a", "", "\t\u2028", "b", "a", "c", "d", "e"}) file.enfiler(texte);
  EXPECT_EQ(file.attente, (std::deque<std::string>{"b", "a", "c", "d", "e"}));
  file.remettre("z");
  EXPECT_EQ(file.attente, (std::deque<std::string>{"z", "b", "a", "c", "d"}));
}

TEST(FileAnnoncesVoix, LivreQuandLaConversationEstLibre) {
  using Conversation = FileAnnoncesVoix::Conversation;
  FileAnnoncesVoix file{{"a", "b"}};
  for (const Conversation& occupee : {Conversation{},
                                      {.connecte = true, .reponseActive = true},
                                      {.connecte = true, .appelEnCours = true},
                                      {.connecte = true, .feuVertEnAttente = true}})
    EXPECT_FALSE(file.prochaine(occupee));
  for (const char* attendue : {"a", "b"}) EXPECT_EQ(file.prochaine({.connecte = true}), attendue);
  EXPECT_FALSE(file.prochaine({.connecte = true}));
}

TEST(FileAppelsRealtime, UnAppelALaFois) {
  using Appel = FileAppelsRealtime::Appel;
  const Appel a{"etat", "{}", "1"}, c{"lire", "{}", "3"};  // the same call twice is two calls
  FileAppelsRealtime file;
  EXPECT_FALSE(file.terminer());
  EXPECT_EQ(file.enfiler(a), a);
  for (const Appel& suivant : {a, c}) EXPECT_FALSE(file.enfiler(suivant));
  EXPECT_EQ(file.callIDsEnVol(), (std::vector<std::string>{"1", "1", "3"}));
  EXPECT_EQ(file.terminer(), a);
  EXPECT_EQ(file.terminer(), c);
  EXPECT_FALSE(file.terminer());
  EXPECT_TRUE(file.vide());
  file.enfiler(a);
  file.enfiler(a);
  file.vider();
  EXPECT_EQ(file, FileAppelsRealtime{.executes = 3});
}

}  // namespace
}  // namespace tarnavelle
