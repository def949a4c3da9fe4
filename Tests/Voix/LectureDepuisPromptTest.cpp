#include "Voix/LectureDepuisPrompt.hpp"

#include <gtest/gtest.h>

namespace tarnavelle {
namespace {

namespace L = LectureDepuisPrompt;

std::string repeter(std::string_view motif, std::size_t n) {
  std::string texte;
  while (n-- > 0) texte += motif;
  return texte;
}

TEST(LectureDepuisPrompt, Ancre) {
  EXPECT_EQ(L::ancre(" \n> lance les tests\n\u00A0"), "> lance les tests");
  EXPECT_EQ(L::ancre("x" + repeter("e\u0301", 160) + "\n"), repeter("e\u0301", 160));
  EXPECT_EQ(L::ancre(repeter("👩🏽‍🚀", 159) + "🇫🇷"), repeter("👩🏽‍🚀", 159) + "🇫🇷");
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
