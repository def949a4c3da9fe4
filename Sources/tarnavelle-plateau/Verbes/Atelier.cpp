#include "Atelier.hpp"

#include <algorithm>
#include <utility>

#include "Socle/LectureJSON.hpp"
#include "Verbes/Constats.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::string_view motBloque = "bloque : ";

/// A state as the registry keeps it: what the agent declared of itself, else what it does. Empty for a doubt,
/// which ends nothing.
std::string enFiche(const Situation& situation) {
  if (situation.etat == Etat::inconnu) return "";
  if (situation.preuve.source == Source::porte) return situation.preuve.element;
  return std::string(nom(situation.etat));
}

constexpr std::array evenements = {Evenement::idle, Evenement::besoin, Evenement::fini, Evenement::mort};

}  // namespace

Atelier::Atelier(const Sol& sol_, const ReglagesExecuteur& reglages_) : sol(sol_), reglages(reglages_) {
  sol.terminaux.observer(this);
  sol.veille.observer([this](const std::string& id) { change(id); });
}

Atelier::~Atelier() {
  sol.veille.observer({});
  sol.terminaux.observer(nullptr);
}

Date::Instant Atelier::date() const {
  return std::chrono::floor<std::chrono::milliseconds>(sol.horloge.date());
}

Constat Atelier::constat(const FicheAgent& agent) const { return constater(agent, sol.veille); }

std::string_view Atelier::etat(const FicheAgent& agent) const { return enMots(constat(agent).situation.etat); }

std::optional<std::chrono::seconds> Atelier::depuis(const FicheAgent& agent, const Situation& situation) const {
  using std::chrono::seconds;
  if (situation.depuis == Instant{}) return std::nullopt;
  const auto vu = std::chrono::duration_cast<seconds>(sol.horloge.maintenant() - situation.depuis);
  if (agent.etat.empty() || agent.etat != enFiche(situation)) return vu;
  return std::max(vu, std::chrono::duration_cast<seconds>(date() - agent.depuis));
}

void Atelier::redeclarer(const FicheAgent& agent) {
  if (sol.veille.constat(agent.id).situation.activite == Etat::travaille)
    return;  // on an instruction that came later
  if (agent.etat == nom(Etat::fini)) sol.veille.declarerFini(agent.id);
  if (agent.etat.starts_with(motBloque))
    sol.veille.declarerBloque(agent.id, std::string_view(agent.etat).substr(motBloque.size()));
}

std::string_view Atelier::etat(const Fenetre& fenetre) const {
  if (fenetre.agent) return etat(*fenetre.agent);
  return enMots(etatDe(*fenetre.fenetre));
}

std::uint64_t Atelier::battements() {
  const std::lock_guard verrou(mutex_);
  return battements_;
}

bool Atelier::dormir(std::uint64_t vus, Instant echeance) {
  {
    const auto regard = sol.veille.prochainRegard();
    std::unique_lock verrou(mutex_);
    if (arrete_) return false;
    if (battements_ == vus)
      sol.horloge.attendre(reveil_, verrou, std::min(echeance, regard.value_or(echeance)));
    if (arrete_) return false;
  }
  sol.veille.actualiser(sol.horloge.maintenant());
  return true;
}

void Atelier::battre(const std::lock_guard<std::mutex>&) {
  ++battements_;
  reveil_.notify_all();
}

void Atelier::sonner() {
  {
    const std::lock_guard verrou(mutex_);
    battre(verrou);
  }
  if (sol.vues) sol.vues->rafraichir();
}

void Atelier::ecrit(const IdTerminal&) {
  const std::lock_guard verrou(mutex_);
  battre(verrou);
}

void Atelier::arreter() {
  const std::lock_guard verrou(mutex_);
  arrete_ = true;
  reveil_.notify_all();
}

bool Atelier::arrete() {
  const std::lock_guard verrou(mutex_);
  return arrete_;
}

bool Atelier::est(const Constat& constat, Evenement evenement) {
  const Etat etat = constat.situation.etat;
  switch (evenement) {
    case Evenement::idle: return constat.repose || (etat == Etat::besoin && !constat.repondu);
    case Evenement::besoin: return etat == Etat::besoin && !constat.repondu;
    case Evenement::fini: return etat == Etat::fini;
    case Evenement::mort: return etat == Etat::sorti;
  }
  return false;
}

std::uint64_t Atelier::passages(const std::string& id, Evenement evenement) {
  const std::lock_guard verrou(mutex_);
  return vecus_[id].passages[static_cast<std::size_t>(evenement)];
}

/// Keeps what outlives the door.
void Atelier::noter(const std::string& id, const Constat& constat) {
  const std::lock_guard verrou(fiches);
  const auto fiche = sol.registre.agent(id);
  if (!fiche || !*fiche) return;
  // The program may have begun another conversation: that one is to be resumed.
  const bool autre = (*fiche)->conversation != constat.conversation;
  if (!constat.conversation.empty() && (autre || (constat.entamee && !(*fiche)->entamee)))
    modifier(id, [&](FicheAgent& agent) {
      agent.conversation = constat.conversation;
      agent.entamee = constat.entamee;
    });
  if (const std::string etat = enFiche(constat.situation); !etat.empty() && (*fiche)->etat != etat)
    sol.registre.noterEtat(id, etat, date());
}

void Atelier::change(const std::string& id) {
  const Constat constat = sol.veille.constat(id);
  noter(id, constat);
  bool besoin = false;
  {
    const std::lock_guard verrou(mutex_);
    Vecu& vecu = vecus_[id];
    for (const Evenement e : evenements) {
      const auto rang = static_cast<std::size_t>(e);
      const bool maintenant = est(constat, e);
      if (maintenant && !vecu.est[rang]) {
        ++vecu.passages[rang];
        besoin = besoin || e == Evenement::besoin;
      }
      vecu.est[rang] = maintenant;
    }
    ++battements_;
    reveil_.notify_all();
  }
  if (besoin) declencher(id, raisonDe(Evenement::besoin));
  if (sol.vues) sol.vues->rafraichir();
}

Garde<Fait> Atelier::modifier(const std::string& id, const std::function<void(FicheAgent&)>& retouche) {
  const std::lock_guard verrou(fiches);
  const auto lu = sol.registre.agent(id);
  if (!lu) return Sinon{lu.raison()};
  if (!*lu) return Fait{};
  FicheAgent agent = **lu;
  retouche(agent);
  return sol.registre.garderAgent(agent);
}

bool Atelier::consigner(std::function<Garde<Fait>()> ecrire) {
  {
    const std::lock_guard verrou(mutexRestes_);
    restes_.push_back(std::move(ecrire));
  }
  return rattraper();
}

bool Atelier::rattraper() {
  const std::lock_guard verrou(mutexRestes_);
  while (!restes_.empty()) {
    const auto ecrit = restes_.front()();
    if (!ecrit && ecrit.raison().cas != Avarie::Cas::absent) return false;
    restes_.pop_front();
  }
  return true;
}

void Atelier::suivre(const FicheAgent& agent, const IdTerminal& terminal) const {
  sol.veille.suivre(agent.id, agent.programme, terminal);
  if (sol.lointain && !agent.hote.empty()) sol.lointain->suivre(agent.id, agent.hote, sessionLaBas(agent));
}

Garde<Fait> Atelier::quitter(const FicheAgent& agent) {
  // First: the end of its terminal is then nobody's.
  const auto garde = modifier(agent.id, [](FicheAgent& fiche) {
    fiche.ouvert = false;
    fiche.terminal.clear();
  });
  if (!garde) return garde;
  if (sol.lointain) sol.lointain->oublier(agent.id);
  sol.veille.oublier(agent.id);
  if (!agent.terminal.empty()) sol.terminaux.terminer(terminalDe(agent));
  sonner();
  return Fait{};
}

Garde<Fait> Atelier::oublier(const FicheAgent& agent) {
  // What it had started may have outlived its terminal.
  if (const auto fin = sol.terminaux.terminer(terminalDe(agent)); !fin && fin.raison() != Panne::inconnu)
    return Sinon{Avarie{.phrase = "Impossible d'arrêter " + agent.nom + " : " +
                                  std::string(description(fin.raison())) + "."}};
  {
    const std::lock_guard verrou(
        fiches);  // who tells the end of that terminal keeps the record that it has read
    if (const auto garde = sol.registre.oublierAgent(agent.id, date()); !garde) return garde;
  }
  if (sol.lointain) sol.lointain->oublier(agent.id);
  sol.veille.oublier(agent.id);
  sol.lanceurs.oublier(agent.id);
  const std::lock_guard verrou(mutex_);
  vecus_.erase(agent.id);
  laisses_.erase(agent.id);
  refusMessages_.erase(agent.id);
  battre(verrou);
  if (sol.vues) sol.vues->rafraichir();
  return Fait{};
}

/// Held throughout: an agent that is started anew has another terminal, or none yet, and is not meant.
void Atelier::finir(const IdTerminal& terminal, std::optional<int> statut, bool parti) {
  constexpr int parUnSignal = 128;
  bool garde = true;
  std::vector<FicheAgent> laBas;
  {
    const std::lock_guard verrou(fiches);
    if (const auto agents = sol.registre.agents())
      for (FicheAgent agent : *agents) {
        if (agent.terminal != terminal.valeur || !terminal.admet(agent.id)) continue;
        if (agent.termine && !parti) continue;
        // What showed it here is gone, and proves nothing of an agent that lives elsewhere.
        if (!agent.hote.empty() && !agent.termine && (parti || !statut || *statut >= parUnSignal)) {
          laBas.push_back(agent);
          agent.terminal.clear();
          garde = garde && sol.registre.garderAgent(agent);
          continue;
        }
        if (parti) agent.terminal.clear();  // its number may be given again
        const bool deja = std::exchange(agent.termine, true);
        garde = garde && sol.registre.garderAgent(agent);
        if (deja) continue;
        // Nobody will report for it any more; what it had reported is still to be attested.
        if (const auto taches = sol.registre.taches())
          for (const FicheTache& t : *taches)
            if (t.agent == agent.id && t.etat == FicheTache::Etat::enCours && !t.rapportee)
              sol.registre.juger(t.numero, {}, date());
        garde = sol.registre.rompreRelais(agent.id, date()) && garde;
        sol.veille.termine(agent.id, statut);
      }
    if (const auto fenetres = sol.registre.fenetres())
      for (FicheFenetre fenetre : *fenetres) {
        if (fenetre.terminal != terminal.valeur || !terminal.admet(fenetre.id)) continue;
        if (fenetre.termine && !parti && (fenetre.statut || !statut)) continue;
        if (parti) fenetre.terminal.clear();
        fenetre.termine = true;
        if (!fenetre.statut) fenetre.statut = statut;
        garde = garde && sol.registre.garderFenetre(fenetre);
      }
  }
  for (const FicheAgent& agent : laBas) {
    if (sol.lointain) sol.lointain->oublier(agent.id);
    sol.veille.oublier(agent.id);
    if (!parti) sol.terminaux.terminer(terminalDe(agent));
  }
  if (!garde) {  // the disk is full: it is looked for again
    const std::lock_guard verrou(mutex_);
    aRelever_ = true;
  }
  sonner();
}

void Atelier::perdu() {
  relever();
  sonner();
}

void Atelier::relever() {
  // Who was there is read before what is there: what is opened meanwhile is not meant.
  const auto agents = sol.registre.agents();
  const auto fenetres = sol.registre.fenetres();
  const auto terminaux = sol.terminaux.lister();
  {
    const std::lock_guard verrou(mutex_);
    aRelever_ = !agents || !fenetres || !terminaux;
    if (aRelever_) return;
  }
  const auto voir = [&](const auto& fiche) {
    if (fiche.terminal.empty()) return;
    const auto la = std::ranges::find(*terminaux, fiche.id, &Terminal::cle);
    const bool parti = la == terminaux->end() || la->id.valeur != fiche.terminal;
    // An end whose status is not known yet will be told with it.
    if (parti || (!fiche.termine && la->mort && la->statut))
      finir(terminalDe(fiche), parti ? std::nullopt : la->statut, parti);
  };
  for (const FicheAgent& agent : *agents) voir(agent);
  for (const FicheFenetre& fenetre : *fenetres) voir(fenetre);
}

bool Atelier::aRelever() {
  const std::lock_guard verrou(mutex_);
  return aRelever_;
}

Garde<Fait> Atelier::declencher(const std::string& id, std::string_view evenement) {
  const auto dits = sol.registre.declencher(id, evenement, date());
  if (!dits) return Sinon{dits.raison()};
  if (!dits->empty()) sonner();
  return Fait{};
}

std::string_view raisonDe(Evenement evenement) {
  switch (evenement) {
    case Evenement::idle: return "idle";
    case Evenement::besoin: return "besoin";
    case Evenement::fini: return "fini";
    case Evenement::mort: return "mort";
  }
  return "";
}

std::optional<PorteJSON> donnees(const Json& json) { return PorteJSON::depuis(json); }

}  // namespace tarnavelle::Plateau
