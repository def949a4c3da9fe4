#include "LecteurLignes.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

namespace tarnavelle {
namespace {

/// The lines that come out when the pieces go in, each with a write of its own; "<long>" stands for a
/// line that was dropped.
std::vector<std::string> lire(const std::vector<std::string>& morceaux, std::size_t maximum = 100'000) {
  int tube[2];
  EXPECT_EQ(::pipe(tube), 0);
  std::thread ecrivain([&] {
    for (const auto& m : morceaux)
      for (std::size_t i = 0; i < m.size();) {
        const auto n = ::write(tube[1], m.data() + i, m.size() - i);
        if (n <= 0) break;
        i += static_cast<std::size_t>(n);
      }
    ::close(tube[1]);
  });
  std::vector<std::string> lignes;
  LecteurLignes lecteur(tube[0], maximum);
  while (const auto ligne = lecteur.suivante())
    lignes.push_back(ligne->tropLongue ? "<long>" : std::string(ligne->texte));
  ecrivain.join();
  ::close(tube[0]);
  return lignes;
}

TEST(LecteurLignes, RendLesMemesLignesOuQueTombentLesCoupures) {
  const std::string texte = "un\n\ndeux\r\n" + std::string(70'000, 'x') + "\nfin sans saut";
  const std::vector<std::string> attendues = {"un", "", "deux\r", std::string(70'000, 'x'), "fin sans saut"};
  EXPECT_EQ(lire({texte}), attendues);
  for (const std::size_t coupe : {1U, 2U, 3U, 4U, 9U, 10U, 65'535U, 65'536U, 65'537U, 70'010U})
    EXPECT_EQ(lire({texte.substr(0, coupe), texte.substr(coupe)}), attendues) << coupe;
  EXPECT_EQ(lire({}), std::vector<std::string>{});
}

TEST(LecteurLignes, LaPlusLongueLigneEstRendueEtLaSuivanteLaisseeTomber) {
  const std::string m(300'000, 'm');
  EXPECT_EQ(lire({m}, m.size()), std::vector{m});
  EXPECT_EQ(lire({m + "\n" + m + "m\navant\n" + m + "mm"}, m.size()),
            (std::vector<std::string>{m, "<long>", "avant", "<long>"}));
}

}  // namespace
}  // namespace tarnavelle
