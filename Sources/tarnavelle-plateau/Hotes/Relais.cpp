#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <optional>

#include "Enfants/Descripteur.hpp"
#include "RelaisInterne.hpp"
#include "Socle/Fichiers.hpp"

extern char** environ;

namespace tarnavelle::Plateau::interne {
namespace {

constexpr std::size_t attenteMax = 256 * 1024;  ///< bytes typed that it has not taken yet
constexpr int tue = 255;

using Montre = std::chrono::steady_clock;

/// Written to by the handler: our terminal has another size.
int tailleChange = -1;
void surTaille(int) {
  const int garde = errno;
  [[maybe_unused]] const auto ecrits = ::write(tailleChange, "", 1);
  errno = garde;
}

void copierTaille(int maitre) {
  winsize taille{};
  if (::ioctl(STDIN_FILENO, TIOCGWINSZ, &taille) == 0) ::ioctl(maitre, TIOCSWINSZ, &taille);
}

struct Paire {
  Descripteur maitre = Descripteur(-1);
  Descripteur esclave = Descripteur(-1);
};

/// A terminal that changes nothing of what goes through it.
Paire terminal() {
  Paire paire;
  paire.maitre = Descripteur(::posix_openpt(O_RDWR | O_NOCTTY));
  if (*paire.maitre < 0 || ::grantpt(*paire.maitre) != 0 || ::unlockpt(*paire.maitre) != 0) return {};
  ::fcntl(*paire.maitre, F_SETFD, FD_CLOEXEC);
  const char* nom = ::ptsname(*paire.maitre);
  paire.esclave = Descripteur(nom ? ::open(nom, O_RDWR | O_NOCTTY | O_CLOEXEC) : -1);
  termios brut{};
  if (*paire.esclave < 0 || ::tcgetattr(*paire.esclave, &brut) != 0) return {};
  ::cfmakeraw(&brut);
  ::tcsetattr(*paire.esclave, TCSANOW, &brut);
  copierTaille(*paire.maitre);
  rendreNonBloquant(*paire.maitre);
  return paire;
}

pid_t lancer(const std::vector<std::string>& mots, int esclave) {
  std::vector<char*> pointeurs;
  for (const auto& mot : mots) pointeurs.push_back(const_cast<char*>(mot.c_str()));
  pointeurs.push_back(nullptr);
  posix_spawn_file_actions_t actes;
  posix_spawn_file_actions_init(&actes);
  posix_spawn_file_actions_adddup2(&actes, esclave, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actes, esclave, STDOUT_FILENO);
  posix_spawn_file_actions_addopen(&actes, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t pid = 0;
  const int echec = ::posix_spawnp(&pid, pointeurs.front(), &actes, nullptr, pointeurs.data(), environ);
  posix_spawn_file_actions_destroy(&actes);
  return echec == 0 ? pid : -1;
}

/// Whether a mark went by, in pieces of any size.
class Guetteur {
 public:
  explicit Guetteur(std::string_view signe) : signe_(signe) {}
  bool vu(std::string_view octets) {
    for (const char octet : octets)
      if (vus_ < signe_.size()) vus_ = Barriere::avancer(signe_, vus_, octet);
    return vus_ == signe_.size();
  }

 private:
  std::string_view signe_;
  std::size_t vus_ = 0;
};

}  // namespace

int Relais::courir(const std::vector<std::string>& mots, std::string_view signe, Barriere& barriere,
                   const std::function<void()>& la) {
  auto tube = Tube::creer();
  auto paire = terminal();
  if (!tube || *paire.maitre < 0) return nonLance;
  rendreNonBloquant(*tube->ecriture);
  tailleChange = *tube->ecriture;
  struct sigaction action {};
  action.sa_handler = surTaille;
  ::sigaction(SIGWINCH, &action, nullptr);
  const pid_t pid = lancer(mots, *paire.esclave);
  paire.esclave.fermer();
  if (pid <= 0) return nonLance;

  Guetteur guetteur(signe);
  bool libre = false;
  std::optional<Montre::time_point> ecritDepuis;
  const auto liberer = [&] {
    libre = true;
    la();
  };
  std::string attente;
  std::array<char, 64 * 1024> bloc;
  while (true) {
    const int entree = attente.size() < attenteMax ? STDIN_FILENO : -1;
    std::array<pollfd, 3> attendus{
        {{*paire.maitre, static_cast<short>(attente.empty() ? POLLIN : POLLIN | POLLOUT), 0},
         {entree, POLLIN, 0},
         {*tube->lecture, POLLIN, 0}}};
    const auto reste =
        ecritDepuis ? std::chrono::ceil<std::chrono::milliseconds>(*ecritDepuis + sansSigne - Montre::now())
                    : sansSigne;
    const bool attendre = libre || !ecritDepuis;
    if (::poll(attendus.data(), attendus.size(),
               attendre ? -1 : static_cast<int>(std::max<std::int64_t>(0, reste.count()))) < 0)
      continue;
    if (!attendre && reste.count() <= 0) liberer();
    if (attendus[2].revents != 0) {
      [[maybe_unused]] const auto lus = ::read(*tube->lecture, bloc.data(), bloc.size());
      copierTaille(*paire.maitre);
      ::kill(pid, SIGWINCH);  // that terminal is nobody's, so nobody is told of it
    }
    if ((attendus[0].revents & POLLOUT) != 0) {
      const auto ecrits = ::write(*paire.maitre, attente.data(), attente.size());
      if (ecrits > 0) attente.erase(0, static_cast<std::size_t>(ecrits));
    }
    if ((attendus[0].revents & ~POLLOUT) != 0) {
      const auto lus = ::read(*paire.maitre, bloc.data(), bloc.size());
      if (lus == 0 || (lus < 0 && errno != EAGAIN && errno != EINTR)) break;
      const std::string_view octets(bloc.data(), static_cast<std::size_t>(std::max<ssize_t>(lus, 0)));
      ecrireTout(STDOUT_FILENO, octets);
      if (!ecritDepuis) ecritDepuis = Montre::now();
      if (!libre && guetteur.vu(octets)) liberer();
    }
    if (attendus[1].revents != 0) {
      const auto lus = ::read(STDIN_FILENO, bloc.data(), bloc.size());
      if (lus == 0 || (lus < 0 && errno != EAGAIN && errno != EINTR)) break;  // nobody shows us any more
      if (lus > 0) attente += barriere.passer({bloc.data(), static_cast<std::size_t>(lus)}, libre);
    }
  }
  barriere.couper();
  tailleChange = -1;
  paire.maitre.fermer();  // it hears of it, should it still run
  int fin = 0;
  while (::waitpid(pid, &fin, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(fin) ? WEXITSTATUS(fin) : tue;
}

}  // namespace tarnavelle::Plateau::interne
