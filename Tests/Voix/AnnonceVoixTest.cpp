#include "Voix/AnnonceVoix.hpp"

#include <gtest/gtest.h>

namespace tarnavelle {
namespace {

TEST(AnnonceVoix, Textes) {
  using namespace AnnonceVoix;
  const struct {
    std::string obtenu;
    std::string attendu;
  } cas[] = {
      {annonce({.texte = " Le build est rouge.\n", .consigne = "\tDis-le. "}),
       "[tarnavelle] Le build est rouge. Dis-le."},
      {annonce({.texte = "Rien d'autre.", .consigne = " "}), "[tarnavelle] Rien d'autre."},
      {annonce({.texte = " \n", .consigne = "Dis-le."}), ""},
      {evenement({.titre = " Merlin ", .corps = "attend ta réponse\n"}),
       "[tarnavelle] (Événement : Merlin — attend ta réponse) Dis-le en une phrase courte."},
      {evenement({.titre = "Build rouge", .corps = " "}),
       "[tarnavelle] (Événement : Build rouge) Dis-le en une phrase courte."},
      {evenement({.titre = "", .corps = "Build rouge"}),
       "[tarnavelle] (Événement : Build rouge) Dis-le en une phrase courte."},
      {evenement({.titre = " ", .corps = "\n"}), ""},
      {aFini({.agent = " Merlin", .resume = "\n"}),
       "[tarnavelle] Merlin a fini. Dis-le en une phrase courte et propose la suite."},
      {aFini({.agent = "Merlin", .resume = " Tests au vert. "}),
       "[tarnavelle] Merlin a fini : Tests au vert. Dis-le en une phrase courte et propose la suite."},
  };
  for (const auto& c : cas) EXPECT_EQ(c.obtenu, c.attendu);
}

}  // namespace
}  // namespace tarnavelle
