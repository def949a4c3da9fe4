#include <fcntl.h>
#include <sndfile.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <thread>
#include <utility>

#include "Reechantillonnage/Reechantillonneur.hpp"
#include "Socle/Inoffensif.hpp"
#include "Son/AnneauSon.hpp"
#include "Son/Fichiers.hpp"

namespace tarnavelle::Voix {
namespace {

using namespace std::chrono_literals;

/// What the thread that reads shares with the one that hears. It outlives the latter: a read of a pipe can't be
/// cut short.
struct Lecture {
  Lecture(SNDFILE* f, const SF_INFO& i) : fichier(f), info(i) {}
  ~Lecture() { ::sf_close(fichier); }
  Lecture(const Lecture&) = delete;
  Lecture& operator=(const Lecture&) = delete;

  SNDFILE* fichier;
  const SF_INFO info;
  AnneauSon anneau{frequenceVoix};  ///< a second ahead
  std::atomic<bool> lue = false;
  std::atomic<bool> arret = false;
};

void lire(const std::shared_ptr<Lecture>& l, Reechantillonneur reechantillonneur) {
  std::vector<float> trames(static_cast<std::size_t>(l->info.samplerate / 50 * l->info.channels));
  std::vector<float> mono;
  const auto passer = [&] {
    std::span<const float> reste = mono;
    while (!reste.empty() && !l->arret) {
      reste = reste.subspan(l->anneau.ecrire(reste));
      if (!reste.empty()) std::this_thread::sleep_for(20ms);
    }
    mono.clear();
  };
  while (!l->arret) {
    const auto lues = ::sf_read_float(l->fichier, trames.data(), static_cast<sf_count_t>(trames.size()));
    if (lues <= 0) break;
    reechantillonneur.passer(std::span(trames).first(static_cast<std::size_t>(lues)), mono);
    passer();
  }
  reechantillonneur.finir(mono);
  passer();
  l->lue = true;
}

class FichierEntree final : public EntreeSon {
 public:
  FichierEntree(std::shared_ptr<Lecture> lecture, Reechantillonneur reechantillonneur)
      : lecture_(std::move(lecture)) {
    std::thread(lire, lecture_, std::move(reechantillonneur)).detach();
  }
  ~FichierEntree() override { lecture_->arret = true; }
  FichierEntree(const FichierEntree&) = delete;
  FichierEntree& operator=(const FichierEntree&) = delete;

  /// What is to be heard by now; silence once it is over, for who waits to hear some before he answers.
  void puiser(std::vector<float>& mono, Montre::time_point maintenant) override {
    const auto permis = debit_.permis(maintenant, frequenceVoix);
    const auto avant = mono.size();
    mono.resize(avant + permis);
    const auto lus = lecture_->anneau.lire(std::span(mono).subspan(avant));
    if (lus < permis && lecture_->lue && lecture_->anneau.enAttente() == 0) finie_ = true;
    const auto gardes = finie_ ? permis : lus;
    mono.resize(avant + gardes);
    debit_.passer(permis);  // a pipe that is late is late for good
  }
  bool finie() const override { return finie_; }

 private:
  const std::shared_ptr<Lecture> lecture_;
  Debit debit_{false};
  bool finie_ = false;
};

}  // namespace

Resultat<std::unique_ptr<EntreeSon>, std::string> ouvrirEntree(const std::string& chemin) {
  const bool tube = chemin == "-";
  if (tube && ::isatty(STDIN_FILENO) == 1)
    return Sinon{std::string("L'entrée standard est un terminal : le son vient d'un tube ou d'un fichier.")};
  const std::string nomme = tube ? "L'entrée standard" : "« " + Inoffensif::montrable(chemin) + " »";
  const int fd = tube ? ::dup(STDIN_FILENO) : ::open(chemin.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return Sinon{nomme + (errno == ENOENT ? " n'existe pas." : " ne peut pas être lu.")};
  SF_INFO info{};
  SNDFILE* fichier = ::sf_open_fd(fd, SFM_READ, &info, SF_TRUE);
  if (!fichier) {
    ::close(fd);  // harmless where the library did
    return Sinon{nomme + " n'est pas un son lisible : il faut du WAV (ou FLAC, OGG, AIFF)."};
  }
  auto lecture = std::make_shared<Lecture>(fichier, info);
  auto reechantillonneur = Reechantillonneur::creer({.entree = static_cast<double>(info.samplerate),
                                                     .sortie = frequenceVoix,
                                                     .voiesEntree = info.channels,
                                                     .voiesSortie = 1});
  if (!reechantillonneur)
    return Sinon{nomme + " est à " + std::to_string(info.samplerate) + " Hz sur " +
                 std::to_string(info.channels) + " voies : il faut de 8 à 192 kHz, et 64 voies au plus."};
  return std::unique_ptr<EntreeSon>(
      std::make_unique<FichierEntree>(std::move(lecture), *std::move(reechantillonneur)));
}

}  // namespace tarnavelle::Voix
