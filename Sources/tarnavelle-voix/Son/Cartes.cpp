#include "Son/Cartes.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <thread>
#include <utility>

#include "BoutCarte.hpp"
#include "Reechantillonnage/Reechantillonneur.hpp"
#include "Socle/Inoffensif.hpp"

namespace tarnavelle::Voix {
namespace {

using namespace std::chrono_literals;

constexpr auto ronde = 100ms;   ///< between two looks at the devices
constexpr auto reculMax = 10s;  ///< between two attempts to open them again
constexpr auto adieuMax = 1s;   ///< for a device to let go when the program leaves

std::string nommer(const BoutCarte& bout, bool enTete) {
  const std::string quoi = bout.sens == Sens::micro ? "e micro" : "e haut-parleur";
  const std::string nom = bout.nom.empty() ? bout.voulu : bout.nom;
  return (enTete ? "L" : "l") + quoi + (nom.empty() ? "" : " « " + Inoffensif::montrable(nom) + " »");
}

std::string remede(const BoutCarte& bout) {
  const bool ecoute = bout.sens == Sens::micro;
  return std::string("« tarnavelle-voix --peripheriques » dit ce que voit cette machine ; ") +
         (ecoute ? "--micro" : "--haut-parleur") + " en choisit un, " + (ecoute ? "--entree" : "--sortie") +
         " s'en passe par un fichier.";
}

}  // namespace

struct Cartes::Interne : std::enable_shared_from_this<Interne> {
  Reglages reglages;
  std::unique_ptr<BoutCarte> micro, hautParleur;

  std::mutex verrou;
  std::condition_variable change;
  bool arret = false;
  bool eteint = false;

  std::array<BoutCarte*, 2> bouts() const { return {micro.get(), hautParleur.get()}; }

  /// All of them, or none.
  std::optional<Refus> ouvrir() {
    if (Pa_Initialize() != paNoError)
      return Refus{"Le système de son de cette machine ne répond pas.", "Vérifiez qu'il marche ailleurs."};
    for (BoutCarte* bout : bouts()) {
      if (!bout) continue;
      if (!trouver(bout->sens, bout->voulu)) {
        Refus refus{bout->voulu.empty()
                        ? std::string(bout->sens == Sens::micro ? "Aucun micro n'est branché."
                                                                : "Aucun haut-parleur n'est branché.")
                        : nommer(*bout, true) + " n'est pas là.",
                    remede(*bout)};
        fermer();
        return refus;
      }
      if (const auto pourquoi = bout->ouvrir()) {
        Refus refus{nommer(*bout, true) + " ne s'ouvre pas (" + Inoffensif::montrable(*pourquoi) +
                        ") : un autre programme l'occupe peut-être.",
                    remede(*bout)};
        fermer();
        return refus;
      }
    }
    return std::nullopt;
  }

  void fermer() {
    for (BoutCarte* bout : bouts())
      if (bout) bout->fermer();
    Pa_Terminate();
  }

  bool attendre(std::chrono::milliseconds duree) {
    std::unique_lock verrouille(verrou);
    return change.wait_for(verrouille, duree, [this] { return arret; });
  }

  /// The one that has given no sign of life for too long; null while all is well.
  BoutCarte* perdu(std::array<std::pair<std::uint64_t, Montre::time_point>, 2>& vus) const {
    const auto maintenant = Montre::now();
    const auto tous = bouts();
    for (std::size_t i = 0; i < tous.size(); ++i) {
      if (!tous[i]) continue;
      const auto battements = tous[i]->battements.load(std::memory_order_relaxed);
      if (battements != vus[i].first || vus[i].second == Montre::time_point{})
        vus[i] = {battements, maintenant};
      if (Pa_IsStreamActive(tous[i]->flux) != 1 || maintenant - vus[i].second > calageMax) return tous[i];
    }
    return nullptr;
  }

  void garder() {
    std::array<std::pair<std::uint64_t, Montre::time_point>, 2> vus{};
    while (!attendre(ronde)) {
      BoutCarte* parti = perdu(vus);
      if (!parti) continue;
      reglages.dire(nommer(*parti, true) + " ne répond plus.",
                    "Il est peut-être débranché : la voix reprend dès qu'il revient.");
      // Devices are counted afresh only when all of them are let go.
      fermer();
      for (auto recul = std::chrono::milliseconds(500);;
           recul = std::min<std::chrono::milliseconds>(recul * 2, reculMax)) {
        if (attendre(recul)) return quitter();
        if (!ouvrir()) break;
      }
      vus = {};
      reglages.dire("Le son est revenu.", "");
    }
    fermer();
    quitter();
  }

  void quitter() {
    const std::lock_guard verrouille(verrou);
    eteint = true;
    change.notify_all();
  }
};

namespace {

/// What both kinds of end share: the rate of the device that is there now.
class Suivi {
 public:
  /// Whether a device is there; anew, when it is another one than at the last call.
  bool la(const BoutCarte& bout, bool& neuf) {
    const auto ouvertures = bout.ouvertures.load();
    frequence_ = bout.frequence;
    neuf = std::exchange(vues_, ouvertures) != ouvertures;
    return frequence_ > 0;
  }
  double frequence() const { return frequence_; }

 private:
  std::uint64_t vues_ = 0;
  int frequence_ = 0;
};

}  // namespace

class MicroCarte final : public EntreeSon {
 public:
  MicroCarte(std::shared_ptr<void> garde, BoutCarte& bout) : garde_(std::move(garde)), bout_(bout) {}

  void puiser(std::vector<float>& mono, Montre::time_point maintenant) override {
    bool neuf = false;
    if (!suivi_.la(bout_, neuf)) return;
    if (neuf) passeur_ = Reechantillonneur::creer({.entree = suivi_.frequence(), .sortie = frequenceVoix});
    const auto permis = debit_.permis(maintenant, suivi_.frequence() * Debit::ecartMax);
    lus_.resize(permis);
    const auto lus = bout_.anneau.lire(lus_);
    debit_.passer(lus);
    // What could not be heard in its time would make all that follows late.
    if (static_cast<double>(bout_.anneau.enAttente()) > retardMax.count() * suivi_.frequence())
      bout_.anneau.sauter();
    if (passeur_) passeur_->passer(std::span(lus_).first(lus), mono);
  }

 private:
  static constexpr std::chrono::duration<double> retardMax{0.1};

  const std::shared_ptr<void> garde_;
  BoutCarte& bout_;
  Suivi suivi_;
  Debit debit_{true};
  std::optional<Reechantillonneur> passeur_;
  std::vector<float> lus_;
};

class HautParleurCarte final : public SortieSon {
 public:
  HautParleurCarte(std::shared_ptr<void> garde, BoutCarte& bout) : garde_(std::move(garde)), bout_(bout) {}

  std::size_t place(Montre::time_point maintenant) override {
    bool neuf = false;
    la_ = suivi_.la(bout_, neuf);
    if (neuf) {
      passeur_ = Reechantillonneur::creer({.entree = frequenceVoix, .sortie = suivi_.frequence()});
      bout_.anneau.abandonner();
    }
    const auto permis = debit_.permis(maintenant, frequenceVoix * Debit::ecartMax);
    if (!la_) return permis;
    const auto attend = enAttente();
    return std::min(permis, avance - std::min(avance, attend));
  }
  void verser(std::span<const float> mono) override {
    debit_.passer(mono.size());
    if (!la_ || !passeur_) return;
    passeur_->passer(mono, dits_);
    pousser();
  }
  void finir() override {
    if (!la_ || !passeur_) return;
    passeur_->finir(dits_);
    pousser();
  }
  void vider() override {
    bout_.anneau.abandonner();
    if (passeur_) passeur_->vider();
  }
  std::size_t enAttente() const override {
    const double f = suivi_.frequence();
    return f > 0 ? static_cast<std::size_t>(static_cast<double>(bout_.anneau.enAttente()) * frequenceVoix / f)
                 : 0;
  }

 private:
  /// Kept ready for the device: what a busy machine may be late by.
  static constexpr std::size_t avance = frequenceVoix * 60 / 1000;

  void pousser() {
    bout_.anneau.ecrire(dits_);
    dits_.clear();
  }

  const std::shared_ptr<void> garde_;
  BoutCarte& bout_;
  Suivi suivi_;
  Debit debit_{true};
  std::optional<Reechantillonneur> passeur_;
  std::vector<float> dits_;
  bool la_ = false;
};

Resultat<std::shared_ptr<Cartes>, Cartes::Refus> Cartes::ouvrir(Reglages reglages) {
  auto interne = std::make_shared<Interne>();
  if (reglages.micro) interne->micro = std::make_unique<BoutCarte>(Sens::micro, *reglages.micro);
  if (reglages.hautParleur)
    interne->hautParleur = std::make_unique<BoutCarte>(Sens::hautParleur, *reglages.hautParleur);
  interne->reglages = std::move(reglages);
  if (auto refus = interne->ouvrir()) return Sinon{*std::move(refus)};
  std::thread([interne] { interne->garder(); }).detach();
  return std::shared_ptr<Cartes>(new Cartes(std::move(interne)));
}

Cartes::~Cartes() {
  std::unique_lock verrou(interne_->verrou);
  interne_->arret = true;
  interne_->change.notify_all();
  interne_->change.wait_for(verrou, adieuMax, [this] { return interne_->eteint; });
}

std::unique_ptr<EntreeSon> Cartes::micro() {
  return interne_->micro ? std::make_unique<MicroCarte>(interne_, *interne_->micro) : nullptr;
}

std::unique_ptr<SortieSon> Cartes::hautParleur() {
  return interne_->hautParleur ? std::make_unique<HautParleurCarte>(interne_, *interne_->hautParleur) : nullptr;
}

namespace {

constexpr std::string_view tombe =
    "tarnavelle-voix : le système de son de cette machine a fait tomber le programme. "
    "--entree et --sortie s'en passent, par des fichiers.\n";
int dernieresParoles = STDERR_FILENO;

/// PortAudio ends the process where it finds no sound system at all.
void surAbandon(int) {
  static_cast<void>(!::write(dernieresParoles, tombe.data(), tombe.size()));
  ::_exit(2);
}

}  // namespace

int isolerErreurs() {
  // So that no sound server is started by a look.
  ::setenv("JACK_NO_START_SERVER", "1", 0);
  const int erreurs = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
  const int nullePart = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (erreurs < 0 || nullePart < 0) return STDERR_FILENO;
  ::dup2(nullePart, STDERR_FILENO);
  ::close(nullePart);
  dernieresParoles = erreurs;
  std::signal(SIGABRT, surAbandon);
  return erreurs;
}

std::vector<Peripherique> peripheriques() {
  std::vector<Peripherique> liste;
  if (Pa_Initialize() != paNoError) return liste;
  for (PaDeviceIndex i = 0; i < Pa_GetDeviceCount(); ++i) {
    const PaDeviceInfo* info = Pa_GetDeviceInfo(i);
    const PaHostApiInfo* systeme = info ? Pa_GetHostApiInfo(info->hostApi) : nullptr;
    if (!systeme) continue;
    liste.push_back({.numero = i,
                     .nom = info->name,
                     .systeme = systeme->name,
                     .voiesEntree = info->maxInputChannels,
                     .voiesSortie = info->maxOutputChannels,
                     .frequence = info->defaultSampleRate,
                     .microUsuel = i == Pa_GetDefaultInputDevice(),
                     .hautParleurUsuel = i == Pa_GetDefaultOutputDevice()});
  }
  Pa_Terminate();
  return liste;
}

}  // namespace tarnavelle::Voix
