// A host name, "lent.example", whose look-up takes three seconds and then fails.
#pragma once

#include <atomic>

namespace tarnavelle::essai {

extern std::atomic<int> recherchesLentes;  ///< begun
extern std::atomic<int> recherchesFinies;

}  // namespace tarnavelle::essai
