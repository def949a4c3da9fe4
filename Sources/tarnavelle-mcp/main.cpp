#include <csignal>
#include <cstdlib>

#include "Service.hpp"
#include "Socle/Texte.hpp"

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);
  tarnavelle::Repartiteur repartiteur({.binaireMCP = argc > 0 ? tarnavelle::Texte::reparer(argv[0]) : ""});
  tarnavelle::servir(0, 1, repartiteur);
  // At once, even while a call that timed out is still being carried to its end by its own thread.
  std::_Exit(0);
}
