// What tmux writes to a control client, cut anywhere: the same replies and notices as in one piece.
#include <algorithm>
#include <functional>
#include <vector>

#include "Cible.hpp"
#include "TerminauxTmux/LecteurControle.hpp"

using namespace tarnavelle::Plateau;

namespace {

std::vector<LecteurControle::Lecture> lire(std::string_view octets, std::size_t graine) {
  LecteurControle lecteur;
  std::vector<LecteurControle::Lecture> lues;
  while (!octets.empty()) {
    const auto morceau = octets.substr(0, graine ? 1 + graine % 23 : octets.size());
    octets.remove_prefix(morceau.size());
    graine = graine * 6364136223846793005u + (graine != 0);
    lecteur.ajouter(morceau);
    while (auto lecture = lecteur.suivante()) lues.push_back(*std::move(lecture));
  }
  return lues;
}

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  const auto tout = vue(octets, taille);
  const auto lues = lire(tout, 0);
  exiger(lire(tout, std::hash<std::string_view>()(tout) | 1) == lues);
  for (const auto& lue : lues)
    if (const auto* avis = std::get_if<AvisTmux>(&lue))
      exiger(avis->texte.starts_with('%') && avis->texte.size() <= LecteurControle::avisMax);
  return 0;
}
