// What may pass of the keys typed at a terminal whose program is on its way, gone, or another one by now: keys
// that were meant for nobody, and the rest of a paste that a cut went through, would be taken for orders. Pure;
// one thread at a time.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarnavelle::Plateau {

/// Which bytes of what is typed may pass, given when the way is free.
class Barriere {
 public:
  /// What passes of it. Of a paste that began while the way was not free nothing does, to its end.
  std::string passer(std::string_view octets, bool libre);
  /// A new way, which is not free yet; a paste that is under way does not go on in it.
  void couper() { perdu_ = perdu_ || collage_; }

  /// How much of a mark has been seen once one more byte is: a mark whose first byte stands nowhere else in it.
  static std::size_t avancer(std::string_view marque, std::size_t vus, char octet);

 private:
  std::size_t debut_ = 0;  ///< bytes seen of the marks that begin and end a paste
  std::size_t fin_ = 0;
  bool marquePerdue_ = false;  ///< the mark under way began while the way was not free
  bool collage_ = false;
  bool perdu_ = false;  ///< the paste under way began on a way that is gone
};

}  // namespace tarnavelle::Plateau
