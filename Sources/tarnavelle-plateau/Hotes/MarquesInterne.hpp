// Marks around a line's output, so that nothing else that is printed is taken for it: neither what a login
// shell's own files say, nor what the line prints itself. Private to this folder.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tarnavelle::Plateau::interne {

class Marques {
 public:
  static constexpr std::size_t autourMax = 256;  ///< bytes that they take of an output

  Marques();  ///< by chance: nobody can print them beforehand

  /// A script for sh that runs the line, reading `entree`, between the marks.
  std::string autour(std::string_view ligne, std::string_view entree) const;

  /// The same for the shell that reads the script, without another.
  std::string autourIci(std::string_view ligne) const;

  struct Lue {
    std::string_view sortie;
    std::optional<int> statut;  ///< absent while the line has not ended
  };
  /// Nothing before the first mark; of an output of which only the end was kept, what there is.
  std::optional<Lue> lire(std::string_view tout) const;

 private:
  std::string marque(std::string_view suite) const;

  std::string jeton_;
};

}  // namespace tarnavelle::Plateau::interne
