// Does something again and again, on a thread of its own, for as long as it lives.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace tarnavelle::Plateau {

class Ronde {
 public:
  Ronde(std::chrono::milliseconds tous, std::function<void()> faire);
  ~Ronde();
  Ronde(const Ronde&) = delete;
  Ronde& operator=(const Ronde&) = delete;

 private:
  std::mutex mutex_;
  std::condition_variable fin_;
  bool arret_ = false;
  std::thread fil_;
};

}  // namespace tarnavelle::Plateau
