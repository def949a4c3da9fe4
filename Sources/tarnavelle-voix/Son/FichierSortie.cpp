#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <string_view>
#include <utility>

#include "Socle/Fichiers.hpp"
#include "Socle/Inoffensif.hpp"
#include "Son/Fichiers.hpp"
#include "Voix/RealtimeAudio.hpp"

namespace tarnavelle::Voix {
namespace {

/// The header of a WAV file (RIFF, PCM) with that much sound; the largest there is when it isn't known yet.
std::string entete(std::uint32_t octets) {
  std::string texte;
  const auto nombre = [&](std::uint32_t valeur, int taille) {
    for (int i = 0; i < taille; ++i) texte += static_cast<char>(valeur >> (8 * i) & 0xFFU);
  };
  texte += "RIFF";
  nombre(octets > UINT32_MAX - 36 ? UINT32_MAX : octets + 36, 4);
  texte += "WAVEfmt ";
  nombre(16, 4);
  nombre(1, 2);  // PCM
  nombre(1, 2);  // channels
  nombre(frequenceVoix, 4);
  nombre(frequenceVoix * 2, 4);
  nombre(2, 2);
  nombre(16, 2);
  texte += "data";
  nombre(octets, 4);
  return texte;
}

std::string_view texte(const Octets& octets) {
  return {reinterpret_cast<const char*>(octets.data()), octets.size()};
}

/// Written when it would be heard, so that it is cut short as a loudspeaker is. What a reader does not take
/// waits, unheard.
class FichierSortie final : public SortieSon {
 public:
  explicit FichierSortie(int fd) : fd_(fd) { ecrire(entete(UINT32_MAX)); }
  ~FichierSortie() override {
    passer(attente_.size());
    if (::lseek(fd_, 0, SEEK_SET) == 0)
      ecrireTout(fd_, entete(static_cast<std::uint32_t>(std::min<std::size_t>(ecrits_, UINT32_MAX))));
    ::close(fd_);
  }
  FichierSortie(const FichierSortie&) = delete;
  FichierSortie& operator=(const FichierSortie&) = delete;

  std::size_t place(Montre::time_point maintenant) override {
    // What is due has been heard.
    const auto dus = std::min(debit_.permis(maintenant, frequenceVoix), attente_.size() / 2);
    if (dus > 0) {
      debit_.passer(dus);
      if (passer(dus * 2) < dus * 2) debit_ = Debit(false);
    }
    if (attente_.empty()) debit_ = Debit(false);  // time without sound is no credit
    return avance - std::min(avance, attente_.size() / 2);
  }
  void verser(std::span<const float> mono) override {
    const Octets pcm = RealtimeAudio::floatsToPCM16(mono);
    attente_.insert(attente_.end(), pcm.begin(), pcm.end());
  }
  void finir() override {}
  void vider() override { attente_.clear(); }
  std::size_t enAttente() const override { return attente_.size() / 2; }
  std::optional<std::string> panne() const override {
    const int erreur = erreur_;
    return erreur == 0 ? std::nullopt
                       : std::optional("Le son ne peut plus être écrit : " + raisonEcriture(erreur) + ".");
  }

 private:
  static constexpr std::size_t avance = frequenceVoix / 20;

  void ecrire(std::string_view octets) {
    if (!ecrireTout(fd_, octets) && erreur_ == 0) erreur_ = errno;
  }
  /// The first so many bytes of what waits, or what can be written of them without waiting; how many.
  std::size_t passer(std::size_t octets) {
    std::size_t passes = 0;
    for (pollfd fd{fd_, POLLOUT, 0}; passes < octets && ::poll(&fd, 1, 0) == 1;) {
      const auto pris = std::min<std::size_t>(octets - passes, _POSIX_PIPE_BUF);
      ecrire(texte(attente_).substr(passes, pris));
      passes += pris;
    }
    attente_.erase(attente_.begin(), attente_.begin() + static_cast<std::ptrdiff_t>(passes));
    ecrits_ += passes;
    return passes;
  }

  const int fd_;
  Octets attente_;
  Debit debit_{false};
  std::size_t ecrits_ = 0;
  std::atomic<int> erreur_ = 0;
};

}  // namespace

Resultat<std::unique_ptr<SortieSon>, std::string> ouvrirSortie(const std::string& chemin) {
  const bool tube = chemin == "-";
  if (tube && ::isatty(STDOUT_FILENO) == 1)
    return Sinon{std::string("La sortie standard est un terminal : le son veut un tube ou un fichier.")};
  const int fd =
      tube ? ::dup(STDOUT_FILENO) : ::open(chemin.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0)
    return Sinon{(tube ? "La sortie standard" : "« " + Inoffensif::montrable(chemin) + " »") +
                 " ne peut pas être ouvert en écriture : " + raisonEcriture(errno) + "."};
  return std::unique_ptr<SortieSon>(std::make_unique<FichierSortie>(fd));
}

}  // namespace tarnavelle::Voix
