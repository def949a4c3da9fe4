#include "Hotes/SecondMac.hpp"

#include <algorithm>
#include <array>
#include <utility>

#include "Porte/PorteDistante.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::duration<double> fraicheurPorte{30};  ///< of what its endpoint file said
constexpr auto fraicheurVue = 5s;                            ///< of what its board showed
constexpr auto attenteMax = 1s;                              ///< of who wants to see it and knows nothing yet
constexpr auto attenteConnue = 300ms;                        ///< of who can be told what was known
constexpr auto ordreMax = 7s;                                ///< for a line over there: curl takes five of them

// What curl's exit status tells. https://curl.se/docs/manpage.html
constexpr std::array rienEnvoye = {1, 2, 3, 5, 6, 7};  ///< it had no connection to send anything on
constexpr int horsDelai = 28;
constexpr int sansProgramme = 127;  ///< the shell's

/// Whether a link failed before any line of ours could run over there.
bool avantLaLigne(PanneSSH::Cause cause) {
  using Cause = PanneSSH::Cause;
  return cause != Cause::coupe && cause != Cause::horsDelai && cause != Cause::autre;
}

}  // namespace

SecondMac::SecondMac(std::string hote, Courir courir)
    : hote_(std::move(hote)), courir_(std::move(courir)), fil_([this] { lire(); }) {}

SecondMac::~SecondMac() {
  arreter();
  fil_.join();
}

void SecondMac::arreter() {
  const std::lock_guard verrou(mutex_);
  arret_ = true;
  reveil_.notify_all();
}

std::string SecondMac::citation() const { return "« " + Inoffensif::epurer(hote_) + " »"; }

Resultat<SortieSSH, PanneSSH> SecondMac::executer(const std::string& ligne) {
  return courir_({.ligne = ligne, .auPlus = ordreMax, .arret = [this] { return arret_.load(); }});
}

Resultat<EndpointPorte, std::string> SecondMac::trouver() {
  {
    const std::lock_guard verrou(mutex_);
    if (!PorteDistante::doitDecouvrir(porte_, Montre::now() - porteLe_, echec_, fraicheurPorte)) return *porte_;
  }
  const auto lu = executer(PorteDistante::commandeLecture());
  if (!lu) return Sinon{lu.raison().phrase};
  if (Texte::rogner(lu->sortie).empty())
    return Sinon{"Le cockpit de " + citation() + " n'annonce aucune porte : il n'y est pas ouvert."};
  const auto porte = PorteDistante::analyserEndpoint(lu->sortie);
  if (!porte || Texte::porteControle(porte->token))
    return Sinon{"Ce que " + citation() + " annonce de sa porte n'est pas lisible."};
  const std::lock_guard verrou(mutex_);
  porte_ = porte;
  porteLe_ = Montre::now();
  echec_ = false;
  return *porte;
}

SecondMac::Essai SecondMac::poster(const EndpointPorte& porte, const std::string& corps) {
  const auto dit = executer(PorteDistante::commandeAction(porte, corps));
  if (!dit)
    return {.pourquoi = dit.raison().phrase, .rienFait = avantLaLigne(dit.raison().cause), .lien = false};
  if (dit->statut == 0) {
    // A refusal changes nothing over there.
    if (auto reponse = PorteDistante::analyserReponse(dit->sortie))
      return {.reponse = reponse, .rienFait = !reponse->ok};
    return {.pourquoi = "Ce que la porte de " + citation() + " a répondu n'est pas lisible."};
  }
  if (dit->statut == sansProgramme)
    return {.pourquoi = "curl n'est pas installé sur " + citation() + " : c'est lui qui y appelle la porte.",
            .rienFait = true};
  if (std::ranges::count(rienEnvoye, dit->statut) > 0)
    return {.pourquoi = "La porte annoncée sur " + citation() + " ne répond pas : le cockpit a pu s'y fermer.",
            .rienFait = true};
  if (dit->statut == horsDelai) return {.pourquoi = "La porte de " + citation() + " n'a pas répondu à temps."};
  return {.pourquoi = "La porte de " + citation() + " n'a rien répondu de lisible (curl " +
                      std::to_string(dit->statut) + ")."};
}

void SecondMac::noter(bool echec) {
  const std::lock_guard verrou(mutex_);
  echec_ = echec;
}

/// A cockpit that was started again has another port and another token: after a failure its endpoint file is
/// read again, once, and what surely was not carried out is posted to the door that it tells of, if that is
/// another.
SecondMac::Essai SecondMac::demander(const std::string& corps) {
  const auto porte = trouver();
  if (!porte) return {.pourquoi = porte.raison(), .rienFait = true};
  Essai essai = poster(*porte, corps);
  const auto reussi = [&] { return essai.reponse && essai.reponse->ok; };
  noter(!reussi());
  if (reussi() || !essai.lien || !essai.rienFait) return essai;
  const auto relue = trouver();
  if (!relue && !essai.reponse) essai.pourquoi = relue.raison();
  if (!relue || *relue == *porte) return essai;
  essai = poster(*relue, corps);
  noter(!reussi());
  return essai;
}

Resultat<ReponsePorte, std::string> SecondMac::relayer(const CommandeControle& commande) {
  const auto corps = PorteDistante::corpsAction(commande);
  if (!corps) return Sinon{std::string("Ce verbe ne se relaie pas.")};
  const Essai essai = demander(*corps);
  {
    const std::lock_guard verrou(mutex_);
    essayee_.reset();  // what its board showed may be so no more
  }
  if (essai.reponse) return *essai.reponse;
  return Sinon{essai.pourquoi +
               (essai.rienFait ? "" : " Le verbe a pu y être exécuté : il n'est pas envoyé de nouveau.")};
}

Distant::Vue SecondMac::vue(bool fraiche) {
  std::unique_lock verrou(mutex_);
  if (fraiche && !aLire_ && (!essayee_ || Montre::now() - *essayee_ > fraicheurVue)) {
    aLire_ = true;
    debut_ = Montre::now();
    reveil_.notify_all();
  }
  // A machine that is off is no reason to wait again and again.
  if (fraiche && vue_.panne.empty())
    reveil_.wait_until(verrou, debut_ + (vueLe_ ? Montre::duration(attenteConnue) : attenteMax),
                       [this] { return arret_ || !aLire_; });
  Vue vue = vue_;
  if (vueLe_) vue.age = std::chrono::floor<std::chrono::seconds>(Montre::now() - *vueLe_);
  if (!vueLe_ && vue.panne.empty() && aLire_)
    vue.panne = "Le plateau de " + citation() + " est en cours de lecture.";
  return vue;
}

void SecondMac::lire() {
  const std::string corps = PorteDistante::corpsAction({CommandeControle::etat{}}).value_or("");
  std::unique_lock verrou(mutex_);
  while (true) {
    reveil_.wait(verrou, [this] { return arret_ || aLire_; });
    if (arret_) return;
    verrou.unlock();
    const Essai essai = demander(corps);
    auto plateau = essai.reponse ? PorteDistante::plateau(*essai.reponse) : std::nullopt;
    std::string panne = essai.pourquoi;
    if (essai.reponse && !essai.reponse->ok)
      panne = "La porte de " + citation() + " refuse de dire son état : " +
              Inoffensif::epurer(Texte::tronquer(essai.reponse->error.value_or("sans raison."), 200));
    else if (essai.reponse && !plateau)
      panne = "Le plateau de " + citation() + " ne montre rien.";
    verrou.lock();
    vue_.panne = std::move(panne);
    essayee_ = Montre::now();
    if (plateau) {
      vue_.plateau = std::move(plateau);
      vueLe_ = essayee_;
    }
    aLire_ = false;
    reveil_.notify_all();
  }
}

}  // namespace tarnavelle::Plateau
