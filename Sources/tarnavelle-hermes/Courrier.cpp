#include "Courrier.hpp"

#include <fcntl.h>
#include <pthread.h>
#include <signal.h>

#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>
#include <utility>

namespace tarnavelle {

Courrier::Courrier() {
  if (::pipe(tube_) != 0) std::abort();  // no descriptor is left: nothing can be done at all
  for (const int fd : tube_) {
    ::fcntl(fd, F_SETFD, FD_CLOEXEC);
    ::fcntl(fd, F_SETFL, O_NONBLOCK);
  }
}

Courrier::~Courrier() {
  for (const int fd : tube_) ::close(fd);
}

void Courrier::poster(Nouvelle nouvelle) {
  const std::lock_guard verrou(verrou_);
  nouvelles_.push_back(std::move(nouvelle));
  if (nouvelles_.size() == 1) static_cast<void>(!::write(tube_[1], "", 1));
}

void Courrier::attendrePlace() {
  constexpr std::size_t auPlus = 1000;
  std::unique_lock verrou(verrou_);
  place_.wait(verrou, [this] { return ferme_ || nouvelles_.size() < auPlus; });
}

void Courrier::fermer() {
  const std::lock_guard verrou(verrou_);
  ferme_ = true;
  place_.notify_all();
}

std::deque<Nouvelle> Courrier::prendre() {
  const std::lock_guard verrou(verrou_);
  place_.notify_all();
  char octet = 0;
  while (::read(tube_[0], &octet, 1) > 0) continue;
  return std::exchange(nouvelles_, {});
}

void suivreSignaux(std::shared_ptr<Courrier> courrier) {
  sigset_t suivis;
  sigemptyset(&suivis);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGWINCH}) sigaddset(&suivis, signal);
  ::pthread_sigmask(SIG_BLOCK, &suivis, nullptr);
  std::signal(SIGPIPE, SIG_IGN);
  std::thread([suivis, courrier = std::move(courrier)] {
    constexpr auto rapproches = std::chrono::seconds(2);
    auto dernier = std::chrono::steady_clock::time_point::min();
    for (int signal = 0; sigwait(&suivis, &signal) == 0;) {
      const auto maintenant = std::chrono::steady_clock::now();
      if (signal == SIGINT && dernier + rapproches > maintenant && dernier.time_since_epoch().count() > 0)
        std::_Exit(128 + SIGINT);
      if (signal == SIGINT) dernier = maintenant;
      courrier->poster({Nouvelle::signal{signal}});
    }
  }).detach();
}

}  // namespace tarnavelle
