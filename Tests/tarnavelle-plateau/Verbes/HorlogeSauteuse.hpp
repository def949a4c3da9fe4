// A clock that leaps to the end of every wait.
#pragma once

#include <algorithm>
#include <atomic>
#include <functional>
#include <utility>

#include "Verbes/Horloge.hpp"

namespace tarnavelle::Plateau {

class HorlogeSauteuse final : public Horloge {
 public:
  Instant maintenant() const override { return maintenant_; }
  void attendre(std::condition_variable&, std::unique_lock<std::mutex>& verrou, Instant echeance) override {
    if (const auto fait = std::exchange(pendant, {})) {
      verrou.unlock();
      fait();
      verrou.lock();
      return;
    }
    maintenant_ = std::max(maintenant_.load(), echeance);
  }
  std::chrono::system_clock::time_point date() const override { return {}; }

  std::function<void()> pendant;  ///< happens during the next wait, and ends it

 private:
  std::atomic<Instant> maintenant_{};
};

}  // namespace tarnavelle::Plateau
