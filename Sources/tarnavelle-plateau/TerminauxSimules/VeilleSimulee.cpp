#include "TerminauxSimules/TerminauxSimules.hpp"

namespace tarnavelle::Plateau {

void VeilleSimulee::suivre(const std::string& cle, const std::string& programme, const IdTerminal& terminal) {
  const std::lock_guard verrou(mutex_);
  suivies_[cle] = {.terminal = terminal, .programme = programme, .avant = 0, .declaree = {}};
}

void VeilleSimulee::oublier(const std::string& cle) {
  const std::lock_guard verrou(mutex_);
  suivies_.erase(cle);
}

void VeilleSimulee::termine(const std::string& cle, std::optional<int>) { dire(cle); }

VeilleSimulee::Suivie VeilleSimulee::suivie(const std::string& cle) {
  const std::lock_guard verrou(mutex_);
  const auto place = suivies_.find(cle);
  return place == suivies_.end() ? Suivie{} : place->second;
}

Constat VeilleSimulee::constat(const std::string& cle) {
  const Suivie suivie = this->suivie(cle);
  const auto vie = terminaux_.vie(suivie.terminal);
  Constat constat;
  constat.suivie = !suivie.terminal.valeur.empty();
  constat.situation = {
      .etat = vie.etat,
      .activite = vie.etat,
      .depuis = vie.depuis,
      .preuve = {.source = Source::processus, .element = "", .regle = "", .programme = suivie.programme}};
  if (suivie.declaree && vie.etat != Etat::sorti) {
    constat.situation.etat = suivie.declaree->etat;
    constat.situation.depuis = suivie.declaree->depuis;
    constat.situation.preuve = suivie.declaree->preuve;
  }
  constat.repose = constat.situation.etat == Etat::repos || constat.situation.etat == Etat::fini;
  constat.soumise = vie.soumises > suivie.avant;
  return constat;
}

LectureEcran VeilleSimulee::lire(const std::string& cle, const Ecran&) {
  const auto vie = terminaux_.vie(suivie(cle).terminal);
  LectureEcran lecture;
  lecture.etat = vie.etat;
  lecture.boite = vie.etat == Etat::repos || vie.etat == Etat::travaille;
  lecture.texteBoite = vie.saisie;
  return lecture;
}

bool VeilleSimulee::saitLire(const std::string&) { return true; }

std::vector<std::string> VeilleSimulee::gardes(const std::string&) { return {"Continuer ? o, n"}; }

std::vector<std::string> VeilleSimulee::depuisConsigne(const std::string&,
                                                       const std::vector<std::string>& lignes) {
  std::vector<std::string> depuis;
  for (const std::string& ligne : lignes) {
    if (ligne.starts_with("> "))
      depuis.clear();
    else if (!ligne.starts_with("(saisie) "))
      depuis.push_back(ligne);
  }
  return depuis;
}

void VeilleSimulee::consigne(const std::string& cle, std::string_view) {
  const auto soumises = terminaux_.vie(suivie(cle).terminal).soumises;
  const std::lock_guard verrou(mutex_);
  const auto place = suivies_.find(cle);
  if (place == suivies_.end()) return;
  place->second.avant = soumises;
  place->second.declaree.reset();
}

void VeilleSimulee::touches(const std::string& cle, const std::vector<Touche>&) { dire(cle); }

void VeilleSimulee::declarerFini(const std::string& cle) { declarer(cle, Etat::fini, "fini"); }

void VeilleSimulee::declarerBloque(const std::string& cle, std::string_view) {
  declarer(cle, Etat::besoin, "bloque");
}

void VeilleSimulee::declarer(const std::string& cle, Etat etat, std::string element) {
  const Instant maintenant = terminaux_.maintenant();
  {
    const std::lock_guard verrou(mutex_);
    const auto place = suivies_.find(cle);
    if (place == suivies_.end()) return;
    place->second.declaree = Situation{
        .etat = etat,
        .activite = Etat::repos,
        .depuis = maintenant,
        .preuve = {.source = Source::porte, .element = std::move(element), .regle = "", .programme = ""}};
  }
  dire(cle);
}

void VeilleSimulee::guetter(const std::string&) {}
void VeilleSimulee::laisser(const std::string&) {}

void VeilleSimulee::actualiser(Instant maintenant) {
  const auto changes = terminaux_.actualiser(maintenant);
  std::vector<std::string> cles;
  {
    const std::lock_guard verrou(mutex_);
    for (const auto& [cle, suivie] : suivies_)
      for (const IdTerminal& id : changes)
        if (suivie.terminal == id) cles.push_back(cle);
  }
  for (const std::string& cle : cles) dire(cle);
}

std::optional<Instant> VeilleSimulee::prochainRegard() { return terminaux_.finDuTravail(); }

void VeilleSimulee::observer(std::function<void(const std::string& cle)> change) {
  const std::lock_guard verrou(mutex_);
  change_ = std::move(change);
}

void VeilleSimulee::dire(const std::string& cle) {
  std::function<void(const std::string&)> change;
  {
    const std::lock_guard verrou(mutex_);
    change = change_;
  }
  if (change) change(cle);
}

std::optional<std::string> LanceursSimules::usuel() { return "claude"; }

Resultat<Depart, std::string> LanceursSimules::agent(const Embarquement& embarquement) {
  return Depart{.lancement = {.cle = embarquement.cle,
                              .session = embarquement.session,
                              .mots = {embarquement.programme},
                              .environnement = {},
                              .dossier = embarquement.dossier,
                              .taille = {}},
                .conversation = {}};
}

std::optional<Lancement> LanceursSimules::shell(const std::string&, const std::string&, const std::string&,
                                                const std::string&) {
  return std::nullopt;
}

}  // namespace tarnavelle::Plateau
