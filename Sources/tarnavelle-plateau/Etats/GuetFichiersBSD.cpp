#if !defined(__linux__)
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "Etats/GuetFichiers.hpp"

namespace tarnavelle::Plateau {

/// kqueue tells that a folder has changed, but not that a file of it was appended to, and watching each file
/// costs a descriptor each: here whoever waits looks again after a while.
struct GuetFichiers::Corps {
  std::array<int, 2> tube{-1, -1};

  Corps() {
    if (::pipe(tube.data()) != 0) return;
    for (const int fd : tube) {
      ::fcntl(fd, F_SETFL, O_NONBLOCK);
      ::fcntl(fd, F_SETFD, FD_CLOEXEC);
    }
  }
  ~Corps() {
    for (const int fd : tube)
      if (fd >= 0) ::close(fd);
  }
};

GuetFichiers::GuetFichiers(const std::filesystem::path&, std::chrono::milliseconds sansGuet)
    : sansGuet_(sansGuet), corps_(std::make_unique<Corps>()) {}

GuetFichiers::~GuetFichiers() = default;

GuetFichiers::Changements GuetFichiers::attendre(std::chrono::milliseconds auPlus) {
  pollfd attendu{corps_->tube[0], POLLIN, 0};
  if (::poll(&attendu, 1, static_cast<int>(std::min(auPlus, sansGuet_).count())) > 0)
    for (std::array<char, 64> bloc; ::read(corps_->tube[0], bloc.data(), bloc.size()) > 0;) {
    }
  return {.noms = {}, .tous = true};
}

void GuetFichiers::interrompre() { [[maybe_unused]] const auto ecrits = ::write(corps_->tube[1], "", 1); }

}  // namespace tarnavelle::Plateau
#endif
