// The regular expression that `attendre` looks for on an agent's screen. Whatever the pattern and the screen,
// compiling takes bounded memory, and searching a time that grows with the screen alone (RE2). Plain values,
// safe from any thread.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Socle/Resultat.hpp"

namespace tarnavelle::Plateau {

class Motif {
 public:
  static constexpr std::size_t caracteresMax = 200;  ///< longest pattern

  enum class Refus { tropLong, malforme, tropCouteux };
  /// RE2's syntax: Perl's without look-around and back references.
  static Resultat<Motif, Refus> lire(std::string_view expression);

  /// Whether one of the lines holds it: "^" and "$" are a line's ends, "." one code point.
  bool present(const std::vector<std::string>& lignes) const;

 private:
  struct Interne;
  explicit Motif(std::shared_ptr<const Interne> interne) : interne_(std::move(interne)) {}
  std::shared_ptr<const Interne> interne_;
};

}  // namespace tarnavelle::Plateau
