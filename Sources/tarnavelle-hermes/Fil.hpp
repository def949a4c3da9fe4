// The thread of a conversation as it is laid out on a terminal: who says what, line by line, none of it able to
// drive the terminal nor to look like what the program draws of itself. Hermès's words are indented; what the
// program says begins at the edge. A plain value.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Memoire.hpp"

namespace tarnavelle {

class Fil {
 public:
  static constexpr std::string_view marge = "  ";

  /// The whole of what somebody said.
  static std::vector<std::string> lignes(const Memoire::Propos& propos, std::size_t colonnes);
  static constexpr std::size_t vousMax = 40;  ///< lines shown of what the operator said

  static std::vector<std::string> vous(std::string_view texte, std::size_t colonnes);
  static std::vector<std::string> note(std::string_view texte, std::size_t colonnes);
  static std::vector<std::string> outil(std::string_view texte, std::size_t colonnes);

  /// A piece of Hermès's reply; the lines that it completes. Call with the same width, or a new one.
  std::vector<std::string> ecouter(std::string_view morceau, std::size_t colonnes);
  /// The line that is not whole yet, as it shows; nothing when there is none.
  std::vector<std::string> enCours(std::size_t colonnes) const;
  /// The same: it is whole.
  std::vector<std::string> finir(std::size_t colonnes);

 private:
  std::string partielle_;
};

}  // namespace tarnavelle
