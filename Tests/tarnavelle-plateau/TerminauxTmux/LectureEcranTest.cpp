#include "TerminauxTmux/LectureEcran.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tarnavelle::Plateau {
namespace {

using Textes = std::vector<std::string>;

TEST(LectureEcran, MontreCeQuUnePersonneVoit) {
  const struct {
    std::string capture;
    Textes vues;
    Textes attenuees;
  } cas[] = {
      {"", {}, {}},
      {"a\n\n", {"a", ""}, {"a", ""}},
      {"sans fin", {"sans fin"}, {"sans fin"}},
      {"a\x1b[2mdim\x1b[0mb\n", {"adimb"}, {"a   b"}},
      {"\x1b[2;3mx\x1b[22my\x1b[1;2mz\x1b[my\n", {"xyzy"}, {" y y"}},
      // Until it is told otherwise, even on the next line; what ends a line blank is not seen.
      {"\x1b[2mtoute\nla suite\x1b[0m x\n", {"toute", "la suite x"}, {"", "         x"}},
      // A 2 among the numbers of a colour dims nothing, and what follows them counts.
      {"\x1b[38;5;2mv\x1b[48;2;2;2;2mw\x1b[38;5;2;2mx\x1b[39;4:2my\x1b[58;2;0;0;0;22mz\n",
       {"vwxyz"},
       {"vw  z"}},
      // Wide characters, marks and joined pictures keep their columns.
      {"\x1b[2m漢e\u0301👩\u200d👧\x1b[0m|\n", {"漢e\u0301👩\u200d👧|"}, {"     |"}},
      {"\x0elqk\x0f lqk\n", {"┌─┐ lqk"}, {"┌─┐ lqk"}},
      {"\x1b]8;;http://x\x1b\\lien\x1b]8;;\x1b\\ \x1b]0;t\ax\n", {"lien x"}, {"lien x"}},
      {"\x1b(0q\x1b(Bq\x1b=r\x1b[?25h\x1b[Ks\n", {"qqrs"}, {"qqrs"}},
      {"a\x1b\nb\x1b[\nc\x1b[2\nd\x1b]8;x\ne\x1b(\nf\n",
       {"a", "b", "c", "d", "e", "f"},
       {"a", "b", "c", "d", "e", "f"}},
      {"\xff\xc3\x28\x01\x7f.\n", {"\uFFFD\uFFFD(."}, {"\uFFFD\uFFFD(."}},
      {"❯\u00a0\n", {"❯\u00a0"}, {"❯\u00a0"}},
  };
  for (const auto& [capture, vues, attenuees] : cas) {
    const auto lignes = LectureEcran::lire(capture);
    EXPECT_EQ(lignes.vues, vues) << capture;
    EXPECT_EQ(lignes.attenuees, attenuees) << capture;
  }
}

TEST(LectureEcran, GardeLesStyles) {
  using enum Couleur::Genre;
  using Ligne = std::vector<Troncon>;
  const struct {
    std::string sgr;
    Style style;
  } cas[] = {
      {"1;3;7;9", {.gras = true, .italique = true, .inverse = true, .barre = true}},
      {"1;2;22;8;4;24;21", {.souligne = true, .cache = true}},
      {"31;103", {.encre = {palette, 1}, .fond = {palette, 11}}},
      {"97;40;39", {.fond = {palette, 0}}},
      {"38;5;200;48;2;1;2;3", {.encre = {palette, 200}, .fond = {vraie, 0x010203}}},
      {"38;5;256;2", {.attenue = true}},
      {"38;2;1;2;300;48;2;1", {}},
      {"58;5;9;4:3", {.souligne = true}},
      {"4;4:0;5:3;300;;1", {.gras = true}},
      {"38;38;5", {}},
  };
  for (const auto& [sgr, style] : cas)
    EXPECT_EQ(LectureEcran::peindre("\x1b[" + sgr + "mx\n").front(), Ligne({{"x", style}})) << sgr;
  const Style gras{.gras = true};
  EXPECT_EQ(LectureEcran::peindre("a\x1b[1mb\nc\x1b[0m  \n\n"),
            (std::vector<Ligne>{{{"a"}, {"b", gras}}, {{"c", gras}, {"  "}}, {}}));
}

}  // namespace
}  // namespace tarnavelle::Plateau
