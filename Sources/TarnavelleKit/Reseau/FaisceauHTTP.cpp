#include "Reseau/FaisceauHTTP.hpp"

#include <algorithm>
#include <atomic>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

#include "Socle/Selon.hpp"
#include "VoieInterne.hpp"

namespace tarnavelle {

using namespace interne;

/// What the thread and the callers share stands behind one lock, held neither while a request is sent nor while
/// `fini` runs.
class FaisceauHTTP::Moteur {
 public:
  Moteur(std::chrono::milliseconds cadence, std::function<void()> battement)
      : cadence_(cadence), battement_(std::move(battement)) {}

  ~Moteur() {
    {
      const std::lock_guard garde(verrou_);
      finie_ = true;
    }
    boucle_.stop();
    aTourner_.notify_one();
    if (fil_.joinable()) fil_.join();
  }

  Numero lancer(RequeteHTTP requete, const BornesHTTP& bornes, Fini fini, std::optional<int> reveil) {
    const auto debut = Horloge::now();
    const Numero numero = ++dernier_;
    try {
      const std::lock_guard garde(verrou_);
      if (vols_.empty()) prochainBattement_ = debut + cadence_;
      Vol& vol = vols_[numero];
      vol.requete = std::make_shared<const RequeteHTTP>(std::move(requete));
      vol.corpsMax = bornes.corpsMax;
      vol.fini = std::move(fini);
      vol.attente = debut + bornes.attente;
      vol.vie = debut + std::max(bornes.vie, bornes.attente);
      if (!fil_.joinable()) fil_ = std::thread([this] { tourner(); });
    } catch (const std::exception&) {  // no memory or thread to be had
      echouer(numero, false);
      return numero;
    }
    partir(numero, reveil);
    try {
      confier(numero);
    } catch (const std::exception&) {  // memory ran out
      echouer(numero, true);
    }
    return numero;
  }

  void abandonner(Numero numero) {
    const std::lock_guard garde(verrou_);
    const auto vol = vols_.find(numero);
    if (vol != vols_.end()) abandonner(vol);
  }

 private:
  using Horloge = Voie::Horloge;

  /// One request under way.
  struct Vol {
    std::shared_ptr<const RequeteHTTP> requete;
    std::size_t corpsMax = 0;
    Fini fini;  ///< none once its caller waits no more
    Horloge::time_point attente, vie;
    std::shared_ptr<Voie> voie;
    bool reprise = false;     ///< on a kept connection
    bool enDepart = true;     ///< a thread is about to send it
    bool abandonnee = false;  ///< meanwhile
  };
  using Vols = std::map<Numero, Vol>;

  /// The thread. It leaves the loop when nothing is under way there: one that waits in it is woken by each
  /// reply that a caller waits for by itself, too.
  void tourner() {
    std::unique_lock garde(verrou_);
    while (true) {
      aTourner_.wait(garde, [this] { return aFaire_ || finie_; });
      if (finie_) return;
      aFaire_ = false;
      boucle_.restart();
      garde.unlock();
      while (!boucle_.stopped()) {
        try {
          boucle_.run();
        } catch (const std::exception&) {  // memory ran out for what a reply gave rise to: the others go on
        }
      }
      garde.lock();
    }
  }

  /// After something was given to the loop.
  void reveiller() {
    aFaire_ = true;
    aTourner_.notify_one();
  }

  /// Leaves what is still under way to the thread, and to its alarm.
  void confier(Numero numero) {
    const std::lock_guard garde(verrou_);
    const auto vol = vols_.find(numero);
    if (vol == vols_.end()) return;
    reveiller();
    sonnerAu(premierSigne(vol->second));
  }

  Horloge::time_point premierSigne(const Vol& vol) const {
    return battement_ ? std::min(vol.attente, prochainBattement_) : vol.attente;
  }

  void retirer(Vols::iterator vol) {
    vols_.erase(vol);
    if (!vols_.empty() || !alarme_) return;
    alarme_.reset();
    minuterie_.cancel();
  }

  void abandonner(Vols::iterator vol) {
    vol->second.fini = nullptr;
    vol->second.abandonnee = true;
    if (vol->second.enDepart) return;  // it ends once it has left
    if (auto voie = std::move(vol->second.voie)) asio::post(boucle_, [voie] { voie->abandonner(); });
    reveiller();
    retirer(vol);
  }

  /// There was not what it takes to begin it, or to see to its end.
  void echouer(Numero numero, bool partie) {
    Fini fini;
    {
      const std::lock_guard garde(verrou_);
      const auto vol = vols_.find(numero);
      if (vol == vols_.end()) return;
      fini = std::move(vol->second.fini);
      retirer(vol);
    }
    if (fini) fini(Sinon{EchecHTTP{ErreurReseau::autre, partie}});
  }

  /// Sends it, on a kept connection or else a new one.
  void partir(Numero numero, std::optional<int> reveil = {}) {
    try {
      if (const auto faute = envoyer(numero, reveil))
        asio::post(boucle_, [this, numero, faute] { juger(numero, {Issue::rienParti{*faute}}); });
    } catch (const std::exception&) {  // memory or descriptors ran out
      asio::post(boucle_, [this, numero] { juger(numero, {Issue::rienParti{ErreurReseau::autre}}); });
    }
    const std::lock_guard garde(verrou_);
    const auto vol = vols_.find(numero);
    if (vol == vols_.end()) return;
    vol->second.enDepart = false;
    if (vol->second.abandonnee) abandonner(vol);
  }

  std::optional<EchecHTTP::Faute> envoyer(Numero numero, std::optional<int> reveil) {
    std::shared_ptr<Voie> voie;
    std::shared_ptr<const RequeteHTTP> requete;
    std::optional<Adresse> adresse;
    std::size_t corpsMax = 0;
    Horloge::time_point patience;
    {
      const std::lock_guard garde(verrou_);
      const auto trouve = vols_.find(numero);
      if (trouve == vols_.end()) return std::nullopt;
      Vol& vol = trouve->second;
      requete = vol.requete;
      corpsMax = vol.corpsMax;
      if (reveil) patience = premierSigne(vol);
      const bool deNouveau = std::exchange(vol.reprise, false);
      if (!envoyable(*requete)) return EchecHTTP::Faute::entete;
      const Adresse* vers = reserve_.viser(requete->url);
      if (!vers) return EchecHTTP::Faute::url;
      adresse = *vers;
      if (!deNouveau) voie = reserve_.prendre();
      vol.reprise = voie != nullptr;
      if (!voie) voie = Voie::partagee(boucle_, adresse->tls);
      vol.voie = voie;
    }
    const auto juge = [this, numero](Issue issue) { juger(numero, std::move(issue)); };
    if (reveil)
      voie->entamer(*requete, *adresse, corpsMax, patience, juge, *reveil);
    else  // told by a turn of its own: who hears of it may well send the next one
      voie->entamer(*requete, *adresse, corpsMax, patience, [this, juge](Issue issue) {
        asio::post(boucle_, [juge, issue = std::move(issue)]() mutable { juge(std::move(issue)); });
      });
    return std::nullopt;
  }

  /// What became of it.
  void juger(Numero numero, Issue issue) {
    Fini fini;
    {
      const std::lock_guard garde(verrou_);
      const auto trouve = vols_.find(numero);
      if (trouve == vols_.end()) return;
      Vol& vol = trouve->second;
      auto voie = std::exchange(vol.voie, nullptr);
      const auto* perdu = std::get_if<Issue::perdu>(&issue.cas);
      if (perdu && vol.reprise && perdu->muet) reserve_.nePlusGarder(vol.requete->url);
      if (std::holds_alternative<Issue::repondu>(issue.cas)) reserve_.rendre(std::move(voie), vol.requete->url);
      // A kept connection that was already dead leaves the request whole in our hands.
      const bool encore = vol.reprise && !vol.abandonnee && std::holds_alternative<Issue::rienParti>(issue.cas);
      if (!encore) {
        fini = std::move(vol.fini);
        retirer(trouve);
      } else {
        asio::post(boucle_, [this, numero] { partir(numero); });
      }
    }
    if (fini) fini(rendu(std::move(issue)));
  }

  static Rendu rendu(Issue issue) {
    return std::visit(Selon{
                          [](Issue::repondu& r) { return Rendu(std::move(r.reponse)); },
                          [](Issue::enCours&) { return Rendu(Sinon{EchecHTTP{ErreurReseau::autre}}); },
                          [](Issue::rienParti& r) {
                            return Rendu(Sinon{EchecHTTP{r.cause, false}});
                          },
                          [](Issue::perdu& p) {
                            return Rendu(Sinon{EchecHTTP{p.cause, true}});
                          },
                      },
                      issue.cas);
  }

  /// Has the alarm ring then at the latest. One set for earlier stays, so that not every request sets one.
  void sonnerAu(Horloge::time_point terme) {
    if (alarme_ && *alarme_ <= terme) return;
    alarme_ = terme;
    minuterie_.expires_at(terme);
    minuterie_.async_wait([this](Erreur erreur) {
      if (!erreur) sonner();
    });
  }

  void sonner() {
    std::vector<Fini> perdus;
    bool battre = false;
    {
      const std::lock_guard garde(verrou_);
      alarme_.reset();
      const auto maintenant = Horloge::now();
      for (auto vol = vols_.begin(); vol != vols_.end();) {
        Vol& v = vol->second;
        if (v.fini && maintenant >= v.attente) perdus.push_back(std::exchange(v.fini, nullptr));
        const auto celui = vol++;
        if (maintenant >= v.vie && !v.abandonnee)
          abandonner(celui);
        else if (!v.abandonnee)
          sonnerAu(v.fini ? v.attente : v.vie);
      }
      if (battement_ && !vols_.empty()) {
        battre = maintenant >= prochainBattement_;
        if (battre) prochainBattement_ = maintenant + cadence_;
        sonnerAu(prochainBattement_);
      }
    }
    for (const Fini& fini : perdus) fini(Sinon{EchecHTTP{ErreurReseau::delaiDepasse}});
    if (battre) battement_();
  }

  asio::io_context boucle_{1};
  std::mutex verrou_;
  std::condition_variable aTourner_;
  bool aFaire_ = false;  ///< in the loop
  bool finie_ = false;
  std::thread fil_;
  Reserve<std::shared_ptr<Voie>> reserve_;
  Vols vols_;
  std::atomic<Numero> dernier_ = 0;
  asio::steady_timer minuterie_{boucle_};
  std::optional<Horloge::time_point> alarme_;  ///< when it rings
  const std::chrono::milliseconds cadence_;
  const std::function<void()> battement_;
  Horloge::time_point prochainBattement_;
};

FaisceauHTTP::FaisceauHTTP(std::chrono::milliseconds cadence, std::function<void()> battement)
    : moteur_(std::make_unique<Moteur>(cadence, std::move(battement))) {}
FaisceauHTTP::~FaisceauHTTP() = default;

FaisceauHTTP::Numero FaisceauHTTP::lancer(RequeteHTTP requete, const BornesHTTP& bornes, Fini fini,
                                          std::optional<int> reveil) {
  return moteur_->lancer(std::move(requete), bornes, std::move(fini), reveil);
}

void FaisceauHTTP::abandonner(Numero numero) { moteur_->abandonner(numero); }

}  // namespace tarnavelle
