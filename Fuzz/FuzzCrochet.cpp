// What a program's hook says, as it is noted and read back; the same bytes as a log.
#include <string>

#include "Agents/CrochetAgent.hpp"
#include "Agents/EvenementVol.hpp"
#include "Cible.hpp"
#include "Etats/Crochets.hpp"
#include "Socle/Texte.hpp"

using namespace tarnavelle;

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  const auto dit = vue(octets, taille);
  const std::string ligne = CrochetAgent::ligne({"claude", "Stop", dit, std::chrono::milliseconds(taille)});
  exiger(ligne.find('\n') == ligne.size() - 1 && Texte::utf8Valide(ligne));
  const auto lus = Plateau::Crochets::decoder(ligne);
  exiger(lus.size() == 1 && Texte::caracteres(lus.front().texte) <= 501);
  exiger(CarnetDeVol::lire(ligne).consommes == ligne.size());
  for (const auto& crochet : Plateau::Crochets::decoder(dit)) exiger(Texte::caracteres(crochet.nom) <= 100);
  return 0;
}
