// Draws one picture for the board: a folded grid on standard input, a folded image on standard output.
#include <cstdio>
#include <cstring>

#include "Dessin/Dessin.hpp"
#include "Porte/Version.hpp"
#include "Socle/Fichiers.hpp"

int main(int argc, char** argv) {
  using namespace tarnavelle;
  using namespace tarnavelle::Plateau;
  if (argc == 2 && std::strcmp(argv[1], "--version") == 0)
    return std::printf("tarnavelle-dessin %s\n", std::string(versionTarnavelle).c_str()) > 0 ? 0 : 1;
  std::string octets;
  char bloc[16 * 1024];
  while (const std::size_t lus = std::fread(bloc, 1, sizeof bloc, stdin)) octets.append(bloc, lus);
  const auto grille = Pli::deplier(octets);
  if (!grille) {
    std::fputs("tarnavelle-dessin dessine pour tarnavelle-plateau, qui lui dit quoi.\n", stderr);
    return 2;
  }
  return ecrireTout(1, Pli::plierImage(Dessin::peindre(*grille))) ? 0 : 1;
}
