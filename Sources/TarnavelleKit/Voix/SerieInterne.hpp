// Actions done one after the other, by whoever brings the first while none is under way: no thread of its own,
// and no lock held while an action is done. An action brought from inside another is done after it.
#pragma once

#include <deque>
#include <functional>
#include <mutex>
#include <utility>

namespace tarnavelle {

class SerieInterne {
 public:
  /// The actions keep alive what owns this. From any thread.
  void confier(std::function<void()> action) {
    {
      const std::lock_guard garde(verrou_);
      attente_.push_back(std::move(action));
      if (std::exchange(occupee_, true)) return;
    }
    while (auto suivante = prochaine()) suivante();
  }

 private:
  std::function<void()> prochaine() {
    const std::lock_guard garde(verrou_);
    if (attente_.empty()) {
      occupee_ = false;
      return nullptr;
    }
    auto action = std::move(attente_.front());
    attente_.pop_front();
    return action;
  }

  std::mutex verrou_;
  std::deque<std::function<void()>> attente_;
  bool occupee_ = false;
};

}  // namespace tarnavelle
