#include "Service.hpp"

#include "Socle/Fichiers.hpp"

namespace tarnavelle {

void servir(int entree, int sortie, Repartiteur& repartiteur) {
  LecteurLignes lecteur(entree);
  while (const auto ligne = lecteur.suivante()) {
    if (auto reponse = repartiteur.repondre(*ligne)) {
      *reponse += '\n';
      ecrireTout(sortie, *reponse);
    }
  }
}

}  // namespace tarnavelle
