// A captured screen of any bytes: as many lines as it has, valid text without control characters, dim or not.
#include <algorithm>

#include "Cible.hpp"
#include "Socle/Texte.hpp"
#include "TerminauxTmux/LectureEcran.hpp"

using namespace tarnavelle;

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  const auto tout = vue(octets, taille);
  const auto lignes = Plateau::LectureEcran::lire(tout);
  const auto sauts = std::ranges::count(tout, '\n');
  const bool reste = !tout.empty() && tout.back() != '\n';
  exiger(lignes.vues.size() == static_cast<std::size_t>(sauts) + (reste ? 1 : 0));
  exiger(lignes.attenuees.size() == lignes.vues.size());
  for (const auto* textes : {&lignes.vues, &lignes.attenuees})
    for (const auto& texte : *textes) exiger(Texte::utf8Valide(texte) && !texte.ends_with(' '));
  return 0;
}
