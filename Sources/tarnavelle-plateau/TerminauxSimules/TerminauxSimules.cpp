#include "TerminauxSimules/TerminauxSimules.hpp"

#include <algorithm>

#include "Socle/Inoffensif.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::string_view invite = "(saisie) ";
constexpr std::string_view question = "Continuer ? o, n";

bool demandeLaSortie(std::string_view consigne) {
  const std::string repliee = Texte::replier(consigne);
  return repliee == "exit" || repliee == "/exit" || repliee == "/quit";
}

}  // namespace

void TerminauxSimules::Simule::naitre(const Lancement& lancement, Instant maintenant) {
  terminal.cle = lancement.cle;
  terminal.session = lancement.session;
  terminal.mort = false;
  terminal.statut.reset();
  terminal.commande = lancement.mots.empty() ? "" : lancement.mots.front();
  etat = Etat::repos;
  depuis = maintenant;
  saisie.clear();
  lignes.clear();
  afficher(terminal.commande + " dans " + lancement.dossier);
}

void TerminauxSimules::Simule::afficher(std::string_view texte) {
  while (true) {
    const auto saut = texte.find_first_of("\r\n");
    lignes.push_back(Texte::tronquer(texte.substr(0, saut), caracteresMax));
    if (lignes.size() > lignesMax) lignes.pop_front();
    if (saut == std::string_view::npos) break;
    texte.remove_prefix(saut + 1);
  }
}

void TerminauxSimules::Simule::passer(Etat vers, Instant maintenant) {
  if (etat != vers) depuis = maintenant;
  etat = vers;
}

void TerminauxSimules::Simule::soumettre(Instant maintenant) {
  consigne = std::exchange(saisie, {});
  ++soumises;
  afficher("> " + consigne);
  if (demandeLaSortie(consigne)) {
    afficher("[processus terminé]");
    terminal.mort = true;
    terminal.statut = 0;
    return passer(Etat::sorti, maintenant);
  }
  if (Texte::replier(consigne).starts_with("demande ")) {
    afficher(question);
    return passer(Etat::besoin, maintenant);
  }
  afficher("Au travail…");
  fin = maintenant + dureeTravail;
  passer(Etat::travaille, maintenant);
}

void TerminauxSimules::Simule::presser(const Touche& touche, Instant maintenant) {
  if (etat == Etat::besoin) {
    if (touche != "o" && touche != "n" && touche != "esc") return;
    afficher(touche == "o" ? "Fait : " + consigne : "Refusé : " + consigne);
    return passer(Etat::repos, maintenant);
  }
  if (touche == "entree") return soumettre(maintenant);
  if (touche == "ctrl+u") return saisie.clear();
  if ((touche == "esc" || touche == "ctrl+c") && etat == Etat::travaille) {
    afficher("Interrompu : " + consigne);
    return passer(Etat::repos, maintenant);
  }
  if (touche == "espace") saisie += ' ';
  if (Texte::caracteres(touche) == 1) saisie += touche;
}

TerminauxSimules::Simule* TerminauxSimules::chercher(const IdTerminal& id) {
  const auto place = simules_.find(id);
  return place == simules_.end() || !id.admet(place->second.terminal.cle) ? nullptr : &place->second;
}

Ou<Fait> TerminauxSimules::agir(const IdTerminal& id, const std::function<Ou<Fait>(Simule&)>& geste) {
  std::unique_lock verrou(mutex_);
  Simule* const trouve = chercher(id);
  if (!trouve) return Sinon{Panne::inconnu};
  Simule& simule = *trouve;
  if (simule.terminal.mort) return Sinon{Panne::mort};
  const Ou<Fait> fait = geste(simule);
  ++simule.revision;
  const bool mort = simule.terminal.mort;
  const auto statut = simule.terminal.statut;
  const bool guette = simule.guets > 0;
  Observateur* observateur = observateur_;
  verrou.unlock();
  if (observateur && guette) observateur->ecrit(id);
  if (observateur && mort) observateur->termine(id, statut);
  return fait;
}

Ou<std::vector<Terminal>> TerminauxSimules::lister() {
  const std::lock_guard verrou(mutex_);
  std::vector<Terminal> tous;
  for (const auto& [id, simule] : simules_) tous.push_back(simule.terminal);
  return tous;
}

Ou<Terminal> TerminauxSimules::ouvrir(const Lancement& lancement) {
  const std::lock_guard verrou(mutex_);
  const IdTerminal id{"s" + std::to_string(++dernier_)};
  Simule& simule = simules_[id];
  simule.terminal.id = id;
  simule.terminal.id.cle = lancement.cle;
  simule.naitre(lancement, maintenant_());
  return simule.terminal;
}

Ou<Terminal> TerminauxSimules::relancer(const IdTerminal& id, const Lancement& lancement) {
  const std::lock_guard verrou(mutex_);
  Simule* const trouve = chercher(id);
  if (!trouve) return Sinon{Panne::inconnu};
  if (!trouve->terminal.mort) return Sinon{Panne::refuse};
  trouve->naitre(lancement, maintenant_());
  return trouve->terminal;
}

Ou<Fait> TerminauxSimules::terminer(const IdTerminal& id) {
  const std::lock_guard verrou(mutex_);
  if (!chercher(id)) return Sinon{Panne::inconnu};
  simules_.erase(id);
  return Fait{};
}

Ou<Ecran> TerminauxSimules::ecran(const IdTerminal& id) {
  const std::lock_guard verrou(mutex_);
  Simule* const trouve = chercher(id);
  if (!trouve) return Sinon{Panne::inconnu};
  const Simule& simule = *trouve;
  Ecran ecran;
  ecran.lignes.assign(simule.lignes.begin(), simule.lignes.end());
  if (!simule.saisie.empty())
    ecran.lignes.push_back(Texte::tronquer(std::string(invite) + simule.saisie, caracteresMax));
  ecran.attenuees = ecran.lignes;
  ecran.curseurLigne = static_cast<int>(ecran.lignes.size()) - 1;
  ecran.revision = simule.revision;
  return ecran;
}

Ou<Peinture> TerminauxSimules::peinture(const IdTerminal& id) {
  const auto lu = ecran(id);
  if (!lu) return Sinon{lu.raison()};
  Peinture peinture;
  for (const std::string& ligne : lu->lignes) peinture.lignes.push_back({{.texte = Inoffensif::epurer(ligne)}});
  return peinture;
}

Ou<std::vector<std::string>> TerminauxSimules::historique(const IdTerminal& id, int lignes) {
  auto lu = ecran(id);
  if (!lu) return Sinon{lu.raison()};
  auto& toutes = lu->lignes;
  const auto gardees = std::min(toutes.size(), static_cast<std::size_t>(std::max(lignes, 0)));
  return std::vector(toutes.end() - static_cast<std::ptrdiff_t>(gardees), toutes.end());
}

Ou<Fait> TerminauxSimules::coller(const IdTerminal& id, std::string_view texte) {
  return agir(id, [&](Simule& simule) -> Ou<Fait> {
    // As a real dialog does: the paste is swallowed.
    if (simule.etat != Etat::besoin) simule.saisie += texte;
    return Fait{};
  });
}

Ou<Fait> TerminauxSimules::presser(const IdTerminal& id, const std::vector<Touche>& touches) {
  return agir(id, [&](Simule& simule) -> Ou<Fait> {
    for (const Touche& touche : touches)
      if (!simule.terminal.mort) simule.presser(touche, maintenant_());
    return Fait{};
  });
}

Ou<Fait> TerminauxSimules::valider(const IdTerminal& id, const std::vector<std::string>& saufSi) {
  return agir(id, [&](Simule& simule) -> Ou<Fait> {
    for (const std::string& garde : saufSi)
      if (!simule.lignes.empty() && simule.lignes.back().find(garde) != std::string::npos)
        return Sinon{Panne::condition};
    simule.presser("entree", maintenant_());
    return Fait{};
  });
}

Ou<Fait> TerminauxSimules::redimensionner(const IdTerminal& id, Taille) {
  const std::lock_guard verrou(mutex_);
  if (!chercher(id)) return Sinon{Panne::inconnu};
  return Fait{};
}

void TerminauxSimules::guetter(const IdTerminal& id) {
  const std::lock_guard verrou(mutex_);
  if (Simule* const trouve = chercher(id)) ++trouve->guets;
}

void TerminauxSimules::laisser(const IdTerminal& id) {
  const std::lock_guard verrou(mutex_);
  if (Simule* const trouve = chercher(id)) --trouve->guets;
}

void TerminauxSimules::observer(Observateur* observateur) {
  const std::lock_guard verrou(mutex_);
  observateur_ = observateur;
}

TerminauxSimules::Vie TerminauxSimules::vie(const IdTerminal& id) {
  const std::lock_guard verrou(mutex_);
  const Simule* const trouve = chercher(id);
  if (!trouve) return {};
  const Simule& simule = *trouve;
  return {simule.etat, simule.depuis, simule.saisie, simule.soumises};
}

std::vector<IdTerminal> TerminauxSimules::actualiser(Instant maintenant) {
  std::vector<IdTerminal> changes;
  std::unique_lock verrou(mutex_);
  for (auto& [id, simule] : simules_) {
    if (simule.etat != Etat::travaille || maintenant < simule.fin) continue;
    simule.afficher("Fait : " + simule.consigne);
    simule.passer(Etat::repos, simule.fin);
    ++simule.revision;
    changes.push_back(id);
  }
  Observateur* observateur = observateur_;
  verrou.unlock();
  if (observateur)
    for (const IdTerminal& id : changes) observateur->ecrit(id);
  return changes;
}

std::optional<Instant> TerminauxSimules::finDuTravail() {
  const std::lock_guard verrou(mutex_);
  std::optional<Instant> premiere;
  for (const auto& [id, simule] : simules_)
    if (simule.etat == Etat::travaille && (!premiere || simule.fin < *premiere)) premiere = simule.fin;
  return premiere;
}

}  // namespace tarnavelle::Plateau
