#include "Boucle.hpp"

#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "LecteurLignes.hpp"
#include "Porte/PorteMCP.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

std::optional<std::string> repondre(const LecteurLignes::Ligne& ligne, Repartiteur& repartiteur) {
  const auto texte = Texte::rogner(ligne.texte);
  if (texte.empty() && !ligne.tropLongue) return std::nullopt;
  try {
    if (auto message = LectureJSON::objet(texte, Repartiteur::membresLus))
      return repartiteur.traiter(std::move(*message));
  } catch (const std::bad_alloc&) {  // a line too large for this machine
  }
  return PorteMCP::ligne(PorteMCP::erreur({}, PorteMCP::CodeErreur::illisible, "JSON illisible"));
}

}  // namespace

void servir(int entree, int sortie, Repartiteur& repartiteur) {
  LecteurLignes lecteur(entree);
  while (const auto ligne = lecteur.suivante()) {
    if (auto reponse = repondre(*ligne, repartiteur)) {
      *reponse += '\n';
      ecrireTout(sortie, *reponse);
    }
  }
}

}  // namespace tarnavelle
