// Lines in two columns: terms, and what is said of each. A plain value.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Sortie.hpp"

namespace tarnavelle {

class Lexique {
 public:
  void ajouter(std::string terme, std::string texte);

  /// Adds the lines, texts folded to `colonnes` when given.
  void versPage(Page& page, std::optional<std::size_t> colonnes) const;

 private:
  std::vector<std::pair<std::string, std::string>> entrees_;
};

}  // namespace tarnavelle
