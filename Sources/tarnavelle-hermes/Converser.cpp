// A conversation on a terminal of its own: the thread above, a box to write in below, and in its place a dialog
// while Hermès asks for leave. What a board reads of it is described in its screen rules, conversation.regles.
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <deque>
#include <memory>
#include <optional>
#include <utility>

#include "Boite.hpp"
#include "Commandes.hpp"
#include "Croquis.hpp"
#include "Entretien.hpp"
#include "Fil.hpp"
#include "Memoire.hpp"
#include "Nouvelle.hpp"
#include "Parole.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/Selon.hpp"
#include "Socle/Texte.hpp"
#include "Temoin.hpp"
#include "Terminal/Toile.hpp"

namespace tarnavelle::Hermes {
namespace {

using namespace std::chrono_literals;
using De = Memoire::Propos::De;
using Montre = std::chrono::steady_clock;

constexpr std::size_t repriseMax = 20;  ///< messages of the thread shown again
constexpr auto entreDessins = 40ms;
constexpr auto suspens = 50ms;  ///< after which an Esc is a key of its own
constexpr auto enPleine = 1s;   ///< a key that soon after another goes on with what is being written

/// Of the calendar; as wide as what a gateway may tell.
Date::Instant dateActuelle() {
  return std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
}

class Carton {
 public:
  Carton(const Variables& environnement, const Carte& carte)
      : environnement_(environnement),
        acces_(carte.acces),
        reglages_(ReglagesHermes::lire(environnement)),
        lieu_(reglages_.lieu(acces_.hote)),
        fichier_(Memoire::chemin(carte.dossier, lieu_)),
        gardee_(Memoire::reserver(fichier_, Memoire::Prise::seule)),
        memoire_(carte.nouvelle ? Memoire() : Memoire::lire(fichier_)),
        temoin_(environnement),
        courrier_(std::make_shared<Courrier>()),
        entretien_(voieReglee(reglages_, acces_), courrier_) {}

  int mener() {
    suivreSignaux([courrier = courrier_](int numero) { courrier->poster({Nouvelle::signal{numero}}); });
    toile_ = std::make_unique<Toile>();
    accueillir();
    temoin_.demarre();
    while (!fini_) {
      dessiner();
      attendre();
    }
    if (enTour_) entretien_.interrompre();
    temoin_.sorti();
    garder();
    return Statut::fait;
  }

 private:
  void garder() {
    if (gardee_ && !memoire_.ecrire(fichier_) && !std::exchange(plainte_, true))
      noter("La conversation ne peut pas être gardée dans « " + fichier_.string() + " ».");
  }

  void montrer(std::vector<std::string> lignes) {
    for (std::string& ligne : lignes) toile_->ajouter(std::move(ligne));
    sale_ = true;
  }

  void noter(const std::string& phrase) {
    finirParagraphe();
    montrer(Fil::note(phrase, toile_->colonnes()));
  }

  void accueillir() {
    noter("Conversation avec Hermès" + (lieu_.empty() ? "" : ", " + lieu_) + ".");
    for (const std::string& plainte : reglages_.plaintes()) noter(plainte);
    if (!memoire_.enCours.empty() && !memoire_.parti) {  // it waited for its way
      if (!memoire_.fil.empty() && memoire_.fil.back().de == De::vous) memoire_.fil.pop_back();
      memoire_.enFile.insert(memoire_.enFile.begin(), std::exchange(memoire_.enCours, {}));
    }
    const auto debut = memoire_.fil.size() > repriseMax ? memoire_.fil.size() - repriseMax : 0;
    for (std::size_t i = debut; i < memoire_.fil.size(); ++i) {
      montrer(Fil::lignes(memoire_.fil[i], toile_->colonnes()));
      toile_->ajouter("");
    }
    if (!gardee_) noter("Elle est ouverte ailleurs aussi : ce qui se dit ici ne sera pas gardé.");
    if (!memoire_.fil.empty()) noter("La conversation reprend.");
    if (!memoire_.enCours.empty()) {
      noter(
          "Votre dernier message était parti quand elle s'est arrêtée : Hermès l'a peut-être reçu, "
          "la réponse est perdue.");
      memoire_.enCours.clear();
    }
    garder();
    suivant();
  }

  void attendre() {
    std::array<pollfd, 2> attendus{{{courrier_->descripteur(), POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}}};
    ::poll(attendus.data(), attendus.size(), patience());
    for (const Nouvelle& nouvelle : courrier_->prendre()) entendre(nouvelle);
    if (attendus[1].revents != 0) {
      std::array<char, 65536> bloc;
      const auto n = ::read(STDIN_FILENO, bloc.data(), bloc.size());
      if (n == 0 || (n < 0 && errno != EINTR && errno != EAGAIN)) fini_ = true;
      if (n > 0) frapper(clavier_.lire({bloc.data(), static_cast<std::size_t>(n)}));
    } else if (clavier_.enSuspens()) {
      frapper(clavier_.calme());
    }
    if (!demandes_.empty() && demandes_.front().expiration && *demandes_.front().expiration <= dateActuelle())
      expirer();
  }

  int patience() const {
    auto attente = std::chrono::milliseconds(-1);
    const auto auPlus = [&](std::chrono::milliseconds duree) {
      duree = std::max(duree, 0ms);
      attente = attente < 0ms ? duree : std::min(attente, duree);
    };
    if (sale_) auPlus(std::chrono::ceil<std::chrono::milliseconds>(dessinee_ + entreDessins - Montre::now()));
    if (clavier_.enSuspens()) auPlus(suspens);
    if (!demandes_.empty() && demandes_.front().expiration)
      auPlus(std::min<std::chrono::milliseconds>(*demandes_.front().expiration - dateActuelle(), 1h));
    return static_cast<int>(attente.count());
  }

  // What is typed.

  void frapper(const std::vector<Frappe>& frappes) {
    const auto maintenant = Montre::now();
    for (const Frappe& frappe : frappes) {
      sale_ = pressee_ = true;
      // Whoever was writing when the dialog came has not read it yet: a letter is no answer.
      const bool ecrit = !boite_.vide() && maintenant < frappee_ + enPleine;
      frappee_ = maintenant;
      const auto* saisie = std::get_if<Frappe::saisie>(&frappe.cas);
      if (!demandes_.empty() && !(ecrit && saisie))
        repondre(frappe);
      else if (const auto* touche = std::get_if<Frappe::Touche>(&frappe.cas))
        presser(*touche);
      else
        boite_.inserer(saisie ? saisie->texte : std::get<Frappe::collage>(frappe.cas).texte);
    }
  }

  void presser(Frappe::Touche touche) {
    using enum Frappe::Touche;
    if (touche == entree) return soumettre();
    if (touche == ctrlL) return remesurer();
    if ((touche == echap || touche == ctrlC) && enTour_) return entretien_.interrompre();
    if (touche == ctrlC && !boite_.vide()) {
      boite_.prendre();
    } else if (touche == ctrlC) {
      noter("Ctrl-D pour quitter.");
    } else if (touche == ctrlD && boite_.vide()) {
      fini_ = true;
    } else {
      boite_.toucher(touche == ctrlD ? supprimer : touche);
    }
  }

  /// Keys while Hermès waits for an answer. Enter is none: it may have been meant for the box. A paste goes
  /// there.
  void repondre(const Frappe& frappe) {
    if (const auto* texte = std::get_if<Frappe::saisie>(&frappe.cas)) {
      const std::string dit = Texte::minuscules(Texte::premiers(texte->texte, 1));
      if (dit == "o" || dit == "y") return trancher(DecisionApprobation::approuver);
      if (dit == "n") return trancher(DecisionApprobation::rejeter);
    } else if (const auto* collage = std::get_if<Frappe::collage>(&frappe.cas)) {
      boite_.inserer(collage->texte);
    } else if (const auto touche = std::get<Frappe::Touche>(frappe.cas);
               touche == Frappe::Touche::echap || touche == Frappe::Touche::ctrlC) {
      entretien_.interrompre();
    }
  }

  void trancher(DecisionApprobation decision) {
    if (reponse_) return;  // the last answer is on its way
    reponse_ = decision;
    entretien_.trancher(demandes_.front().id, decision, memoire_.session);
  }

  void soumettre() {
    const std::string texte = boite_.prendre();
    if (Texte::rogner(texte).empty()) return;
    memoire_.enFile.push_back(texte);
    if (enTour_) return garder();
    suivant();
  }

  /// The next message leaves, if one waits.
  void suivant() {
    if (enTour_ || memoire_.enFile.empty()) return;
    const std::string texte = memoire_.enFile.front();
    memoire_.enFile.erase(memoire_.enFile.begin());
    memoire_.ajouter({De::vous, texte});
    memoire_.enCours = texte;
    memoire_.parti = false;
    garder();
    temoin_.consigne(texte);
    toile_->ajouter("");
    montrer(Fil::vous(texte, toile_->colonnes()));
    enTour_ = true;
    reponseEntiere_.clear();
    relire();
    entretien_.dire(texte, memoire_.session);
  }

  /// What was set anew since, as a key that was refused, holds from the next message on.
  void relire() {
    auto lus = ReglagesHermes::lire(environnement_);
    if (lus.passerelle() == reglages_.passerelle() || lus.lieu(acces_.hote) != lieu_) return;
    entretien_.passerPar(voieReglee(lus, acces_));
    reglages_ = std::move(lus);
  }

  // What comes.

  void entendre(const Nouvelle& nouvelle) {
    sale_ = true;
    std::visit(
        Selon{[&](const Nouvelle::evenement& n) { suivre(n.evenement); },
              [&](const Nouvelle::note& n) { noter(n.texte); }, [&](const Nouvelle::verdict& n) { accuser(n); },
              [&](const Nouvelle::depart&) {
                memoire_.parti = true;
                garder();  // before it leaves: nobody sends it again
                entretien_.partir();
              },
              [&](const Nouvelle::fin& n) { finirTour(n.issue); },
              [&](const Nouvelle::signal& n) {
                if (n.numero == SIGWINCH)
                  remesurer();
                else
                  fini_ = true;
              }},
        nouvelle.cas);
  }

  void suivre(const EvenementGateway& evenement) {
    using E = EvenementGateway;
    const auto colonnes = toile_->colonnes();
    std::visit(
        Selon{[&](const E::texte& e) {
                if (reponseEntiere_.size() < Memoire::texteMax) reponseEntiere_ += e.morceau;
                montrer(fil_.ecouter(e.morceau, colonnes));
              },
              [&](const E::outil& e) {
                finirParagraphe();
                temoin_.outil(e.nom);
                montrer(Fil::outil(e.nom + (e.chemin ? " " + *e.chemin : ""), colonnes));
              },
              [](const E::outilFini&) {},
              [&](const E::session& e) {  // a gateway may tell it in every event
                if (std::exchange(memoire_.session, e.id) != e.id) garder();
              },
              [&](const E::approbation& e) {
                finirParagraphe();
                montrer(Fil::note(enClair(e.demande), colonnes));
                demandes_.push_back(e.demande);
                // One that comes expired comes from a clock that is late: it ends with the turn.
                if (auto& fin = demandes_.back().expiration; fin && *fin <= dateActuelle()) fin.reset();
                dessinerAussitot();
                temoin_.accord(e.demande.outil);
              },
              [&](const E::approbationTranchee& e) {
                if (std::erase_if(demandes_, [&](const auto& d) { return d.id == e.id; }) > 0)
                  conclure(e.decision);
              },
              [&](const E::erreur& e) { retenir("Erreur d'Hermès : " + e.message); }, [](const E::rien&) {}},
        evenement.cas);
  }

  void accuser(const Nouvelle::verdict& verdict) {
    reponse_.reset();
    const bool premiere = !demandes_.empty() && demandes_.front().id == verdict.id;
    if (verdict.refus) return noter(*verdict.refus);  // the dialog stays: it may be answered again
    if (!premiere) return;                            // the stream was quicker to tell
    demandes_.pop_front();
    conclure(verdict.decision);
  }

  void conclure(DecisionApprobation decision) {
    reponse_.reset();
    noter(decision == DecisionApprobation::approuver ? "Accordé." : "Refusé.");
    if (demandes_.empty()) temoin_.outil("accord");
  }

  void expirer() {
    demandes_.pop_front();
    reponse_.reset();
    noter("La demande d'accord a expiré.");
    if (demandes_.empty()) temoin_.outil("accord");
  }

  void finirParagraphe() { montrer(fil_.finir(toile_->colonnes())); }

  /// A note that the thread keeps.
  void retenir(const std::string& phrase) {
    noter(phrase);
    memoire_.ajouter({De::note, phrase});
  }

  void finirTour(const IssueEntretien& issue) {
    finirParagraphe();
    enTour_ = false;
    demandes_.clear();
    reponse_.reset();
    memoire_.enCours.clear();
    if (!reponseEntiere_.empty()) memoire_.ajouter({De::hermes, reponseEntiere_});
    if (!issue.raison.empty()) retenir(issue.raison);
    garder();
    dessinerAussitot();
    using Cas = IssueEntretien::Cas;
    if (issue.cas == Cas::finie)
      temoin_.fini(reponseEntiere_);
    else if (issue.cas == Cas::arretee)
      temoin_.interrompu();
    else
      temoin_.echec(issue.raison);
    suivant();
  }

  // What is shown.

  void remesurer() {
    toile_->mesurer();
    sale_ = true;
  }

  void dessiner() {
    const auto maintenant = Montre::now();
    if (!sale_ || (!pressee_ && maintenant < dessinee_ + entreDessins)) return;
    sale_ = pressee_ = false;
    dessinee_ = maintenant;
    const auto vif = Croquis::vif({.fil = fil_,
                                   .enFile = memoire_.enFile,
                                   .boite = boite_,
                                   .demandes = demandes_,
                                   .repondu = reponse_.has_value(),
                                   .enTour = enTour_},
                                  toile_->colonnes(), toile_->lignes());
    if (!toile_->dessiner(vif)) fini_ = true;
  }

  /// Before others are told: they look at once.
  void dessinerAussitot() {
    sale_ = pressee_ = true;
    dessiner();
  }

  const Variables environnement_;
  const AccesSSH acces_;
  ReglagesHermes reglages_;
  const std::string lieu_;
  const std::filesystem::path fichier_;
  const bool gardee_;
  Memoire memoire_;
  Temoin temoin_;
  const std::shared_ptr<Courrier> courrier_;
  Entretien entretien_;

  std::unique_ptr<Toile> toile_;
  Clavier clavier_;
  Boite boite_;
  Fil fil_;
  std::string reponseEntiere_;
  std::deque<DemandeApprobationHermes> demandes_;
  std::optional<DecisionApprobation> reponse_;  ///< on its way
  bool enTour_ = false;
  bool fini_ = false;
  bool plainte_ = false;
  bool sale_ = true;
  bool pressee_ = true;  ///< somebody waits to see it
  Montre::time_point dessinee_{};
  Montre::time_point frappee_{};
};

}  // namespace

int converser(const Variables& environnement, const Carte& carte) {
  return Carton(environnement, carte).mener();
}

}  // namespace tarnavelle::Hermes
