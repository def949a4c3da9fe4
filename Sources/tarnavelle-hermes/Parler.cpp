#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <deque>
#include <nlohmann/json.hpp>

#include "Commandes.hpp"
#include "Entretien.hpp"
#include "Memoire.hpp"
#include "Nouvelle.hpp"
#include "Parole.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/Selon.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Hermes {
namespace {

constexpr std::size_t entreeMax = std::size_t{4} * 1024 * 1024;  ///< bytes of a message on standard input

/// All of it, or a little more than may be.
std::string toutLire() {
  std::string lu;
  std::array<char, 65536> bloc;
  while (lu.size() <= entreeMax) {
    const auto n = ::read(0, bloc.data(), bloc.size());
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    lu.append(bloc.data(), static_cast<std::size_t>(n));
  }
  return lu;
}

/// One message carried out in a shell.
class Echange {
 public:
  Echange(const Variables& environnement, const Demande& demande, std::string texte)
      : reglages_(ReglagesHermes::lire(environnement)),
        parole_(demande.json),
        texte_(std::move(texte)),
        repond_(::isatty(0) == 1 && ::isatty(2) == 1),
        fichier_(Memoire::chemin(dossierDuShell(environnement), reglages_.lieu(demande.acces.hote))),
        nouvelle_(demande.nouvelle),
        session_(nouvelle_ ? "" : Memoire::lire(fichier_).session),
        courrier_(std::make_shared<Courrier>()),
        entretien_(voieReglee(reglages_, demande.acces), courrier_) {}

  int mener() {
    suivreSignaux([courrier = courrier_](int numero) { courrier->poster({Nouvelle::signal{numero}}); });
    for (const std::string& plainte : reglages_.plaintes()) parole_.note(plainte);
    entretien_.dire(texte_, session_);
    while (!issue_ || (verdicts_ > 0 && !abandonne_)) {
      std::array<pollfd, 2> attendus{{{courrier_->descripteur(), POLLIN, 0}, {0, POLLIN, 0}}};
      ::poll(attendus.data(), demandes_.empty() || !repond_ ? 1 : 2, -1);
      for (const Nouvelle& nouvelle : courrier_->prendre()) entendre(nouvelle);
      if (!demandes_.empty() && repond_ && attendus[1].revents != 0) lireReponse();
      if (parole_.perdue()) entretien_.interrompre();
    }
    return conclure();
  }

 private:
  void entendre(const Nouvelle& nouvelle) {
    std::visit(Selon{[&](const Nouvelle::evenement& n) { suivre(n.evenement); },
                     [&](const Nouvelle::note& n) { parole_.note(n.texte); },
                     [&](const Nouvelle::verdict& n) {
                       --verdicts_;
                       if (n.refus) parole_.note(*n.refus);
                     },
                     [&](const Nouvelle::depart&) { entretien_.partir(); },
                     [&](const Nouvelle::fin& n) { issue_ = n.issue; },
                     [&](const Nouvelle::signal& n) {
                       if (n.numero == SIGWINCH) return;
                       abandonne_ = true;
                       entretien_.interrompre();
                     }},
               nouvelle.cas);
  }

  void suivre(const EvenementGateway& evenement) {
    parole_.evenement(evenement);
    if (const auto* texte = std::get_if<EvenementGateway::texte>(&evenement.cas);
        texte && reponse_.size() < Memoire::texteMax)
      reponse_ += texte->morceau;
    if (const auto* session = std::get_if<EvenementGateway::session>(&evenement.cas)) session_ = session->id;
    if (const auto* demande = std::get_if<EvenementGateway::approbation>(&evenement.cas)) {
      demandes_.push_back(demande->demande);
      if (demandes_.size() == 1) demander();
    }
    if (const auto* tranchee = std::get_if<EvenementGateway::approbationTranchee>(&evenement.cas))
      std::erase_if(demandes_, [&](const auto& d) { return d.id == tranchee->id; });
  }

  void demander() {
    if (repond_) return parole_.note("Accepter ? [o/N]", "question");
    parole_.note("Personne ne peut répondre ici : c'est refusé.");
    trancher(DecisionApprobation::rejeter);
  }

  void lireReponse() {
    std::string ligne;
    for (char c = 0; ligne.size() < 80 && ::read(0, &c, 1) == 1 && c != '\n';) ligne += c;
    const std::string dit = Texte::replier(Texte::reparer(ligne));
    trancher(dit == "o" || dit == "oui" ? DecisionApprobation::approuver : DecisionApprobation::rejeter);
  }

  void trancher(DecisionApprobation decision) {
    const std::string id = demandes_.front().id;
    demandes_.pop_front();
    ++verdicts_;
    entretien_.trancher(id, decision, session_);
    if (!demandes_.empty()) demander();
  }

  /// Adds the exchange to the thread as it now is: others may have spoken meanwhile.
  void garder() {
    if (!Memoire::reserver(fichier_, Memoire::Prise::breve))
      return parole_.note(
          "La conversation est ouverte ailleurs aussi : ce qui s'est dit ici n'y est pas gardé.");
    Memoire memoire = nouvelle_ ? Memoire() : Memoire::lire(fichier_);
    memoire.session = session_;
    memoire.ajouter({Memoire::Propos::De::vous, texte_});
    if (!reponse_.empty()) memoire.ajouter({Memoire::Propos::De::hermes, reponse_});
    if (!memoire.ecrire(fichier_))
      parole_.note("La conversation n'a pas pu être gardée dans « " + fichier_.string() + " ».");
  }

  int conclure() {
    using Cas = IssueEntretien::Cas;
    parole_.finir();
    garder();
    constexpr std::array<const char*, 4> noms = {"finie", "arretee", "echouee", "injoignable"};
    Json fin = {{"evenement", "fin"}, {"issue", noms[static_cast<std::size_t>(issue_->cas)]}};
    if (!issue_->raison.empty()) fin["raison"] = issue_->raison;
    if (!session_.empty()) fin["session"] = session_;
    if (parole_.json())
      parole_.objet(fin);
    else if (!issue_->raison.empty())
      parole_.note(issue_->raison);
    if (parole_.perdue()) return Statut::sansReponse;
    switch (issue_->cas) {
      case Cas::finie: return Statut::fait;
      case Cas::arretee: return Statut::interrompu;
      case Cas::echouee: return Statut::refus;
      case Cas::injoignable: return Statut::sansReponse;
    }
    return Statut::refus;
  }

  const ReglagesHermes reglages_;
  Parole parole_;
  const std::string texte_;
  const bool repond_;  ///< somebody can answer here
  const std::filesystem::path fichier_;
  const bool nouvelle_;
  std::string session_;
  std::string reponse_;
  std::deque<DemandeApprobationHermes> demandes_;
  std::optional<IssueEntretien> issue_;
  int verdicts_ = 0;  ///< on their way
  bool abandonne_ = false;
  const std::shared_ptr<Courrier> courrier_;
  Entretien entretien_;
};

}  // namespace

std::filesystem::path dossierDuShell(const Variables& environnement) {
  return dossierEtats(environnement) / "tarnavelle" / "conversations-shell";
}

int parler(const Variables& environnement, const Demande& demande) {
  const auto reglages = ReglagesHermes::lire(environnement);
  if (const auto refus = reglages.refusVoie(demande.acces.hote)) {
    for (const std::string& plainte : reglages.plaintes()) Parole(demande.json).note(plainte);
    Parole(demande.json).note(*refus, "refus");
    return Statut::mauvaiseLigne;
  }
  std::string texte = demande.texte;
  if (Texte::rogner(texte).empty() && ::isatty(0) == 1 && ::isatty(1) == 1 && !demande.json) {
    return converser(
        environnement,
        {.dossier = dossierDuShell(environnement), .acces = demande.acces, .nouvelle = demande.nouvelle});
  }
  if (texte.empty()) texte = toutLire();
  if (texte.size() > entreeMax) {
    Parole(demande.json).note("Le message est trop long : 4 Mio au plus. Rien n'est parti.", "refus");
    return Statut::mauvaiseLigne;
  }
  if (Texte::rogner(texte).empty()) {
    Parole(demande.json).note("Il manque le message : en argument, ou sur l'entrée standard.", "refus");
    return Statut::mauvaiseLigne;
  }
  return Echange(environnement, demande, Texte::reparer(texte)).mener();
}

}  // namespace tarnavelle::Hermes
