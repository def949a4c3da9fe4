// Where the board keeps what: all of it in one folder of its user's own (0700). Plain value.
#pragma once

#include <filesystem>
#include <utility>

#include "Registre/Registre.hpp"

namespace tarnavelle::Plateau {

class Lieux {
 public:
  explicit Lieux(std::filesystem::path racine) : racine_(std::move(racine)) {}

  const std::filesystem::path& racine() const { return racine_; }
  std::filesystem::path registre() const { return racine_ / Registre::nomUsuel; }
  std::filesystem::path acces() const { return racine_ / "acces.json"; }  ///< port and secrets
  std::filesystem::path tmux() const { return racine_ / "tmux"; }
  std::filesystem::path crochets() const { return racine_ / "crochets"; }  ///< the hooks' logs
  std::filesystem::path agents() const { return racine_ / "agents"; }      ///< what joins each to the door
  std::filesystem::path conversations() const { return racine_ / "conversations"; }  ///< with Hermès
  std::filesystem::path ssh() const { return racine_ / "ssh"; }  ///< the shared connections, when it is short
  std::filesystem::path vues() const { return racine_ / "vues"; }
  std::filesystem::path captures() const { return racine_ / "captures"; }
  std::filesystem::path regard() const { return racine_ / "regard"; }  ///< how to see the board that is open

 private:
  std::filesystem::path racine_;
};

}  // namespace tarnavelle::Plateau
