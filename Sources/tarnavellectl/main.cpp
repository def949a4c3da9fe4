#include <cstdlib>
#include <string>
#include <vector>

#include "Client.hpp"

int main(int argc, char** argv) {
  tarnavelle::Session session;
  const std::vector<std::string> mots(argv + (argc > 0 ? 1 : 0), argv + argc);
  const int statut = tarnavelle::Client::executer(mots, session);
  // At once, even while a call that timed out is still being carried to its end by its own thread.
  std::_Exit(statut);
}
