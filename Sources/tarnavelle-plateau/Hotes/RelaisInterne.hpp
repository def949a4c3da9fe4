// A program in a terminal of its own, shown in ours. What is typed reaches it only once it has said that it is
// there: keys that were meant for nobody, and the rest of a paste that a cut went through, would be taken for
// orders. One at a time. Private to this folder.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Hotes/Barriere.hpp"

namespace tarnavelle::Plateau::interne {

class Relais {
 public:
  static constexpr int nonLance = -1;
  /// Without the sign, from the first that it writes.
  static constexpr std::chrono::milliseconds sansSigne{1500};

  /// Runs it to its end, its errors going nowhere; the exit status, 255 when it was ended, `nonLance`. Once it
  /// writes `signe`, or has written for as long as `sansSigne`, the way is free, and `la` is told.
  static int courir(const std::vector<std::string>& mots, std::string_view signe, Barriere& barriere,
                    const std::function<void()>& la);
};

}  // namespace tarnavelle::Plateau::interne
