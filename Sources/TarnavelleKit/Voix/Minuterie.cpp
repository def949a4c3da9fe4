#include "Voix/Minuterie.hpp"

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace tarnavelle {
namespace {

struct Attente {
  std::mutex verrou;
  std::condition_variable signal;
  bool abandonnee = false;
};

}  // namespace

std::function<void()> minuterieReelle(std::chrono::milliseconds delai, std::function<void()> action) {
  // Beyond a year the clock's own range would be left.
  const auto fin = std::chrono::steady_clock::now() +
                   std::min(delai, std::chrono::milliseconds(std::chrono::hours(24 * 365)));
  auto attente = std::make_shared<Attente>();
  try {
    std::thread([attente, fin, action = std::move(action)] {
      {
        std::unique_lock garde(attente->verrou);
        if (attente->signal.wait_until(garde, fin, [&] { return attente->abandonnee; })) return;
      }
      action();
    }).detach();
  } catch (const std::system_error&) {  // no thread to be had
    return nullptr;
  }
  return [attente] {
    const std::lock_guard garde(attente->verrou);
    attente->abandonnee = true;
    attente->signal.notify_all();
  };
}

}  // namespace tarnavelle
