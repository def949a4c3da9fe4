// What the board's own program does in a terminal before it becomes an agent.
#include "TerminauxTmux/Lanceur.hpp"

int main(int argc, char** argv) { return argc == 2 ? tarnavelle::Plateau::Lanceur::executer(argv[1]) : 2; }
