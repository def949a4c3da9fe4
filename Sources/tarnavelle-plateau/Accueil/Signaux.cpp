#include "Accueil/Signaux.hpp"

#include <pthread.h>

#include <algorithm>
#include <csignal>

namespace tarnavelle::Plateau::Signaux {
namespace {

constexpr int lesFins[] = {SIGINT, SIGTERM, SIGHUP};

sigset_t fins() {
  sigset_t ensemble;
  sigemptyset(&ensemble);
  for (const int signal : lesFins) sigaddset(&ensemble, signal);
  return ensemble;
}

}  // namespace

void retenir() {
  for (const int signal : lesFins)
    std::signal(signal, SIG_DFL);  // a shell starts its background jobs with SIGINT ignored
  const sigset_t ensemble = fins();
  pthread_sigmask(SIG_BLOCK, &ensemble, nullptr);
  for (const int signal : {SIGPIPE, SIGXFSZ}) std::signal(signal, SIG_IGN);
}

void attendreFin() {
  const sigset_t ensemble = fins();
  int signal = 0;
  while (sigwait(&ensemble, &signal) != 0) {
  }
}

bool finDemandee() {
  sigset_t venus;
  return sigpending(&venus) == 0 &&
         std::ranges::any_of(lesFins, [&](int signal) { return sigismember(&venus, signal) == 1; });
}

}  // namespace tarnavelle::Plateau::Signaux
