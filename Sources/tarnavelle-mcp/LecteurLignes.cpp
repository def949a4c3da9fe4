#include "LecteurLignes.hpp"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <new>

#include "Socle/Attente.hpp"

namespace tarnavelle {

std::optional<LecteurLignes::Ligne> LecteurLignes::suivante() {
  bool tropLongue = false;
  while (true) {
    const char* depart = tampon_.data() + debut_;
    if (const void* saut = std::memchr(depart + vus_, '\n', fin_ - debut_ - vus_)) {
      const auto longueur = static_cast<std::size_t>(static_cast<const char*>(saut) - depart);
      debut_ += longueur + 1;
      vus_ = 0;
      tropLongue = tropLongue || longueur > maximum_;
      return Ligne{tropLongue ? std::string_view{} : std::string_view(depart, longueur), tropLongue};
    }
    vus_ = fin_ - debut_;
    if (vus_ > maximum_ || !faireDeLaPlace()) {
      tropLongue = true;
      debut_ = fin_ = vus_ = 0;
    }
    if (lire()) continue;
    const bool reste = tropLongue || vus_ > 0;
    const std::string_view texte(tampon_.data() + debut_, tropLongue ? 0 : vus_);
    debut_ = fin_ = vus_ = 0;
    if (!reste) return std::nullopt;
    return Ligne{texte, tropLongue};
  }
}

bool LecteurLignes::lire() {
  while (true) {
    const auto lus = ::read(descripteur_, tampon_.data() + fin_, tampon_.size() - fin_);
    if (lus > 0) fin_ += static_cast<std::size_t>(lus);
    if (lus >= 0 || (errno != EINTR && !attendreSiOccupe(descripteur_, POLLIN))) return lus > 0;
  }
}

bool LecteurLignes::faireDeLaPlace() try {
  if (debut_ == fin_) {
    debut_ = fin_ = 0;
    // A buffer that one huge line has grown is given back.
    if (tampon_.size() > bloc) std::vector<char>(bloc).swap(tampon_);
  } else if (debut_ > 0) {
    std::memmove(tampon_.data(), tampon_.data() + debut_, fin_ - debut_);
    fin_ -= debut_;
    debut_ = 0;
  }
  if (fin_ == tampon_.size()) tampon_.resize(2 * tampon_.size());
  return true;
} catch (const std::bad_alloc&) {
  return false;
}

}  // namespace tarnavelle
