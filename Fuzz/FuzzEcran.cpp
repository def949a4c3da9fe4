// A screen of anything, read by the rules of each program; the same bytes as an operator's file of rules.
#include <array>
#include <string>
#include <vector>

#include "Cible.hpp"
#include "Etats/Regles.hpp"

using namespace tarnavelle::Plateau;

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  static const CatalogueRegles catalogue("");
  static constexpr std::array programmes = {"claude", "codex", "gemini", "opencode"};
  const auto texte = vue(octets, taille);
  Ecran ecran;
  for (std::size_t debut = 0; debut <= texte.size();) {
    const auto fin = std::min(texte.find('\n', debut), texte.size());
    ecran.lignes.emplace_back(texte.substr(debut, fin - debut));
    debut = fin + 1;
  }
  ecran.attenuees = ecran.lignes;
  for (const auto* programme : programmes) {
    const Regles& regles = catalogue.de(programme);
    const LectureEcran lecture = regles.lire(ecran);
    exiger(lecture.boite || lecture.texteBoite.empty());
    exiger(!lecture.dialogue() || !lecture.boite);
    exiger((lecture.etat == Etat::inconnu) == lecture.regle.empty());
    exiger(regles.depuisConsigne(ecran.lignes, texte.substr(0, taille % 50)).size() <= ecran.lignes.size());
    regles.titreTravaille(texte);
  }
  if (const auto siennes = Regles::lire(texte)) (*siennes).lire(ecran);
  return 0;
}
