// What the threads of a program tell the one that shows it, and the signals of the process, which are told in
// the same way. Safe from any thread; one takes.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <utility>

namespace tarnavelle {

/// A descriptor that is readable once it has rung, until it is silenced.
class Sonnette {
 public:
  Sonnette();
  ~Sonnette();
  Sonnette(const Sonnette&) = delete;
  Sonnette& operator=(const Sonnette&) = delete;

  void sonner();
  void taire();
  int descripteur() const { return tube_[0]; }

 private:
  int tube_[2] = {-1, -1};
};

template <class Nouvelle>
class CourrierDe {
 public:
  void poster(Nouvelle nouvelle) {
    const std::lock_guard verrou(verrou_);
    nouvelles_.push_back(std::move(nouvelle));
    if (nouvelles_.size() == 1) sonnette_.sonner();
  }

  /// Waits while much is still to be taken: who floods goes no faster than who shows. Hold no lock.
  void attendrePlace() {
    constexpr std::size_t auPlus = 1000;
    std::unique_lock verrou(verrou_);
    place_.wait(verrou, [this] { return ferme_ || nouvelles_.size() < auPlus; });
  }

  /// Nobody takes any more: nobody waits.
  void fermer() {
    const std::lock_guard verrou(verrou_);
    ferme_ = true;
    place_.notify_all();
  }

  /// What has come, in its order.
  std::deque<Nouvelle> prendre() {
    const std::lock_guard verrou(verrou_);
    place_.notify_all();
    sonnette_.taire();
    return std::exchange(nouvelles_, {});
  }

  /// Readable while something waits to be taken.
  int descripteur() const { return sonnette_.descripteur(); }

 private:
  Sonnette sonnette_;
  std::mutex verrou_;
  std::condition_variable place_;
  bool ferme_ = false;
  std::deque<Nouvelle> nouvelles_;
};

/// The process's signals are told by their numbers, on a thread that lasts as long as the process, as must what
/// `dire` holds. To be called before any other thread is started. A second interruption within two seconds ends
/// the process, whatever is under way, after `enPartant`.
void suivreSignaux(std::function<void(int)> dire, std::function<void()> enPartant = {});

}  // namespace tarnavelle
