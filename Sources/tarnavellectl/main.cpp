#include <fcntl.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "Client.hpp"

namespace {

/// A standard stream that the caller has closed would be given to the next file or socket that is opened.
void occuperLesDescripteursFermes() {
  for (const int descripteur : {0, 1, 2})
    if (::fcntl(descripteur, F_GETFD) == -1) ::open("/dev/null", O_RDONLY);
}

}  // namespace

int main(int argc, char** argv) {
  occuperLesDescripteursFermes();
  tarnavelle::Session session;
  const std::vector<std::string> mots(argv + (argc > 0 ? 1 : 0), argv + argc);
  const int statut = tarnavelle::Client::executer(mots, session);
  // At once, even while a call that timed out is still being carried to its end by its own thread.
  std::_Exit(statut);
}
