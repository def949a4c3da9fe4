#include "Detachement.hpp"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <system_error>
#include <utility>

#include "Socle/Fichiers.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::size_t tailleMax = 64 * 1024;

constexpr int fins[] = {SIGINT, SIGTERM};
constexpr int interrompu = 130;  ///< the exit status that shells know

volatile pid_t enfant = 0;
volatile std::sig_atomic_t arrete = 0;

/// Ctrl-C reaches who was called, and not the door, which has left his terminal.
void transmettre(int /*signal*/) {
  arrete = 1;
  ::kill(enfant, SIGTERM);
}

std::string toutLire(int fd) {
  std::string lu;
  for (std::array<char, 1024> octets{};;) {
    const auto n = ::read(fd, octets.data(), octets.size());
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0 || lu.size() > tailleMax) return lu;
    lu.append(octets.data(), static_cast<std::size_t>(n));
  }
}

/// What the door that is opening says. At a signal that ends, it is told to close, and we end with it.
std::string ecouter(pid_t porte, int fd) {
  sigset_t ensemble;
  sigemptyset(&ensemble);
  enfant = porte;
  for (const int signal : fins) {
    std::signal(signal, transmettre);
    sigaddset(&ensemble, signal);
  }
  ::sigprocmask(SIG_UNBLOCK, &ensemble, nullptr);
  std::string dit = toutLire(fd);
  ::sigprocmask(SIG_BLOCK, &ensemble, nullptr);
  for (const int signal : fins) std::signal(signal, SIG_DFL);
  if (arrete == 0) return dit;
  while (::waitpid(porte, nullptr, 0) < 0 && errno == EINTR) continue;
  ::_exit(interrompu);
}

}  // namespace

std::string Regard::ecrit() const {
  std::string texte = std::to_string(porte);
  for (const std::string& mot : mots) texte.append(1, '\0').append(mot);
  return texte;
}

std::optional<Regard> Regard::lu(std::string_view octets) {
  Regard regard;
  const auto pid = octets.substr(0, octets.find('\0'));
  const auto fin = std::from_chars(pid.data(), pid.data() + pid.size(), regard.porte);
  if (fin.ec != std::errc() || regard.porte <= 1 || octets.size() == pid.size()) return std::nullopt;
  for (auto reste = octets.substr(pid.size());;) {
    reste.remove_prefix(1);
    const auto mot = reste.substr(0, reste.find('\0'));
    regard.mots.emplace_back(mot);
    if (mot.size() == reste.size()) return regard;
    reste.remove_prefix(mot.size());
  }
}

std::optional<Regard> Regard::garde(const std::filesystem::path& fichier) {
  auto regard = lu(lireFichier(fichier, tailleMax).value_or(""));
  return regard && ::kill(regard->porte, 0) == 0 ? regard : std::nullopt;
}

bool Regard::garder(const std::filesystem::path& fichier) const { return ecrireFichierPrive(fichier, ecrit()); }

bool RegardTenu::garder(std::vector<std::string> mots) {
  const std::lock_guard garde(verrou_);
  return ferme_ || Regard{::getpid(), std::move(mots)}.garder(fichier_);
}

void RegardTenu::fermer() {
  const std::lock_guard garde(verrou_);
  std::error_code erreur;
  if (!std::exchange(ferme_, true)) std::filesystem::remove(fichier_, erreur);
}

bool Detachement::detacher(const std::function<int(const Regard&)>& ensuite) {
  auto tube = Tube::creer();
  if (!tube) return false;
  const pid_t pid = ::fork();
  if (pid < 0) return false;
  if (pid > 0) {
    tube->ecriture.fermer();
    const auto regard = Regard::lu(ecouter(pid, *tube->lecture));
    ::_exit(regard ? ensuite(*regard) : 1);
  }
  ::setsid();
  pret_ = std::move(tube->ecriture);
  return true;
}

void Detachement::pret(const Regard& regard) {
  if (*pret_ < 0) return;
  const int rien = ::open("/dev/null", O_RDWR);
  for (const int flux : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::dup2(rien, flux);
  if (rien > STDERR_FILENO) ::close(rien);
  ecrireTout(*pret_, regard.ecrit());
  pret_.fermer();
}

}  // namespace tarnavelle::Plateau
