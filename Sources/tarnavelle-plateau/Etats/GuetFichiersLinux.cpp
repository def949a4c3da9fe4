#if defined(__linux__)
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "Etats/GuetFichiers.hpp"

namespace tarnavelle::Plateau {

struct GuetFichiers::Corps {
  int inotify = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  int reveil = ::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
  bool guette = false;

  ~Corps() {
    if (inotify >= 0) ::close(inotify);
    if (reveil >= 0) ::close(reveil);
  }
};

GuetFichiers::GuetFichiers(const std::filesystem::path& dossier, std::chrono::milliseconds sansGuet)
    : sansGuet_(sansGuet), corps_(std::make_unique<Corps>()) {
  corps_->guette =
      corps_->inotify >= 0 && ::inotify_add_watch(corps_->inotify, dossier.c_str(),
                                                  IN_MODIFY | IN_CREATE | IN_MOVED_TO | IN_ONLYDIR) >= 0;
}

GuetFichiers::~GuetFichiers() = default;

GuetFichiers::Changements GuetFichiers::attendre(std::chrono::milliseconds auPlus) {
  Changements changements;
  std::array<pollfd, 2> attendus = {
      {{corps_->guette ? corps_->inotify : -1, POLLIN, 0}, {corps_->reveil, POLLIN, 0}}};
  const auto attente = corps_->guette ? auPlus : std::min(auPlus, sansGuet_);
  const int prets = ::poll(attendus.data(), attendus.size(), static_cast<int>(attente.count()));
  if (!corps_->guette) changements.tous = true;
  if (prets <= 0) return changements;
  if (std::uint64_t compte = 0; attendus[1].revents != 0)
    while (::read(corps_->reveil, &compte, sizeof compte) > 0) {
    }
  alignas(inotify_event) std::array<char, 16384> bloc;
  for (ssize_t lus = 0; corps_->guette && (lus = ::read(corps_->inotify, bloc.data(), bloc.size())) > 0;) {
    for (std::size_t i = 0; i + sizeof(inotify_event) <= static_cast<std::size_t>(lus);) {
      inotify_event evenement{};
      std::memcpy(&evenement, &bloc[i], sizeof evenement);
      if ((evenement.mask & IN_Q_OVERFLOW) != 0) changements.tous = true;
      if (evenement.len > 0) changements.noms.insert(&bloc[i + sizeof evenement]);  // it ends with NUL
      i += sizeof evenement + evenement.len;
    }
  }
  return changements;
}

void GuetFichiers::interrompre() {
  const std::uint64_t un = 1;
  [[maybe_unused]] const auto ecrits = ::write(corps_->reveil, &un, sizeof un);
}

}  // namespace tarnavelle::Plateau
#endif
