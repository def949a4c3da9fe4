// Lines from a file descriptor, read in blocks. A line is a view into the reader's buffer, valid until
// the next call. The last line counts even without a line feed. Serves one thread at a time.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace tarnavelle {

class LecteurLignes {
 public:
  /// Longest line that is kept, in bytes, unless the reader is told otherwise.
  static constexpr std::size_t ligneMax = 64 * 1024 * 1024;

  struct Ligne {
    std::string_view texte;   ///< without its line feed
    bool tropLongue = false;  ///< beyond the limit, or the memory: the text is dropped, the line is consumed
  };

  explicit LecteurLignes(int descripteur, std::size_t maximum = ligneMax)
      : descripteur_(descripteur), maximum_(maximum), tampon_(bloc) {}

  /// Whether nothing is left of what was read: the next line is to be waited for.
  bool vide() const { return debut_ == fin_; }

  /// The next line; nothing at the end of input, or when it can no longer be read.
  std::optional<Ligne> suivante();

 private:
  static constexpr std::size_t bloc = 64 * 1024;

  bool lire();
  /// Makes room for more of the line; false when the machine has none left.
  bool faireDeLaPlace();

  int descripteur_;
  std::size_t maximum_;
  std::vector<char> tampon_;
  std::size_t debut_ = 0;  ///< first byte not yet given out
  std::size_t vus_ = 0;    ///< bytes from `debut_` known to hold no line feed
  std::size_t fin_ = 0;
};

}  // namespace tarnavelle
