// Bytes of a stream, in pieces cut anywhere: the same lines as in one piece.
#include <functional>
#include <string>
#include <vector>

#include "Cible.hpp"
#include "Liaison/LecteurLignesFlux.hpp"
#include "Socle/Texte.hpp"

using namespace tarnavelle;

namespace {

constexpr std::size_t ligneMax = 64;

std::vector<std::string> lire(std::string_view octets, std::size_t graine) {
  LecteurLignesFlux lecteur(ligneMax);
  std::vector<std::string> lignes;
  while (!octets.empty()) {
    const std::string morceau(octets.substr(0, graine ? 1 + graine % 23 : octets.size()));
    octets.remove_prefix(morceau.size());
    graine = graine * 6364136223846793005u + (graine != 0);
    lecteur.ajouter(morceau);
    do
      while (const auto ligne = lecteur.suivante()) lignes.emplace_back(*ligne);
    while (lecteur.tropLongue() && (lignes.emplace_back("trop longue"), true));
  }
  if (const auto ligne = lecteur.derniere()) lignes.emplace_back(*ligne);
  return lignes;
}

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  const auto tout = vue(octets, taille);
  const auto lignes = lire(tout, 0);
  exiger(lire(tout, std::hash<std::string_view>()(tout) | 1) == lignes);
  for (const auto& ligne : lignes) {
    exiger(ligne.size() <= 3 * ligneMax && Texte::utf8Valide(ligne));  // a repaired byte takes three
    exiger(ligne.find_first_of("\r\n") == std::string::npos);
  }
  return 0;
}
