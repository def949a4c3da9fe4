#include "Ronde.hpp"

#include <utility>

namespace tarnavelle::Plateau {

Ronde::Ronde(std::chrono::milliseconds tous, std::function<void()> faire)
    : fil_([this, tous, faire = std::move(faire)] {
        std::unique_lock verrou(mutex_);
        while (!fin_.wait_for(verrou, tous, [this] { return arret_; })) faire();
      }) {}

Ronde::~Ronde() {
  {
    const std::lock_guard verrou(mutex_);
    arret_ = true;
  }
  fin_.notify_all();
  fil_.join();
}

}  // namespace tarnavelle::Plateau
