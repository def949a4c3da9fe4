#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <optional>

#include "Enfants/Enfant.hpp"
#include "Hotes/HotesConnus.hpp"
#include "Hotes/LienSSH.hpp"
#include "MarquesInterne.hpp"
#include "Socle/Fichiers.hpp"

namespace tarnavelle::Plateau {
namespace {

using Montre = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr std::size_t sortieMax = std::size_t{8} << 20;  ///< bytes of one answer
constexpr std::size_t journalMax = 64 * 1024;
constexpr milliseconds entreRegards{200};  ///< at who may want to stop

}  // namespace

struct ShellDistant::Corps {
  std::filesystem::path journal;
  std::optional<Enfant> enfant;

  ~Corps() {
    if (enfant) {
      enfant->entree.fermer();
      ::kill(-enfant->pid, SIGKILL);
      ::waitpid(enfant->pid, nullptr, 0);
    }
    if (!journal.empty()) ::unlink(journal.c_str());
  }
};

ShellDistant::ShellDistant(const LienSSH& lien) : lien_(lien) {}
ShellDistant::~ShellDistant() = default;

void ShellDistant::fermer() { corps_.reset(); }

Resultat<std::string, PanneSSH> ShellDistant::demander(std::string_view ligne, milliseconds auPlus,
                                                       const std::function<bool()>& arret) {
  using Cause = PanneSSH::Cause;
  const std::string& hote = lien_.hote();
  const auto echouer = [&](const PanneSSH& panne) {
    corps_.reset();
    return Sinon{panne};
  };
  if (!HotesConnus::nomSur(hote)) return Sinon{PanneSSH::de(Cause::nom, hote)};
  if (!corps_) {
    static std::atomic<unsigned> rang = 0;
    corps_ = std::make_unique<Corps>();
    corps_->journal =
        lien_.reglages().dossier / ("s" + std::to_string(::getpid()) + "-" + std::to_string(++rang));
    corps_->enfant = Enfant::lancer({.mots = lien_.motsShell(corps_->journal),
                                     .environnement = lien_.reglages().environnement,
                                     .dossier = "/"});
    if (!corps_->enfant) return echouer(PanneSSH::de(Cause::sansSSH, hote));
  }
  const interne::Marques marques;
  const std::string script = marques.autourIci(ligne);
  std::string_view reste = script;
  std::string recu;
  const auto limite = Montre::now() + auPlus;
  std::array<char, 64 * 1024> bloc;
  while (true) {
    const auto lue = marques.lire(recu);
    if (lue && lue->statut) return std::string(lue->sortie);
    if (arret && arret()) return echouer(PanneSSH::de(Cause::coupe, hote));
    const auto maintenant = Montre::now();
    if (maintenant >= limite || recu.size() > sortieMax) {
      lien_.rompre();
      return echouer(PanneSSH::de(Cause::horsDelai, hote));
    }
    const auto pause = std::min(std::chrono::ceil<milliseconds>(limite - maintenant),
                                arret ? entreRegards : milliseconds(60000));
    std::array<pollfd, 2> attendus{
        {{*corps_->enfant->sortie, POLLIN, 0}, {reste.empty() ? -1 : *corps_->enfant->entree, POLLOUT, 0}}};
    ::poll(attendus.data(), attendus.size(), static_cast<int>(pause.count()));
    if (attendus[1].revents != 0) {
      const auto ecrits = ::write(*corps_->enfant->entree, reste.data(), reste.size());
      if (ecrits > 0) reste.remove_prefix(static_cast<std::size_t>(ecrits));
      if (ecrits < 0 && errno != EAGAIN && errno != EINTR)
        reste = {};  // what it says on its way out tells more
    }
    if (attendus[0].revents == 0) continue;
    const auto lus = ::read(*corps_->enfant->sortie, bloc.data(), bloc.size());
    if (lus < 0 && (errno == EAGAIN || errno == EINTR)) continue;
    if (lus <= 0) {
      const auto dit = lireFichier(corps_->journal, journalMax).value_or("");
      return echouer(PanneSSH::lire(hote, dit));
    }
    recu.append(bloc.data(), static_cast<std::size_t>(lus));
  }
}

}  // namespace tarnavelle::Plateau
