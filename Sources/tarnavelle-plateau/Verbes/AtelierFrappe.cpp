// How one caller at a time types into a terminal.
#include <algorithm>

#include "Atelier.hpp"

namespace tarnavelle::Plateau {
namespace {

/// The texts that tell a dialog, without those that the screen shows anyway: they stand in the conversation.
std::vector<std::string> absents(std::vector<std::string> gardes, const Ecran& ecran) {
  std::erase_if(gardes, [&](const std::string& garde) {
    return std::ranges::any_of(
        ecran.lignes, [&](const std::string& ligne) { return ligne.find(garde) != std::string::npos; });
  });
  if (gardes.size() > Terminaux::saufSiMax) gardes.resize(Terminaux::saufSiMax);
  return gardes;
}

constexpr std::size_t effacementMax = 200;  ///< keys that empty a box

}  // namespace

Atelier::Tour::Tour(Atelier& atelier, const std::string& id) : atelier_(atelier), id_(id) {
  std::unique_lock verrou(atelier_.mutex_);
  numero_ = ++atelier_.dernierTour_;
  auto& file = atelier_.files_[id_];
  file.push_back(numero_);
  const Instant limite = atelier_.sol.horloge.maintenant() + tourMax;
  while (file.front() != numero_ && !atelier_.arrete_ && atelier_.sol.horloge.maintenant() < limite)
    atelier_.sol.horloge.attendre(atelier_.reveil_, verrou, limite);
  aMoi_ = file.front() == numero_ && !atelier_.arrete_;
}

Atelier::Tour::~Tour() {
  const std::lock_guard verrou(atelier_.mutex_);
  const auto place = atelier_.files_.find(id_);
  std::erase(place->second, numero_);
  if (place->second.empty()) atelier_.files_.erase(place);
  ++atelier_.battements_;
  atelier_.reveil_.notify_all();
}

Atelier::Guet::Guet(Atelier& atelier, std::string id, IdTerminal terminal)
    : atelier_(atelier), id_(std::move(id)), terminal_(std::move(terminal)) {
  atelier_.sol.terminaux.guetter(terminal_);
  atelier_.sol.veille.guetter(id_);
  if (atelier_.sol.lointain) atelier_.sol.lointain->guetter(id_);
}

Atelier::Guet::~Guet() {
  if (atelier_.sol.lointain) atelier_.sol.lointain->laisser(id_);
  atelier_.sol.veille.laisser(id_);
  atelier_.sol.terminaux.laisser(terminal_);
}

Livraison Atelier::taper(const FicheAgent& agent, Saisie::Consigne consigne) {
  const Tour tour(*this, agent.id);
  if (!tour)
    return {Livraison::Sort::refuse, arrete() ? Livraison::Raison::porteFermee : Livraison::Raison::occupe};
  // It may have been started anew, or closed, while its turn was awaited.
  const auto lu = sol.registre.agent(agent.id);
  if (lu && !*lu) return {Livraison::Sort::refuse, Livraison::Raison::mort};
  const FicheAgent la = lu ? **lu : agent;
  // Not taken up yet: what it does, and how its screen reads, is known to nobody.
  if (!sol.veille.constat(agent.id).suivie)
    return {Livraison::Sort::refuse, Livraison::Raison::panne, Panne::muet};
  const Guet guet(*this, la);
  Laisse avant;
  {
    const std::lock_guard verrou(mutex_);
    if (const auto laisse = laisses_.find(agent.id); laisse != laisses_.end()) avant = laisse->second;
  }
  const std::string texte = collable(consigne.texte);  // what the box will show
  consigne.texte = texte;
  const bool valider = consigne.valider;
  consigne.dejaPose = avant.pose;
  consigne.derniere = avant.soumis;
  consigne.vue = avant.vue;
  consigne.lisible = sol.veille.saitLire(agent.id);
  consigne.commande = sol.veille.signes(agent.id).commande(texte);
  Saisie saisie(std::move(consigne), reglages.saisie, sol.horloge.maintenant());
  const Livraison livraison = mener(saisie, la, texte);
  const std::lock_guard verrou(mutex_);
  if (livraison.sort == Livraison::Sort::refuse) return livraison;
  const std::string boite = saisie.tout();
  laisses_[agent.id] = {.pose = valider ? "" : boite, .soumis = valider ? boite : "", .vue = saisie.vue()};
  return livraison;
}

Livraison Atelier::mener(Saisie& saisie, const FicheAgent& agent, const std::string& texte) {
  const IdTerminal terminal = terminalDe(agent);
  std::optional<std::uint64_t> rupturesAvant;  // of the link, when the text went through it
  bool validee = false;
  while (true) {
    const auto vus = battements();
    const auto ecran = sol.terminaux.ecran(terminal);
    if (!ecran && ecran.raison() != Panne::mort)
      return {validee ? Livraison::Sort::inconnu : Livraison::Sort::refuse, Livraison::Raison::panne,
              ecran.raison()};
    const Constat vu = sol.veille.constat(agent.id);
    const bool rompu = vu.situation.activite == Etat::rompue;
    const bool coupe = rupturesAvant && vu.ruptures != *rupturesAvant;
    if (rompu && !rupturesAvant) return {Livraison::Sort::refuse, Livraison::Raison::lienRompu};
    Saisie::Suite suite = saisie.regard({.lecture = ecran ? sol.veille.lire(agent.id, *ecran) : LectureEcran{},
                                         .mort = !ecran || vu.situation.activite == Etat::sorti,
                                         .besoin = vu.situation.activite == Etat::besoin && !vu.repondu,
                                         .soumise = validee && vu.soumise},
                                        sol.horloge.maintenant());
    if (const auto* effacer = std::get_if<Saisie::Effacer>(&suite)) {
      // A line as it is shown, then what ends the one above.
      // codex leaves the cursor before what it refused.
      std::vector<Touche> touches(std::min(2 * effacer->lignes, effacementMax), "ctrl+u");
      touches.emplace_back("ctrl+k");
      suite = saisie.efface(sol.terminaux.presser(terminal, touches), sol.horloge.maintenant());
    } else if (std::holds_alternative<Saisie::Coller>(suite)) {
      rupturesAvant = vu.ruptures;
      suite = saisie.colle(sol.terminaux.coller(terminal, sol.veille.signes(agent.id).aPoser(texte)),
                           sol.horloge.maintenant());
    } else if (std::holds_alternative<Saisie::Valider>(suite) && coupe) {
      // What the box shows may be the beginning of it.
      return {validee ? Livraison::Sort::inconnu : Livraison::Sort::pose, Livraison::Raison::lienCoupe};
    } else if (std::holds_alternative<Saisie::Valider>(suite)) {
      if (!validee) {  // before Enter: its hook may come first
        sol.registre.noterConsigne(agent.id, texte, date());
        sol.veille.consigne(agent.id, saisie.tout());
        validee = true;
      }
      const auto gardes = ecran ? absents(sol.veille.gardes(agent.id), *ecran) : std::vector<std::string>{};
      suite = saisie.valide(sol.terminaux.valider(terminal, gardes), sol.horloge.maintenant());
    }
    if (const auto* livraison = std::get_if<Livraison>(&suite)) {
      if (livraison->sort == Livraison::Sort::soumis)
        sol.veille.partie(agent.id, sol.veille.signes(agent.id).commande(texte));
      if (coupe && livraison->sort == Livraison::Sort::inconnu)
        return {Livraison::Sort::inconnu, rompu ? Livraison::Raison::lienRompu : Livraison::Raison::lienCoupe};
      return *livraison;
    }
    const Instant quand = std::get<Saisie::Regarder>(suite).auPlusTard;
    if (!dormir(vus, quand))
      return {validee ? Livraison::Sort::inconnu : Livraison::Sort::refuse, Livraison::Raison::porteFermee};
  }
}

}  // namespace tarnavelle::Plateau
