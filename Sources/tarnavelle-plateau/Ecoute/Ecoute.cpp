#include "Ecoute/Ecoute.hpp"

#include <chrono>
#include <cmath>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

#include "Hermes/ReglagesHermes.hpp"
#include "HermesReseau/EcouteNtfy.hpp"
#include "Socle/Selon.hpp"

namespace tarnavelle::Plateau {
namespace {

using Secondes = OreilleNtfy::Secondes;

constexpr std::size_t enAttenteMax = 1000;  ///< notices that the registry could not take yet

Date::Instant maintenant() {
  return std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
}

std::string canalDe(const ReglageNtfy& ntfy) {
  return empreinteTexte(std::string(ntfy.serveurNet()) + " " + std::string(ntfy.topicNet()));
}

std::string phrase(const EchecNtfy& echec) {
  return std::visit(
      Selon{[](const EchecNtfy::http& e) { return "HTTP " + std::to_string(e.statut); },
            [](const EchecNtfy::transport& e) { return e.phrase; },
            [](const EchecNtfy::flotEnLoques&) { return std::string("le flux s'est interrompu"); }},
      echec.cas);
}

}  // namespace

class Ecoute::Corps {
 public:
  Corps(Registre& registre, ReglagesEcoute reglages)
      : registre_(registre),
        reglages_(std::move(reglages)),
        canal_(canalDe(reglages_.ntfy)),
        partage_(reglages_.alertes.pret() && canalDe(reglages_.alertes) == canal_),
        ecoute_({.surMessage = [this](const MessageNtfy& message) { recevoir(message); },
                 .surEtat = [this](const OreilleNtfy::Etat& etat) { suivre(etat); },
                 .surSigne = [this] { deposer(); }}) {}

  ~Corps() {
    ecoute_.arreter();
    if (fil_.joinable()) fil_.join();
  }

  void demarrer() {
    if (reglages_.ntfy.topicNet().empty() || fil_.joinable()) return;
    if (const auto refus = reglages_.ntfy.refus()) return finir(*refus);
    if (partage_)
      reglages_.dire("Les alertes du plateau et les avis d'Hermès ont le même topic : ce qui y est titré « " +
                     std::string(ReglagesHermes::titreAlertes) + " » n'est pas relu comme un avis.");
    fil_ = std::thread([this] { ecouter(); });
  }

  std::string dit() const {
    const std::lock_guard verrou(verrou_);
    return dit_;
  }

 private:
  void ecouter() {
    OreilleNtfy::Souvenir souvenir;
    if (auto avant = registre_.ecoute(canal_)) {
      souvenir.ids = std::move(avant->ids);
      if (avant->jusque) {
        const Secondes age = maintenant() - *avant->jusque;
        // A calendar that was set back says nothing: as far as one can ask.
        souvenir.age = age < Secondes(0) ? AbonnementNtfy::rattrapageMax : age;
      }
    }
    const auto fin = ecoute_.ecouter(reglages_.ntfy, {}, souvenir);
    deposer();
    noter();
    if (const auto* abandon = std::get_if<OreilleNtfy::Fin::abandonnee>(&fin.cas)) finir(abandon->message);
  }

  void recevoir(const MessageNtfy& message) {
    // Later ones wait behind it: the order is theirs.
    if (enAttente_.size() < enAttenteMax)
      enAttente_.push_back(message);
    else if (!std::exchange(deborde_, true))
      reglages_.dire(
          "Trop d'avis d'Hermès attendent d'être notés. Les suivants restent chez le serveur : le prochain "
          "lancement du plateau les redemande.");
  }

  /// What waits goes into the registry, each notice in one step with its id. The last sign moves on with the
  /// last of them only: whoever dies before asks again for those that were not written.
  void deposer() {
    bool neuf = false;
    while (!enAttente_.empty()) {
      const MessageNtfy& m = enAttente_.front();
      const auto fait =
          registre_.entendre({.id = m.id,
                              .avis = {.titre = m.titre.value_or(""), .texte = m.texte, .quand = m.date},
                              .canal = canal_,
                              .jusque = enAttente_.size() == 1 ? jusque() : std::nullopt,
                              .aMontrer = !partage_ || m.titre != ReglagesHermes::titreAlertes});
      if (!fait) {
        if (!std::exchange(plainte_, true))
          reglages_.dire("Les avis d'Hermès attendent d'être notés : " + fait.raison().phrase);
        break;
      }
      plainte_ = false;
      neuf = neuf || *fait;
      enAttente_.pop_front();
    }
    if (neuf) reglages_.change();
  }

  /// Up to when all has come, on the calendar.
  std::optional<Date::Instant> jusque() const {
    const auto age = ecoute_.souvenir().age;
    if (deborde_ || !age || !std::isfinite(age->count())) return std::nullopt;
    return maintenant() - std::chrono::ceil<std::chrono::milliseconds>(*age);
  }

  void noter() {
    if (const auto quand = jusque(); quand && enAttente_.empty()) registre_.noterEcoute(canal_, *quand);
  }

  void suivre(const OreilleNtfy::Etat& etat) {
    std::visit(Selon{[&](const OreilleNtfy::Etat::connexion&) {},
                     [&](const OreilleNtfy::Etat::ouverte&) {
                       dire("écoute");
                       deposer();
                       noter();
                     },
                     [&](const OreilleNtfy::Etat::ligneSautee&) {
                       reglages_.dire("Un avis d'Hermès plus long que tout avis a été passé.");
                     },
                     [&](const OreilleNtfy::Etat::attente& a) {
                       dire("n'entend rien (" + phrase(a.echec) + "), nouvel essai dans " +
                            std::to_string(std::lround(std::ceil(a.recul.count()))) + " s");
                     }},
               etat.cas);
  }

  void finir(const std::string& pourquoi) {
    dire("fermée : " + pourquoi);
    reglages_.dire(pourquoi);
  }

  void dire(std::string quoi) {
    {
      const std::lock_guard verrou(verrou_);
      if (dit_ == quoi) return;
      dit_ = std::move(quoi);
    }
    reglages_.change();
  }

  Registre& registre_;
  const ReglagesEcoute reglages_;
  const std::string canal_;
  const bool partage_;  ///< with the board's alerts
  EcouteNtfy ecoute_;

  // The ear's thread's own.
  std::deque<MessageNtfy> enAttente_;
  bool plainte_ = false;
  bool deborde_ = false;  ///< some were left to the server: the last sign stays where it is

  mutable std::mutex verrou_;
  std::string dit_;
  std::thread fil_;
};

Ecoute::Ecoute(Registre& registre, ReglagesEcoute reglages)
    : corps_(std::make_unique<Corps>(registre, std::move(reglages))) {}
Ecoute::~Ecoute() = default;
void Ecoute::demarrer() { corps_->demarrer(); }
std::string Ecoute::dit() const { return corps_->dit(); }

}  // namespace tarnavelle::Plateau
