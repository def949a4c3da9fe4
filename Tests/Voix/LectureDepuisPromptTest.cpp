#include "Voix/LectureDepuisPrompt.hpp"

#include <gtest/gtest.h>

namespace tarnavelle {
namespace {

namespace L = LectureDepuisPrompt;

TEST(LectureDepuisPrompt, Ancre) {
  EXPECT_EQ(L::ancre(" \n> lance les tests\n\u00A0"), "> lance les tests");
  std::string longue = "x";
  for (int i = 0; i < 160; ++i) longue += "e\u0301";
  EXPECT_EQ(L::ancre(longue + "\n"), longue.substr(1));
}

TEST(LectureDepuisPrompt, Depuis) {
  const struct {
    std::string ecran;
    std::optional<std::string> ancre;
    std::string suite;
  } cas[] = {
      {"> tests\n12 verts", "> tests", "\n12 verts"},
      {"> tests\nrouge\n> tests\nvert\n", "> tests", "\nvert\n"},
      {"aaa", "aa", ""},
      {"la suite seule", "> tests", "la suite seule"},
      {"écran", "", "écran"},
      {"écran", {}, "écran"},
      {"", "a", ""},
  };
  for (const auto& c : cas)
    EXPECT_EQ(L::depuis(c.ecran, c.ancre), c.suite) << c.ecran << " | " << c.ancre.value_or("");
}

}  // namespace
}  // namespace tarnavelle
