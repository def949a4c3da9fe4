#include "TerminauxTmux/LecteurControle.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace tarnavelle::Plateau {
namespace {

using Lectures = std::vector<LecteurControle::Lecture>;

Lectures lire(std::string_view octets, std::size_t coupe) {
  LecteurControle lecteur;
  Lectures lues;
  while (!octets.empty()) {
    lecteur.ajouter(octets.substr(0, coupe));
    octets.remove_prefix(std::min(coupe, octets.size()));
    while (auto lecture = lecteur.suivante()) lues.push_back(*std::move(lecture));
  }
  return lues;
}

TEST(LecteurControle, LesReponsesSontEntreLeursNombres) {
  const struct {
    std::string octets;
    Lectures attendues;
  } cas[] = {
      {"%begin 9 1 0\n%end 9 1 0\n", {BlocTmux{true, false, ""}}},
      {"%begin 9 2 1\na\n\nb\n%end 9 2 1\n%sessions-changed\n",
       {BlocTmux{true, true, "a\n\nb\n"}, AvisTmux{"%sessions-changed"}}},
      {"%begin 9 3 1\ncan't find pane: %9\n%error 9 3 1\n", {BlocTmux{false, true, "can't find pane: %9\n"}}},
      // Content, whatever it looks like: other numbers, a prefix, a notice, another beginning.
      {"%begin 9 4 1\n%end 9 3 1\n%end 9 4 1 \n%error 9 4 10\n%begin 9 5 1\n%exit\n%end 9 4 1\n",
       {BlocTmux{true, true, "%end 9 3 1\n%end 9 4 1 \n%error 9 4 10\n%begin 9 5 1\n%exit\n"}}},
      {"%output %1 " + std::string(9999, 'x') + "\n%exit\n",
       {AvisTmux{"%output %1 " + std::string(LecteurControle::avisMax - 11, 'x')}, AvisTmux{"%exit"}}},
      {"lost server\n%exit\n", {DesordreTmux{}}},
      {"\n", {DesordreTmux{}}},
      {"%begin 9 4\n%exit\n", {DesordreTmux{}}},
      {"%begin 9 x 1\n", {DesordreTmux{}}},
      {"%begin 9 4 1 7\n", {DesordreTmux{}}},
      {"%end 9 4 1\n", {AvisTmux{"%end 9 4 1"}}},
      {"%begin 9 4 1\nrien ne le termine\n", {}},
  };
  for (const auto& [octets, attendues] : cas)
    for (std::size_t coupe = 1; coupe <= std::min<std::size_t>(octets.size(), 300); ++coupe)
      EXPECT_EQ(lire(octets, coupe), attendues) << octets << " par " << coupe;
}

TEST(LecteurControle, UneReponseTropLongueEstUnDesordre) {
  LecteurControle lecteur;
  lecteur.ajouter("%begin 9 1 1\n");
  const std::string ligne(1024 * 1024 - 1, 'x');
  for (std::size_t lus = 0; lus <= LecteurControle::blocMax; lus += ligne.size() + 1)
    lecteur.ajouter(ligne + "\n");
  EXPECT_EQ(lecteur.suivante(), LecteurControle::Lecture(DesordreTmux{}));
  EXPECT_EQ(lecteur.suivante(), std::nullopt);
}

}  // namespace
}  // namespace tarnavelle::Plateau
