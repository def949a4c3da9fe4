// What a hostile door or command line may send to the operator's terminal: nothing that drives it.
#include <algorithm>

#include "Affichage.hpp"
#include "Cible.hpp"
#include "LigneCommande.hpp"
#include "Socle/Colonnes.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/LectureJSON.hpp"

using namespace tarnavelle;

namespace {

void exigerInoffensif(const std::string& ligne) {
  exiger(Inoffensif::montrable(ligne) == ligne);
  exiger(std::ranges::none_of(ligne, [](unsigned char c) { return c < 0x20 || c == 0x7F; }));
}

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  const auto texte = vue(octets, taille);
  const std::string montre = Inoffensif::montrable(texte);
  exigerInoffensif(montre);
  for (const std::size_t colonnes : {0u, 1u, 7u, 80u}) {
    exiger(Colonnes::largeur(Colonnes::couper(montre, colonnes)) <= colonnes);
    if (const auto donnees = LectureJSON::valeur(texte))
      for (const Ligne& ligne : Affichage::exposer(*donnees, colonnes)) exigerInoffensif(ligne.texte);
  }

  std::vector<std::string> mots(1);
  for (const char c : texte) {
    if (c == '\0')
      mots.emplace_back();
    else
      mots.back() += c;
  }
  const auto lue = LigneCommande::lire(mots);
  if (lue && lue->commande.outil)
    for (const ParamVoix& p : lue->commande.outil->parametres)
      exiger(!p.requis || lue->aide || lue->version || lue->charge.contains(p.nom));
  return 0;
}
