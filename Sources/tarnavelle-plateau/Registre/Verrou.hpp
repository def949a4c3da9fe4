// Who has the registry: a lock on a file beside it, which holds the process's number. The system lets go of it
// when the process ends, however it ends.
#pragma once

#include <filesystem>

#include "Registre/Avarie.hpp"

namespace tarnavelle::Plateau {

class Verrou {
 public:
  /// Takes it, or says at once who has it (`occupe`).
  static Garde<Verrou> prendre(const std::filesystem::path& chemin);

  Verrou(Verrou&& autre) noexcept;
  Verrou& operator=(Verrou&& autre) noexcept;
  ~Verrou();

 private:
  explicit Verrou(int descripteur) : descripteur_(descripteur) {}

  int descripteur_;
};

}  // namespace tarnavelle::Plateau
