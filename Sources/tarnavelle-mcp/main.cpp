#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "Boucle.hpp"
#include "Porte/PorteMCP.hpp"
#include "Socle/Texte.hpp"

int main(int argc, char** argv) {
  if (argc == 2 && std::string_view(argv[1]) == "--version") {
    const std::string version = std::string(tarnavelle::PorteMCP::nomServeur) + ' ';
    std::puts((version + std::string(tarnavelle::versionTarnavelle)).c_str());
    return 0;
  }
  std::signal(SIGPIPE, SIG_IGN);
  tarnavelle::Repartiteur repartiteur({.binaireMCP = argc > 0 ? tarnavelle::Texte::reparer(argv[0]) : ""});
  tarnavelle::servir(0, 1, repartiteur);
  // At once, even while a call that timed out is still being carried to its end by its own thread.
  std::_Exit(0);
}
