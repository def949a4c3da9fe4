#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>
#include <thread>

#include "Enfants/Enfant.hpp"

namespace tarnavelle::Plateau {
namespace {

using Montre = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds entreRegards{50};  ///< at its end, and at who may want it ended
constexpr milliseconds presDeLaFin{2};    ///< the same once its output is closed
constexpr std::chrono::seconds agonieMax{1};
constexpr int derniersMots = 64;  ///< readings of what it left in its output

/// Writes what its input takes now; closes it once all is written, or nobody reads it.
void nourrir(Enfant& enfant, std::string_view& entree) {
  while (!entree.empty()) {
    const auto ecrits = ::write(*enfant.entree, entree.data(), entree.size());
    if (ecrits < 0 && errno == EINTR) continue;
    if (ecrits < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return;
    if (ecrits < 0) break;
    entree.remove_prefix(static_cast<std::size_t>(ecrits));
  }
  enfant.entree.fermer();
}

/// Reads what is there, once; closes our end once there will be nothing more. Whether there was something.
bool recueillir(Enfant& enfant, std::string& sortie, std::size_t sortieMax) {
  std::array<char, 16 * 1024> octets;
  const auto lus = ::read(*enfant.sortie, octets.data(), octets.size());
  if (lus < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR)) return false;
  if (lus <= 0) {
    enfant.sortie.fermer();
    return false;
  }
  sortie.append(octets.data(), static_cast<std::size_t>(lus));
  if (sortie.size() / 2 > sortieMax) sortie.erase(0, sortie.size() - sortieMax);
  return true;
}

/// Whether it has ended; its number stays its own.
bool fini(pid_t pid) {
  siginfo_t fin{};
  return ::waitid(P_PID, static_cast<id_t>(pid), &fin, WEXITED | WNOHANG | WNOWAIT) != 0 || fin.si_pid == pid;
}

/// Nobody waits for it any longer, but the system for its end to be heard.
void laisserCourir(pid_t pid) {
  std::thread([pid] { ::waitpid(pid, nullptr, 0); }).detach();
}

/// Ends it, with all that it left behind in its session; its status, unless it does not go.
std::optional<int> achever(pid_t pid) {
  ::kill(-pid, SIGKILL);
  int statut = 0;
  for (const auto limite = Montre::now() + agonieMax; Montre::now() < limite; ::poll(nullptr, 0, 1))
    if (::waitpid(pid, &statut, WNOHANG) == pid) return statut;
  laisserCourir(pid);  // it may be root's, or waits for a disk
  return std::nullopt;
}

}  // namespace

Arrivee courir(const Course& course) {
  Arrivee arrivee;
  const auto limite = Montre::now() + course.auPlus;
  auto enfant = Enfant::lancer(course.embarque);
  if (!enfant) {
    arrivee.statut = 127;
    return arrivee;
  }
  auto entree = course.entree;
  // It may end before what it started lets go of its output: its own end is what counts.
  while (!fini(enfant->pid) && !arrivee.horsDelai && !arrivee.arretee) {
    nourrir(*enfant, entree);
    std::array<pollfd, 2> attendus{{{*enfant->sortie, POLLIN, 0}, {*enfant->entree, POLLOUT, 0}}};
    const auto reste = std::chrono::ceil<milliseconds>(limite - Montre::now());
    const auto pause = std::clamp(reste, milliseconds(0), *enfant->sortie < 0 ? presDeLaFin : entreRegards);
    ::poll(attendus.data(), attendus.size(), static_cast<int>(pause.count()));
    if (attendus[0].revents != 0) recueillir(*enfant, arrivee.sortie, course.sortieMax);
    arrivee.horsDelai = Montre::now() >= limite;
    arrivee.arretee = course.arret && course.arret();
  }
  const bool acheve = fini(enfant->pid);
  for (int lectures = 0; acheve && lectures < derniersMots; ++lectures)
    if (*enfant->sortie < 0 || !recueillir(*enfant, arrivee.sortie, course.sortieMax)) break;
  arrivee.horsDelai = arrivee.horsDelai && !acheve;
  arrivee.arretee = arrivee.arretee && !acheve;
  if (arrivee.horsDelai && course.laisser) {
    laisserCourir(enfant->pid);
  } else {
    const auto statut = achever(enfant->pid);
    if (acheve && statut && WIFEXITED(*statut)) arrivee.statut = WEXITSTATUS(*statut);
  }
  if (arrivee.sortie.size() > course.sortieMax)
    arrivee.sortie.erase(0, arrivee.sortie.size() - course.sortieMax);
  return arrivee;
}

}  // namespace tarnavelle::Plateau
