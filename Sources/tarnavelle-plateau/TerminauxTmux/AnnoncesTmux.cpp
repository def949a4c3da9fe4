#include "AnnoncesTmuxInterne.hpp"

#include <chrono>
#include <utility>

#include "ProcessusInterne.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::chrono::milliseconds delaiFin{50};  ///< between two looks for how a program ended
constexpr int relancesMax = 20;

}  // namespace

AnnoncesTmux::AnnoncesTmux(Moyens moyens) : moyens_(std::move(moyens)), fil_([this] { courir(); }) {}

AnnoncesTmux::~AnnoncesTmux() { arreter(); }

void AnnoncesTmux::arreter() {
  if (!fil_.joinable()) return;
  {
    const std::lock_guard garde(verrou_);
    arret_ = true;
  }
  travail_.notify_all();
  fil_.join();
}

void AnnoncesTmux::observer(Observateur* observateur) {
  std::unique_lock garde(verrou_);
  observateur_ = observateur;
  change_ = observateur != nullptr;
  oublier_ = true;
  travail_.notify_all();
  if (std::this_thread::get_id() != fil_.get_id()) repos_.wait(garde, [&] { return !occupe_ || observateur; });
}

Terminal AnnoncesTmux::commeOnLeDit(Terminal terminal) {
  if (terminal.mort) terminal.processus = 0;
  return terminal;
}

void AnnoncesTmux::change() {
  const std::lock_guard garde(verrou_);
  change_ = true;
  travail_.notify_all();
}

void AnnoncesTmux::ecrit(const std::string& id) {
  const std::lock_guard garde(verrou_);
  ecrits_.insert(IdTerminal{id});
  travail_.notify_all();
}

void AnnoncesTmux::perdu() {
  const std::lock_guard garde(verrou_);
  perdu_ = true;
  travail_.notify_all();
}

void AnnoncesTmux::courir() {
  std::unique_lock garde(verrou_);
  while (true) {
    const auto aFaire = [&] { return arret_ || change_ || perdu_ || !ecrits_.empty(); };
    if (relances_ == 0) {
      travail_.wait(garde, aFaire);
    } else if (!travail_.wait_for(garde, delaiFin, aFaire)) {
      --relances_;
      change_ = true;
      garde.unlock();  // the ground tells us of things under a lock of its own
      moyens_.recolter();
      garde.lock();
    }
    if (arret_) return;
    auto* const observateur = observateur_;
    const auto ecrits = std::exchange(ecrits_, {});
    const bool perdu = std::exchange(perdu_, false);
    const bool change = std::exchange(change_, false);
    if (std::exchange(oublier_, false)) connus_.clear();
    if (!observateur) continue;
    occupe_ = true;
    garde.unlock();
    for (const auto& id : ecrits) observateur->ecrit(id);
    if (perdu) {
      connus_.clear();
      observateur->perdu();
    }
    if (change) comparer(*observateur);
    garde.lock();
    occupe_ = false;
    repos_.notify_all();
  }
}

void AnnoncesTmux::comparer(Observateur& observateur) {
  const auto liste = moyens_.lister();
  if (!liste) return;  // nobody knows: what was known stays
  std::map<IdTerminal, Terminal> presents;
  std::set<pid_t> vivants;
  bool inacheve = false;
  for (Terminal terminal : *liste) {
    const auto pid = static_cast<pid_t>(terminal.processus);
    // tmux hears that a program ended, and how, in two steps: it is told of once both are known, or in the end.
    const bool fini = terminal.mort ? terminal.statut.has_value() : Processus::debut(pid).has_value();
    const auto connu = connus_.find(terminal.id);
    const bool dit =
        connu != connus_.end() && connu->second.mort && connu->second.processus == terminal.processus;
    if (!fini && !dit && relances_ != 1) {
      inacheve = true;
      terminal.mort = false;
    } else if (!terminal.mort) {
      vivants.insert(pid);
    }
    presents.emplace(terminal.id, std::move(terminal));
  }
  if (inacheve && relances_ == 0) relances_ = relancesMax;
  if (!inacheve) relances_ = 0;
  moyens_.surveiller(vivants);
  const auto avant = std::exchange(connus_, presents);
  for (const auto& [id, terminal] : avant)
    if (!presents.contains(id)) observateur.disparu(id);
  for (const auto& [id, terminal] : presents) {
    const auto connu = avant.find(id);
    // From 3.7 on, tmux tells no number of a program that has ended.
    const bool nouveau =
        connu == avant.end() || (terminal.processus != 0 && connu->second.processus != terminal.processus);
    if (nouveau) observateur.apparu(commeOnLeDit(terminal));
    if (terminal.mort && (nouveau || !connu->second.mort)) observateur.termine(id, terminal.statut);
  }
}

}  // namespace tarnavelle::Plateau
