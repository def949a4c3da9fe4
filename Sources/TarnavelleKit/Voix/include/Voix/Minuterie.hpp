// A call put off. What is to happen then is its caller's business. Safe from any thread.
#pragma once

#include <chrono>
#include <functional>

namespace tarnavelle {

/// Calls the action once, after the delay, on a thread of the timer's; what it returns gives that up, as
/// long as the action has not begun, without waiting for it. Returns nothing callable when it cannot.
using Minuterie = std::function<std::function<void()>(std::chrono::milliseconds, std::function<void()>)>;

/// The one that really waits: a thread for each delay, which ends with it or when it is given up.
std::function<void()> minuterieReelle(std::chrono::milliseconds delai, std::function<void()> action);

}  // namespace tarnavelle
