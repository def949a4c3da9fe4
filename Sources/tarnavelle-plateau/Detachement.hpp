// The door goes on in a process of its own; the one that was called ends, or shows the board on its terminal,
// once the door is open.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Enfants/Descripteur.hpp"

namespace tarnavelle::Plateau {

/// How a person gets to see a board that is open.
struct Regard {
  pid_t porte = 0;                ///< the door's process
  std::vector<std::string> mots;  ///< tmux's
  std::string ecrit() const;
  static std::optional<Regard> lu(std::string_view octets);

  /// Where the door keeps it for whoever comes back; only that of a door that runs is read.
  static std::optional<Regard> garde(const std::filesystem::path& fichier);
  bool garder(const std::filesystem::path& fichier) const;
};

/// Our own, kept up to date until the door closes: the file goes with it, and does not come back. Safe from any
/// thread.
class RegardTenu {
 public:
  explicit RegardTenu(std::filesystem::path fichier) : fichier_(std::move(fichier)) {}
  ~RegardTenu() { fermer(); }
  RegardTenu(const RegardTenu&) = delete;
  RegardTenu& operator=(const RegardTenu&) = delete;

  /// False when it cannot be written.
  bool garder(std::vector<std::string> mots);
  void fermer();

 private:
  const std::filesystem::path fichier_;
  std::mutex verrou_;
  bool ferme_ = false;
};

class Detachement {
 public:
  /// Returns in the child alone; false when there is none. The other ends when the door is open, as `ensuite`
  /// says, or else with 1, the reason told. Ctrl-C, meanwhile, ends both.
  bool detacher(const std::function<int(const Regard&)>& ensuite);
  void pret(const Regard& regard);

 private:
  Descripteur pret_;
};

}  // namespace tarnavelle::Plateau
