// What lets agents that outlive the door find it again when it reopens: its port, and the secrets of its
// tokens. One private file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace tarnavelle::Plateau {

struct Acces {
  std::uint16_t port = 0;  ///< the last one; 0 when there was none
  std::string jeton;       ///< the operator's
  std::string secret;      ///< that agents' tokens are drawn from
  std::string avis;        ///< what the operator has to know of it: a French sentence, mostly empty

  /// What the file says, or new secrets: one that cannot be read is set aside, and the notice says so. Nothing
  /// when the system has no randomness.
  static std::optional<Acces> lire(const std::filesystem::path& fichier);
  bool ecrire(const std::filesystem::path& fichier) const;
};

}  // namespace tarnavelle::Plateau
