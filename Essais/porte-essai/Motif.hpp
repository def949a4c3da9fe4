// The regular expression that `attendre` looks for on an agent's screen. Whatever the pattern and the
// screen, compiling and searching end in bounded time and memory. Plain values, safe from any thread.
#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tarnavelle::PorteEssai {

class Motif {
 public:
  static constexpr std::size_t caracteresMax = 200;  ///< longest pattern

  /// Nothing when the expression (Perl syntax) is malformed or longer than `caracteresMax`.
  static std::optional<Motif> lire(std::string_view expression);

  enum class Resultat { absent, present, tropCouteux };

  /// Searches the lines one by one: "^" and "$" are a line's ends, "." one code point. A search that
  /// backtracks without measure is given up.
  Resultat chercher(const std::deque<std::string>& lignes) const;

 private:
  struct Interne;
  explicit Motif(std::shared_ptr<const Interne> interne);
  std::shared_ptr<const Interne> interne_;
};

}  // namespace tarnavelle::PorteEssai
