#include <unistd.h>

#include <array>
#include <cerrno>

#include "ClientControleInterne.hpp"

namespace tarnavelle::Plateau {
void ClientControle::vider() {
  while (aEcrire()) {
    const auto ecrits = ::write(*enfant_.entree, aEcrire_.data(), aEcrire_.size());
    if (ecrits > 0) {
      aEcrire_.erase(0, static_cast<std::size_t>(ecrits));
    } else if (errno != EINTR) {
      if (errno != EAGAIN && errno != EWOULDBLOCK) enfant_.entree.fermer();  // its end will be read
      return;
    }
  }
}

bool ClientControle::lire() {
  std::array<char, 64 * 1024> octets;
  const auto lus = ::read(*enfant_.sortie, octets.data(), octets.size());
  if (lus > 0) {
    lecteur_.ajouter({octets.data(), static_cast<std::size_t>(lus)});
    return true;
  }
  return lus < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR);
}

}  // namespace tarnavelle::Plateau
