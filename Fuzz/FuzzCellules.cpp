// A captured screen of any bytes, put on a grid: each cell holds little, and wide characters have both halves.
#include "Cible.hpp"
#include "Photographe/Couleurs.hpp"
#include "Photographe/Grille.hpp"
#include "Socle/Texte.hpp"
#include "TerminauxTmux/LectureEcran.hpp"

using namespace tarnavelle;
using namespace tarnavelle::Plateau;

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  const auto tout = vue(octets, taille);
  // The first two bytes place the cursor.
  Peinture peinture{.taille = {17, 5}, .lignes = LectureEcran::peindre(tout), .curseur = {}};
  if (tout.size() > 1)
    peinture.curseur = {static_cast<signed char>(octets[0]), static_cast<signed char>(octets[1])};
  Grille grille({20, 6});
  grille.poser(1, 2, peinture);
  for (int l = 0; l < 6; ++l)
    for (int c = 0; c < 20; ++c) {
      const Case& vue = grille.en(l, c);
      exiger(vue.texte.size() <= Case::octetsMax && Texte::utf8Valide(vue.texte));
      exiger(vue.largeur >= 0 && vue.largeur <= 2);
      exiger(vue.largeur != 2 || (c + 1 < 20 && grille.en(l, c + 1).largeur == 0));
      exiger(vue.largeur != 0 || (vue.texte.empty() && c > 0 && grille.en(l, c - 1).largeur == 2));
      exiger(Couleurs::de(vue.style).encre <= 0xffffff);
    }
  return 0;
}
