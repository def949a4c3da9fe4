#include "Socle/HorlogeContinue.hpp"

#include <ctime>

namespace tarnavelle {

std::chrono::nanoseconds HorlogeContinue::maintenant() {
#if defined(__APPLE__)
  constexpr clockid_t horloge = CLOCK_MONOTONIC;  // counts sleep there
#else
  constexpr clockid_t horloge = CLOCK_BOOTTIME;  // CLOCK_MONOTONIC, and so steady_clock, stop during sleep
#endif
  timespec t{};
  ::clock_gettime(horloge, &t);
  return std::chrono::seconds(t.tv_sec) + std::chrono::nanoseconds(t.tv_nsec);
}

}  // namespace tarnavelle
