#include "Monde.hpp"

#include <algorithm>
#include <utility>

#include "Noms.hpp"
#include "Socle/Chemin.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::PorteEssai {
namespace {

bool memeNom(std::string_view nom, const std::string& replie) { return replier(nom) == replie; }

bool demandeLaSortie(std::string_view consigne) {
  const std::string repliee = replier(consigne);
  return repliee == "exit" || repliee == "/exit" || repliee == "/quit";
}

template <class Element>
Element* ouRien(std::list<Element>& liste, typename std::list<Element>::iterator element) {
  return element == liste.end() ? nullptr : &*element;
}

}  // namespace

void Agent::demarrer() { afficher(cli + " dans " + dossier); }

void Agent::recevoir(std::string_view texte, bool valider, Instant maintenant) {
  saisie_ = Texte::tronquer(saisie_ + std::string(texte), 4 * caracteresMax);
  if (!valider) return afficher("(saisie) " + saisie_);
  consigne_ = std::exchange(saisie_, {});
  afficher("> " + consigne_);
  aFini_ = false;
  if (demandeLaSortie(consigne_)) {
    afficher("[processus terminé]");
    passer(EtatAgent::sorti);
    return;
  }
  afficher("Au travail…");
  fin_ = maintenant + dureeTravail;
  passer(EtatAgent::travaille);
}

void Agent::declarerFini(std::string_view note) {
  afficher(note.empty() ? "[fini]" : "[fini] " + std::string(note));
  aFini_ = true;
  signaler(Evenement::fini);
  passer(EtatAgent::repos);
}

void Agent::declarerBloque(std::string_view raison) {
  afficher("[bloqué] " + std::string(raison));
  aFini_ = false;
  passer(EtatAgent::besoin);
}

void Agent::actualiser(Instant maintenant) {
  if (etat_ != EtatAgent::travaille || maintenant < fin_) return;
  afficher("Fait : " + consigne_);
  passer(EtatAgent::repos);
}

std::optional<Instant> Agent::finDuTravail() const {
  return etat_ == EtatAgent::travaille ? std::optional(fin_) : std::nullopt;
}

bool Agent::est(Evenement evenement) const {
  switch (evenement) {
    case Evenement::idle: return etat_ == EtatAgent::repos || etat_ == EtatAgent::besoin;
    case Evenement::besoin: return etat_ == EtatAgent::besoin;
    case Evenement::fini: return aFini_;
    case Evenement::mort: return etat_ == EtatAgent::sorti;
  }
  return false;
}

std::uint64_t Agent::passages(Evenement evenement) const {
  return passages_[static_cast<std::size_t>(evenement)];
}

void Agent::afficher(std::string_view texte) {
  while (true) {
    const auto saut = texte.find_first_of("\r\n");
    ecran_.push_back(Texte::tronquer(texte.substr(0, saut), caracteresMax));
    if (ecran_.size() > lignesMax) ecran_.pop_front();
    if (saut == std::string_view::npos) break;
    texte.remove_prefix(saut + 1);
  }
  ++revision_;
}

void Agent::passer(EtatAgent etat) {
  const bool calme = est(Evenement::idle);
  const EtatAgent avant = std::exchange(etat_, etat);
  if (!calme && est(Evenement::idle)) signaler(Evenement::idle);
  if (avant != etat && etat == EtatAgent::besoin) signaler(Evenement::besoin);
  if (avant != etat && etat == EtatAgent::sorti) signaler(Evenement::mort);
}

void Agent::signaler(Evenement evenement) { ++passages_[static_cast<std::size_t>(evenement)]; }

Monde Monde::depart() {
  Monde monde;
  monde.scenes = {{.nom = "Sources", .dossier = "~/Sources", .auRegard = {}},
                  {.nom = "Atelier", .dossier = "~/Atelier", .auRegard = {}}};
  monde.indicatifs = rosterUsine();
  monde.fenetres.push_back({.nom = "Forge", .scene = "Sources", .agent = 0, .etiquettes = {}});
  monde.ouvrir({.cli = "claude", .dossier = "~/Sources", .hote = {}, .scene = "Sources", .noms = {"Merlin"}});
  monde.ouvrir({.cli = "codex", .dossier = "~/Atelier", .hote = {}, .scene = "Atelier", .noms = {"Milan"}});
  return monde;
}

Scene* Monde::scene(std::string_view nom) {
  const std::string replie = replier(nom);
  for (Scene& s : scenes)
    if (memeNom(s.nom, replie) || memeNom(s.dossier, replie) ||
        memeNom(Chemin::dernierComposant(s.dossier), replie))
      return &s;
  return nullptr;
}

Fenetre* Monde::fenetre(std::string_view nom) {
  const std::string replie = replier(replier(nom).empty() ? std::string_view(sceneVisible().auRegard) : nom);
  if (replie.empty()) return nullptr;
  return ouRien(fenetres, std::ranges::find_if(fenetres, [&](const Fenetre& f) {
                  return memeNom(f.nom, replie) || std::ranges::any_of(f.etiquettes, [&](const std::string& e) {
                           return memeNom(e, replie);
                         });
                }));
}

Agent* Monde::agent(std::string_view nom) {
  const std::string replie = replier(nom);
  if (replie.empty()) return nullptr;
  const auto trouve = std::ranges::find_if(
      agents, [&](const Agent& a) { return memeNom(a.nom, replie) || memeNom(a.tmux, replie); });
  if (trouve != agents.end()) return &*trouve;
  const Fenetre* etiquetee = fenetre(nom);
  return etiquetee ? agent(etiquetee->agent) : nullptr;
}

Agent* Monde::agent(std::uint64_t id) { return ouRien(agents, std::ranges::find(agents, id, &Agent::id)); }

Fenetre* Monde::fenetreDe(const Agent& agent) {
  return ouRien(fenetres, std::ranges::find(fenetres, agent.id, &Fenetre::agent));
}

bool Monde::pris(std::string_view nom) { return fenetre(nom) || agent(nom); }

std::vector<std::string> Monde::nomsDesFenetres() const {
  std::vector<std::string> noms;
  for (const Fenetre& f : fenetres) noms.push_back(f.nom);
  return noms;
}

std::vector<std::string> Monde::nomsDesAgentsOuverts() const {
  std::vector<std::string> noms;
  for (const Fenetre& f : fenetres)
    if (f.agent != 0) noms.push_back(f.nom);
  return noms;
}

Agent& Monde::ouvrir(Ouverture ouverture) {
  Agent agent;
  agent.id = ++dernierId_;
  agent.nom = prochainNom(ouverture.noms, [this](const std::string& nom) { return pris(nom); });
  agent.tmux = sessionLibre(ouverture.cli);
  agent.cli = std::move(ouverture.cli);
  agent.dossier = std::move(ouverture.dossier);
  agent.hote = std::move(ouverture.hote);
  agent.demarrer();
  fenetres.push_back({.nom = agent.nom, .scene = ouverture.scene, .agent = agent.id, .etiquettes = {}});
  if (Scene* s = scene(ouverture.scene)) s->auRegard = agent.nom;
  return agents.emplace_back(std::move(agent));
}

void Monde::fermer(const Fenetre& fenetre) {
  const std::uint64_t id = fenetre.agent;
  const std::string nom = fenetre.nom;
  const std::string nomScene = fenetre.scene;
  std::erase_if(fenetres, [&](const Fenetre& f) { return f.nom == nom; });
  std::erase_if(agents, [&](const Agent& a) { return a.id == id && a.etat() == EtatAgent::sorti; });
  Scene* s = scene(nomScene);
  if (!s || s->auRegard != nom) return;
  s->auRegard.clear();
  for (const Fenetre& f : fenetres)
    if (f.scene == nomScene) s->auRegard = f.nom;  // the last opened comes into view
}

void Monde::actualiser(Instant maintenant) {
  for (Agent& a : agents) a.actualiser(maintenant);
}

std::optional<Instant> Monde::prochainChangement() const {
  std::optional<Instant> prochain;
  for (const Agent& a : agents)
    if (const auto fin = a.finDuTravail(); fin && (!prochain || *fin < *prochain)) prochain = fin;
  return prochain;
}

std::string Monde::sessionLibre(const std::string& cli) const {
  const std::string base = "tarnavelle-" + cli;
  std::string nom = base;
  for (unsigned rang = 2; std::ranges::find(agents, nom, &Agent::tmux) != agents.end(); ++rang)
    nom = base + "-" + std::to_string(rang);
  return nom;
}

}  // namespace tarnavelle::PorteEssai
