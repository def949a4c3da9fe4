#include "Enfants/Descripteur.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <utility>

namespace tarnavelle::Plateau {

Descripteur& Descripteur::operator=(Descripteur&& autre) noexcept {
  fermer();
  fd_ = std::exchange(autre.fd_, -1);
  return *this;
}

void Descripteur::fermer() {
  if (fd_ >= 0) ::close(std::exchange(fd_, -1));
}

std::optional<Tube> Tube::creer() {
  int bouts[2];
  if (::pipe(bouts) != 0) return std::nullopt;
  Tube tube{Descripteur(bouts[0]), Descripteur(bouts[1])};
  for (const int bout : bouts)
    if (::fcntl(bout, F_SETFD, FD_CLOEXEC) != 0) return std::nullopt;
  return tube;
}

bool rendreNonBloquant(int fd) {
  const int drapeaux = ::fcntl(fd, F_GETFL);
  return drapeaux >= 0 && ::fcntl(fd, F_SETFL, drapeaux | O_NONBLOCK) == 0;
}

}  // namespace tarnavelle::Plateau
