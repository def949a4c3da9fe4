#include "Terminal/Courrier.hpp"

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

Sonnette::Sonnette() {
  if (::pipe(tube_) != 0) std::abort();  // no descriptor is left: nothing can be done at all
  for (const int fd : tube_) {
    ::fcntl(fd, F_SETFD, FD_CLOEXEC);
    ::fcntl(fd, F_SETFL, O_NONBLOCK);
  }
}

Sonnette::~Sonnette() {
  for (const int fd : tube_) ::close(fd);
}

void Sonnette::sonner() { static_cast<void>(!::write(tube_[1], "", 1)); }

void Sonnette::taire() {
  char octet = 0;
  while (::read(tube_[0], &octet, 1) > 0) continue;
}

void suivreSignaux(std::function<void(int)> dire, std::function<void()> enPartant) {
  sigset_t suivis;
  sigemptyset(&suivis);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGWINCH}) sigaddset(&suivis, signal);
  ::pthread_sigmask(SIG_BLOCK, &suivis, nullptr);
  std::signal(SIGPIPE, SIG_IGN);
  std::thread([suivis, dire = std::move(dire), enPartant = std::move(enPartant)] {
    constexpr auto rapproches = std::chrono::seconds(2);
    auto dernier = std::chrono::steady_clock::time_point::min();
    for (int signal = 0; sigwait(&suivis, &signal) == 0;) {
      const auto maintenant = std::chrono::steady_clock::now();
      if (signal == SIGINT && dernier + rapproches > maintenant && dernier.time_since_epoch().count() > 0) {
        if (enPartant) enPartant();
        std::_Exit(128 + SIGINT);
      }
      if (signal == SIGINT) dernier = maintenant;
      dire(signal);
    }
  }).detach();
}

}  // namespace tarnavelle
