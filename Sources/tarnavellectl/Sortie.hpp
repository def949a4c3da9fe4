// Standard output or standard error, which may be a terminal: whatever comes from elsewhere is shown to a
// terminal, never sent to it. Each serves one thread at a time.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Socle/Environnement.hpp"

namespace tarnavelle {

/// One line to show. Titles stand out where colours are allowed.
struct Ligne {
  std::string texte;
  bool titre = false;
  bool operator==(const Ligne&) const = default;
};
using Page = std::vector<Ligne>;

/// A word of the command line, in quotation marks for a message: on one line, and clipped.
std::string citer(std::string_view mot);

class Sortie {
 public:
  Sortie(int descripteur, const Variables& environnement);

  bool terminal() const { return terminal_; }

  /// Columns of the terminal; nothing when the stream is not one.
  std::optional<std::size_t> colonnes() const;

  /// Shows lines, each followed by a line feed. What could drive a terminal is written out, wherever the
  /// stream leads: a pipe may end on a terminal.
  void montrer(const Page& page);

  /// The same for one line of a message to the operator, on standard error.
  void avertir(std::string_view message);

  /// A document for other programs: as it is, byte for byte. Only on a terminal, what could drive it is
  /// written out and a line feed ends it.
  void rendre(std::string_view document);

  /// Whether some write has failed: what was to be shown then is missing, or broken off anywhere; what came
  /// after was tried all the same.
  bool perdu() const { return perdu_; }

 private:
  void ecrire(std::string_view octets);

  int descripteur_;
  bool terminal_;
  bool couleurs_;
  bool perdu_ = false;
};

}  // namespace tarnavelle
