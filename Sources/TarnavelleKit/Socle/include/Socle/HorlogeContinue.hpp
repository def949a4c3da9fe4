// The time that goes on while the machine sleeps, for whoever must know how long it was away. Safe from any
// thread.
#pragma once

#include <chrono>

namespace tarnavelle::HorlogeContinue {

/// The time since some fixed moment. Never goes back, whatever is done to the calendar's clock.
std::chrono::nanoseconds maintenant();

}  // namespace tarnavelle::HorlogeContinue
