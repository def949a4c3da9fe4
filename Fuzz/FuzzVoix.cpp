// What the voice's program reads from outside: keys, whole and byte by byte; the board; a dialog.
#include "Cible.hpp"
#include "Outils.hpp"
#include "Plateau.hpp"
#include "Socle/Texte.hpp"
#include "Touches.hpp"

using namespace tarnavelle;

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  const auto texte = vue(octets, taille);
  Voix::Touches entieres, coupees;
  const auto touches = entieres.lire(texte);
  std::vector<Voix::Touche> unes;
  for (const char c : texte)
    for (const Voix::Touche t : coupees.lire({&c, 1})) unes.push_back(t);
  exiger(unes == touches && entieres.saitLacher() == coupees.saitLacher());
  if (const auto plateau = Voix::PlateauVu::lire(texte)) {
    exiger(Texte::utf8Valide(plateau->monde.recit) && !Texte::porteControle(plateau->monde.recit));
    exiger(Voix::appelsNouveaux(*plateau, *plateau).empty());
  }
  exiger(Voix::touchesDuVerdict(false, "claude", texte) == "esc");
  const auto accord = Voix::touchesDuVerdict(true, "claude", texte);
  exiger(!accord || accord == "entree");
  return 0;
}
