#include <csignal>
#include <cstdlib>

#include "DialogueEtendu.hpp"
#include "Service.hpp"
#include "Socle/Texte.hpp"

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);
  const tarnavelle::Repartiteur::Monde monde{.binaireMCP = argc > 0 ? tarnavelle::Texte::reparer(argv[0]) : ""};
  if (tarnavelle::DialogueEtendu::demande(monde.environnement())) {
    tarnavelle::DialogueEtendu dialogue(monde, 1);
    tarnavelle::servirEtendu(0, dialogue);
    std::_Exit(0);
  }
  tarnavelle::Repartiteur repartiteur(monde);
  tarnavelle::servir(0, 1, repartiteur);
  // At once, even while a call that timed out is still being carried to its end by its own thread.
  std::_Exit(0);
}
