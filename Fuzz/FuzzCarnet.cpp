// A slice of the flight log, as another machine prints it.
#include <functional>

#include "Agents/EvenementVol.hpp"
#include "Cible.hpp"
#include "Socle/Selon.hpp"
#include "Socle/Texte.hpp"

using namespace tarnavelle;

namespace {

void exigerBulle(std::string_view texte) { exiger(Texte::caracteres(texte) <= CarnetDeVol::bulleMax + 1); }

void verifier(const EvenementVol& evenement) {
  std::visit(Selon{[&](const EvenementVol::consigne& e) {
                     exigerBulle(e.texte);
                     exiger(CarnetDeVol::sansEcho({evenement}, e.texte).echoConsomme);
                   },
                   [](const EvenementVol::outil& e) { exigerBulle(e.resume); },
                   [](const EvenementVol::besoin& e) { exigerBulle(e.message); },
                   [](const EvenementVol::reponse&) { exiger(false); }, [](const EvenementVol::demarre&) {},
                   [](const EvenementVol::fini&) {}, [](const EvenementVol::inconnu&) { exiger(false); }},
             evenement.cas);
}

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  const auto tout = vue(octets, taille);
  const auto entiere = CarnetDeVol::lire(tout);
  exiger(entiere.consommes <= taille && tout.find('\n', entiere.consommes) == tout.npos);
  exiger(entiere.consommes == 0 || tout[entiere.consommes - 1] == '\n');
  for (const EvenementVol& evenement : entiere.evenements) verifier(evenement);

  auto debut = CarnetDeVol::lire(tout.substr(0, std::hash<std::string_view>()(tout) % (taille + 1)));
  const auto suite = CarnetDeVol::lire(tout.substr(debut.consommes));
  debut.evenements.insert(debut.evenements.end(), suite.evenements.begin(), suite.evenements.end());
  exiger(debut.evenements == entiere.evenements);
  exiger(debut.consommes + suite.consommes == entiere.consommes);
  exiger((suite.transcript ? suite.transcript : debut.transcript) == entiere.transcript);
  return 0;
}
