// rappelle: words found with or without their accents, by pertinence; a request is never a query language.
#include <gtest/gtest.h>

#include "Registre/Registre.hpp"

namespace tarnavelle::Plateau {
namespace {

class RegistreNotes : public testing::Test {
 protected:
  std::vector<std::string> rappeler(std::string_view requete, std::int64_t scene = 1,
                                    std::int64_t limite = 10) {
    std::vector<std::string> textes;
    const auto notes = registre->rappeler({.requete = requete, .scene = scene, .limite = limite});
    if (!notes) return {notes.raison().phrase};
    for (const FicheNote& note : *notes) textes.push_back(note.texte);
    return textes;
  }

  Garde<Registre> registre = Registre::enMemoire();
};

using Textes = std::vector<std::string>;

TEST_F(RegistreNotes, SeRetrouventParLeursMots) {
  const std::string port = "Le port dev est 5173";
  const std::string demo = "La d\u00e9mo, c'est jeudi : d\u00e9mo du port";
  const std::string ailleurs = "Le port de l'autre sc\u00e8ne";
  const std::string tests = "Les tests E\u0301TE\u0301 sont longs";  // accents of their own
  ASSERT_TRUE(registre->noter({.texte = port}));
  ASSERT_TRUE(registre->noter({.texte = demo, .scene = 1}));
  ASSERT_TRUE(registre->noter({.texte = ailleurs, .scene = 2}));
  ASSERT_TRUE(registre->noter({.texte = tests, .scene = 1}));
  const struct {
    std::string_view requete;
    Textes trouvees;
  } cas[] = {
      {"", {tests, demo, port}},
      {" \t\n", {tests, demo, port}},
      {"demo", {demo}},
      {"D\u00c9MO", {demo}},
      {"de\u0301mo", {demo}},
      {"qu'est-ce que je sais sur la d\u00e9mo ?", {demo, port}},  // by its "est"
      {"port", {port, demo}},
      {"port demo", {demo, port}},
      {"te", {}},
      {"test", {tests}},
      {"\u00e9t\u00e9", {tests}},
      {"5173", {port}},
      {"introuvable", {}},
      {"???", {}},
      {"\U0001F680", {}},
  };
  for (const auto& c : cas) EXPECT_EQ(rappeler(c.requete), c.trouvees) << c.requete;
  EXPECT_EQ(rappeler("port", 2), (Textes{port, ailleurs}));
  EXPECT_EQ(rappeler("", 1, 2), (Textes{tests, demo}));
  for (const auto limite : {std::int64_t{0}, std::int64_t{-5}, std::numeric_limits<std::int64_t>::min()})
    EXPECT_EQ(rappeler("", 1, limite), Textes{}) << limite;
  EXPECT_EQ(rappeler("port", 1, std::numeric_limits<std::int64_t>::max()).size(), 2U);
}

TEST_F(RegistreNotes, UneRequeteHostileNEstQueDesMots) {
  const std::string_view hostiles[] = {
      "\"",           "port\"",          "\"port",      "port AND",
      "NOT port",     "AND OR NOT NEAR", "texte:port",  "port*",
      "^port",        "(port",           "port)",       "{texte}: port",
      "port + port",  "NEAR(port, 2)",   "- port",      "port'; --",
      "\xff\xfeport", "po\xc3",          {"po\0rt", 5}, "\U0001E900\U0001E901",
      "\U00011F00",
  };
  ASSERT_TRUE(registre->noter({.texte = "port"}));
  for (const auto requete : hostiles) {
    const auto trouvees = rappeler(requete);
    const bool nomme = requete.find("port") != requete.npos;
    EXPECT_EQ(trouvees, nomme ? Textes{"port"} : Textes{}) << requete;
  }
  std::string longue;
  for (int i = 0; i < 100000; ++i) longue += "mot" + std::to_string(i) + " ";
  EXPECT_EQ(rappeler(longue), Textes{});
  EXPECT_EQ(rappeler("port " + std::string(1 << 20, 'a')), Textes{"port"});
}

}  // namespace
}  // namespace tarnavelle::Plateau
