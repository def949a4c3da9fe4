// File descriptors and pipes, closed with their bearers and never inherited. One thread at a time.
#pragma once

#include <optional>

namespace tarnavelle::Plateau {

class Descripteur {
 public:
  explicit Descripteur(int fd = -1) : fd_(fd) {}
  Descripteur(Descripteur&& autre) noexcept : fd_(autre.fd_) { autre.fd_ = -1; }
  Descripteur& operator=(Descripteur&& autre) noexcept;
  ~Descripteur() { fermer(); }
  void fermer();
  int operator*() const { return fd_; }

 private:
  int fd_;
};

struct Tube {
  Descripteur lecture;
  Descripteur ecriture;
  /// Nothing when there are too many descriptors.
  static std::optional<Tube> creer();
};

bool rendreNonBloquant(int fd);

}  // namespace tarnavelle::Plateau
