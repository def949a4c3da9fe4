#include "Verrou.hpp"

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <string>
#include <utility>

#include "Socle/Fichiers.hpp"

namespace tarnavelle::Plateau {
namespace {

/// The process that wrote its number there; 0 when it is not told.
pid_t detenteur(const std::filesystem::path& chemin) {
  const std::string ecrit = lireFichier(chemin, 20).value_or("");
  pid_t pid = 0;
  std::from_chars(ecrit.data(), ecrit.data() + ecrit.size(), pid);
  return pid;
}

/// Whether it could be taken. What a board that was killed had just started holds its locks until it has become
/// another program: that is waited for.
bool verrouiller(int descripteur, const std::filesystem::path& chemin) {
  constexpr int essais = 100;
  constexpr timespec pause{0, 10'000'000};
  for (int essai = 0;; ++essai) {
    if (::flock(descripteur, LOCK_EX | LOCK_NB) == 0) return true;
    const pid_t pid = errno == EWOULDBLOCK && essai < essais ? detenteur(chemin) : 0;
    if (pid <= 1 || ::kill(pid, 0) == 0 || errno != ESRCH) return false;
    ::nanosleep(&pause, nullptr);
  }
}

}  // namespace

Garde<Verrou> Verrou::prendre(const std::filesystem::path& chemin) {
  Verrou verrou(::open(chemin.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
  if (verrou.descripteur_ >= 0 && verrouiller(verrou.descripteur_, chemin)) {
    const std::string pid = std::to_string(::getpid());
    if (::ftruncate(verrou.descripteur_, 0) == 0)
      ecrireTout(verrou.descripteur_, pid);  // else who has it is not told
    return verrou;
  }
  if (verrou.descripteur_ >= 0) {
    const pid_t pid = detenteur(chemin);
    return Sinon{Avarie{Avarie::Cas::occupe, "Un autre plateau est déjà ouvert" +
                                                 (pid > 0 ? " (processus " + std::to_string(pid) + ")" : "") +
                                                 " : deux ne peuvent pas tenir le même registre."}};
  }
  return Sinon{Avarie{Avarie::Cas::inaccessible,
                      "Le registre ne peut pas être tenu : impossible d'ouvrir « " + chemin.string() + " »."}};
}

Verrou::Verrou(Verrou&& autre) noexcept : descripteur_(std::exchange(autre.descripteur_, -1)) {}

Verrou& Verrou::operator=(Verrou&& autre) noexcept {
  std::swap(descripteur_, autre.descripteur_);
  return *this;
}

Verrou::~Verrou() {
  if (descripteur_ >= 0) ::close(descripteur_);
}

}  // namespace tarnavelle::Plateau
