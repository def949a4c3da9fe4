#include "Etats/VeilleReelle.hpp"

#include <algorithm>
#include <utility>

#include "Agents/CarnetDeVol.hpp"

namespace tarnavelle::Plateau {
namespace {

using namespace std::chrono_literals;

constexpr std::string_view suffixe = ".jsonl";

}  // namespace

VeilleReelle::VeilleReelle(Terminaux& terminaux, CatalogueRegles regles, std::filesystem::path dossier,
                           Montre montre)
    : terminaux_(terminaux),
      catalogue_(std::move(regles)),
      dossier_(std::move(dossier)),
      montre_(std::move(montre)),
      guet_(dossier_) {}

VeilleReelle::~VeilleReelle() {
  {
    const std::lock_guard verrou(mutex_);
    arret_ = true;
  }
  guet_.interrompre();
  if (fil_.joinable()) fil_.join();
}

std::filesystem::path VeilleReelle::journalDe(const std::filesystem::path& dossier, std::string_view cle) {
  return dossier / CarnetDeVol::nomSur(cle).append(suffixe);
}

void VeilleReelle::demarrer() {
  if (!fil_.joinable()) fil_ = std::thread([this] { veiller(); });
}

void VeilleReelle::veiller() {
  constexpr auto longtemps = 1h;
  while (true) {
    {
      const std::lock_guard verrou(mutex_);
      if (arret_) return;
    }
    const auto regard = prochainRegard();
    auto attente = std::chrono::ceil<std::chrono::milliseconds>(regard ? *regard - montre_()
                                                                       : Instant::duration(longtemps));
    const auto changements = guet_.attendre(std::clamp<std::chrono::milliseconds>(attente, 0ms, longtemps));
    lireJournaux(changements);
    actualiser(montre_());
  }
}

void VeilleReelle::suivre(const std::string& cle, const std::string& programme, const IdTerminal& terminal) {
  {
    const std::lock_guard verrou(mutex_);
    const Instant maintenant = montre_();
    const Regles& regles = catalogue_.de(programme);
    Suivie suivie{terminal, regles, Suivi(regles, programme, maintenant), JournalCrochets(journal(cle)),
                  ++generations_};
    const auto anciens = suivie.journal.lire();
    for (const Crochet& crochet : anciens) suivie.suivi.crochet(crochet, maintenant);
    // What the screen shows may be newer than the last hook.
    if (!anciens.empty()) suivie.suivi.revoir(maintenant);
    const auto avant = suivies_.find(cle);
    if (avant != suivies_.end()) suivie.guets = avant->second.guets;
    suivies_.insert_or_assign(cle, std::move(suivie));
  }
  guet_.interrompre();
}

void VeilleReelle::oublier(const std::string& cle) {
  const std::lock_guard verrou(mutex_);
  suivies_.erase(cle);
  JournalCrochets::retirer(journal(cle));
}

/// Does something to an agent that is followed; the next round tells what comes of it.
void VeilleReelle::modifier(const std::string& cle, const std::function<void(Suivi&, Instant)>& action) {
  {
    const std::lock_guard verrou(mutex_);
    const auto suivie = suivies_.find(cle);
    if (suivie == suivies_.end()) return;
    action(suivie->second.suivi, montre_());
  }
  guet_.interrompre();  // the next look may be due sooner
}

void VeilleReelle::termine(const std::string& cle, std::optional<int> statut) {
  modifier(cle, [&](Suivi& suivi, Instant maintenant) { suivi.termine(statut, maintenant); });
}

Constat VeilleReelle::constat(const std::string& cle) {
  const std::lock_guard verrou(mutex_);
  const auto suivie = suivies_.find(cle);
  if (suivie == suivies_.end()) return {};
  const Suivi& suivi = suivie->second.suivi;
  return {.suivie = true,
          .situation = suivi.situation(),
          .repose = suivi.repose(),
          .soumise = suivi.soumise(),
          .ruptures = suivi.ruptures(),
          .repondu = suivi.repondu(),
          .conversation = suivi.conversation(),
          .entamee = suivi.entamee(),
          .transcript = suivi.transcript(),
          .reponse = suivi.reponse()};
}

Regles VeilleReelle::regles(const std::string& cle) {
  const std::lock_guard verrou(mutex_);
  const auto suivie = suivies_.find(cle);
  return suivie == suivies_.end() ? catalogue_.de("") : suivie->second.regles;
}

LectureEcran VeilleReelle::lire(const std::string& cle, const Ecran& ecran) {
  bool reveiller = false;
  LectureEcran lecture;
  {
    const std::lock_guard verrou(mutex_);
    const auto suivie = suivies_.find(cle);
    if (suivie == suivies_.end()) return catalogue_.de("").lire(ecran);
    Suivi& suivi = suivie->second.suivi;  // it has cost nothing to look
    const bool attendu = suivie->second.guets > 0;
    const auto avant = suivi.revision();
    const auto regardAvant = suivi.prochainRegard(attendu);
    suivi.ecran(ecran, montre_());
    const auto regard = suivi.prochainRegard(attendu);
    reveiller = suivi.revision() != avant || (regard && (!regardAvant || *regard < *regardAvant));
    lecture = suivi.situation().activite == Etat::sorti ? suivie->second.regles.lire(ecran) : *suivi.lecture();
  }
  if (reveiller) guet_.interrompre();
  return lecture;
}

bool VeilleReelle::saitLire(const std::string& cle) { return regles(cle).saitLire(); }

std::vector<std::string> VeilleReelle::gardes(const std::string& cle) { return regles(cle).gardes(); }

Signes VeilleReelle::signes(const std::string& cle) { return regles(cle).signes(); }

std::vector<std::string> VeilleReelle::depuisConsigne(const std::string& cle,
                                                      const std::vector<std::string>& lignes) {
  std::string consigne;
  {
    const std::lock_guard verrou(mutex_);
    if (const auto suivie = suivies_.find(cle); suivie != suivies_.end())
      consigne = suivie->second.suivi.texteConsigne();
  }
  return regles(cle).depuisConsigne(lignes, consigne);
}

void VeilleReelle::consigne(const std::string& cle, std::string_view texte) {
  modifier(cle, [&](Suivi& suivi, Instant maintenant) { suivi.consigne(texte, maintenant); });
}

void VeilleReelle::partie(const std::string& cle, bool commande) {
  modifier(cle, [&](Suivi& suivi, Instant maintenant) { suivi.partie(commande, maintenant); });
}

void VeilleReelle::touches(const std::string& cle, const std::vector<Touche>& touches) {
  modifier(cle, [&](Suivi& suivi, Instant maintenant) { suivi.touches(touches, maintenant); });
}

void VeilleReelle::declarerFini(const std::string& cle) {
  modifier(cle, [](Suivi& suivi, Instant maintenant) { suivi.declarerFini(maintenant); });
}

void VeilleReelle::declarerBloque(const std::string& cle, std::string_view raison) {
  modifier(cle, [&](Suivi& suivi, Instant maintenant) { suivi.declarerBloque(raison, maintenant); });
}

void VeilleReelle::guetter(const std::string& cle) {
  {
    const std::lock_guard verrou(mutex_);
    if (const auto suivie = suivies_.find(cle); suivie != suivies_.end()) ++suivie->second.guets;
  }
  guet_.interrompre();
}

void VeilleReelle::laisser(const std::string& cle) {
  const std::lock_guard verrou(mutex_);
  const auto suivie = suivies_.find(cle);
  if (suivie != suivies_.end() && suivie->second.guets > 0) --suivie->second.guets;
}

void VeilleReelle::lireJournaux(const GuetFichiers::Changements& changements) {
  if (!changements.tous && changements.noms.empty()) return;
  {
    const std::lock_guard verrou(mutex_);
    for (auto& [cle, suivie] : suivies_) {
      const auto& journal = suivie.journal.fichier();
      const auto touche = [&](const std::filesystem::path& f) {
        return changements.noms.contains(f.filename().string());
      };
      if (!changements.tous && !touche(journal) && !touche(JournalCrochets::ancien(journal))) continue;
      for (const Crochet& crochet : suivie.journal.lire()) suivie.suivi.crochet(crochet, montre_());
    }
  }
  dire();
}

/// Looks at one screen that is due; false when there is none, or when the terminals do not answer: each of them
/// would take as long to say so.
bool VeilleReelle::regarderUn(Instant maintenant) {
  std::string cle;
  IdTerminal terminal;
  std::uint64_t generation = 0;
  {
    const std::lock_guard verrou(mutex_);
    const auto due = std::ranges::find_if(suivies_, [&](const auto& entree) {
      const Suivie& suivie = entree.second;
      const auto quand = suivie.suivi.prochainRegard(suivie.guets > 0);
      return !suivie.regarde && quand && *quand <= maintenant;
    });
    if (due == suivies_.end()) return false;
    due->second.regarde = true;
    cle = due->first;
    terminal = due->second.terminal;
    generation = due->second.generation;
  }
  const auto ecran = terminaux_.ecran(terminal);
  {
    const std::lock_guard verrou(mutex_);
    const auto suivie = suivies_.find(cle);
    if (suivie == suivies_.end() || suivie->second.generation != generation) return true;
    suivie->second.regarde = false;
    Suivi& suivi = suivie->second.suivi;
    if (ecran)
      suivi.ecran(*ecran, montre_());
    else if (ecran.raison() == Panne::mort || ecran.raison() == Panne::inconnu)
      suivi.termine(std::nullopt, montre_());
    else
      suivi.sansEcran(montre_());
  }
  // Whoever else waits did not count on this agent meanwhile.
  if (std::this_thread::get_id() != fil_.get_id()) guet_.interrompre();
  return ecran || (ecran.raison() != Panne::muet && ecran.raison() != Panne::absent);
}

void VeilleReelle::actualiser(Instant maintenant) {
  while (regarderUn(maintenant)) {
  }
  dire();
}

std::optional<Instant> VeilleReelle::prochainRegard() {
  const std::lock_guard verrou(mutex_);
  std::optional<Instant> premier;
  for (const auto& [cle, suivie] : suivies_) {
    if (suivie.regarde) continue;
    const auto quand = suivie.suivi.prochainRegard(suivie.guets > 0);
    if (quand && (!premier || *quand < *premier)) premier = quand;
  }
  return premier;
}

void VeilleReelle::observer(std::function<void(const std::string& cle)> change) {
  const std::lock_guard verrou(mutexObservateur_);
  change_ = std::move(change);
}

std::vector<std::string> VeilleReelle::changes() {
  const std::lock_guard verrou(mutex_);
  std::vector<std::string> cles;
  for (auto& [cle, suivie] : suivies_)
    if (std::exchange(suivie.revisionDite, suivie.suivi.revision()) != suivie.suivi.revision())
      cles.push_back(cle);
  return cles;
}

void VeilleReelle::dire() {
  const auto cles = changes();
  if (cles.empty()) return;
  const std::lock_guard verrou(mutexObservateur_);
  if (!change_) return;
  for (const std::string& cle : cles) change_(cle);
}

}  // namespace tarnavelle::Plateau
