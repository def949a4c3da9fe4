#include "Tableau.hpp"

#include <algorithm>

#include "Agents/VoliereTmux.hpp"
#include "Noms.hpp"
#include "Socle/Chemin.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

bool memeNom(std::string_view nom, const std::string& replie) { return Texte::replier(nom) == replie; }

bool porte(const Fenetre& fenetre, const std::string& replie) {
  return memeNom(fenetre.nom, replie) || memeNom(fenetre.session, replie) ||
         std::ranges::any_of(fenetre.etiquettes, [&](const std::string& e) { return memeNom(e, replie); });
}

template <class Fiche>
Fenetre fenetreDe(const Fiche& fiche) {
  Fenetre fenetre{.id = fiche.id,
                  .nom = fiche.nom,
                  .scene = fiche.scene,
                  .etiquettes = fiche.etiquettes,
                  .session = fiche.session,
                  .terminal = fiche.terminal,
                  .ouverture = fiche.ouverture};
  if constexpr (std::is_same_v<Fiche, FicheAgent>)
    fenetre.agent = &fiche;
  else
    fenetre.fenetre = &fiche;
  return fenetre;
}

}  // namespace

std::string sessionLaBas(const FicheAgent& agent) {
  return agent.mots.size() > 1 ? agent.mots.back() : agent.session;
}

bool estLaBas(const FicheAgent& agent) {
  return !agent.hote.empty() && agent.terminal.empty() && !agent.termine;
}

OuRefus<Tableau> Tableau::lire(const Registre& registre) {
  Tableau tableau;
  auto scenes = registre.scenes();
  if (!scenes) return Sinon{refus(scenes.raison())};
  auto agents = registre.agents();
  if (!agents) return Sinon{refus(agents.raison())};
  auto fenetres = registre.fenetres();
  if (!fenetres) return Sinon{refus(fenetres.raison())};
  if (scenes->empty()) return Sinon{ReponsePorte::echec("Le plateau n'a aucune scène.")};
  tableau.scenes = std::move(*scenes);
  tableau.agents = std::move(*agents);
  tableau.fiches = std::move(*fenetres);
  return tableau;
}

const FicheScene& Tableau::visible() const {
  const auto trouvee = std::ranges::find(scenes, true, &FicheScene::visible);
  return trouvee == scenes.end() ? scenes.front() : *trouvee;
}

const FicheScene* Tableau::scene(std::int64_t numero) const {
  const auto trouvee = std::ranges::find(scenes, numero, &FicheScene::numero);
  return trouvee == scenes.end() ? nullptr : &*trouvee;
}

const FicheScene* Tableau::scene(std::string_view nom) const {
  const std::string replie = Texte::replier(nom);
  for (const FicheScene& s : scenes)
    if (memeNom(s.nom, replie) || memeNom(s.dossier, replie) ||
        memeNom(Chemin::dernierComposant(s.dossier), replie))
      return &s;
  return nullptr;
}

std::vector<Fenetre> Tableau::fenetres() const {
  std::vector<Fenetre> toutes;
  for (const FicheFenetre& f : fiches) toutes.push_back(fenetreDe(f));
  for (const FicheAgent& a : agents)
    if (a.ouvert) toutes.push_back(fenetreDe(a));
  std::ranges::stable_sort(toutes, {}, &Fenetre::ouverture);
  return toutes;
}

std::optional<Fenetre> Tableau::chercher(std::string_view nom) const {
  const std::string replie = Texte::replier(nom);
  for (const Fenetre& f : fenetres())
    if (replie.empty() ? f.id == visible().auRegard : porte(f, replie)) return f;
  return std::nullopt;
}

const FicheAgent* Tableau::ferme(std::string_view nom) const {
  const std::string replie = Texte::replier(nom);
  if (replie.empty()) return nullptr;
  for (const FicheAgent& a : agents)
    if (!a.ouvert && porte(fenetreDe(a), replie)) return &a;
  return nullptr;
}

std::optional<ReponsePorte> Tableau::refusFerme(std::string_view nom) const {
  const FicheAgent* agent = ferme(nom);
  if (!agent) return std::nullopt;
  return ReponsePorte::echec(agent->nom + " est fermé : focus le rouvre.");
}

OuRefus<Fenetre> Tableau::fenetre(const std::string& nom) const {
  if (auto trouvee = chercher(nom)) return *trouvee;
  if (auto refus = refusFerme(nom)) return Sinon{*std::move(refus)};
  if (vide(nom)) return Sinon{ReponsePorte::echec("Aucune fenêtre n'est au regard : nomme-la.")};
  std::vector<std::string> noms;
  for (const Fenetre& f : fenetres()) noms.push_back(f.nom);
  return Sinon{
      ReponsePorte::echec("Aucune fenêtre ne s'appelle " + cite(nom) + ". Ouvertes : " + enumerer(noms) + ".")};
}

std::string Tableau::nomsDesAgentsOuverts() const {
  std::vector<std::string> noms;
  for (const Fenetre& f : fenetres())
    if (f.agent) noms.push_back(f.nom);
  return enumerer(noms);
}

OuRefus<FicheAgent> Tableau::agentOuvert(const std::string& nom) const {
  const auto trouvee = chercher(nom);
  if (trouvee && trouvee->agent) return *trouvee->agent;
  if (auto refus = trouvee ? std::nullopt : refusFerme(nom)) return Sinon{*std::move(refus)};
  const std::string sujet = vide(nom) ? "Aucun agent n'est au regard" : "Aucun agent ne s'appelle " + cite(nom);
  return Sinon{ReponsePorte::echec(sujet + ". Ouverts : " + nomsDesAgentsOuverts() + ".")};
}

OuRefus<FicheAgent> Tableau::agent(const std::string& nom) const {
  if (vide(nom)) return Sinon{manque("agent")};
  const std::string replie = Texte::replier(nom);
  for (const FicheAgent& a : agents)
    if (porte(fenetreDe(a), replie)) return a;
  return Sinon{ReponsePorte::echec("Aucun agent ne s'appelle " + cite(nom) +
                                   ". Ouverts : " + nomsDesAgentsOuverts() + ".")};
}

OuRefus<Fenetre> Tableau::aEcran(const std::optional<Fenetre>& trouvee, const std::string& nom) const {
  if (trouvee && (trouvee->agent || !trouvee->session.empty())) return *trouvee;
  return Sinon{agentOuvert(nom).raison()};
}

OuRefus<Fenetre> Tableau::terminalOuvert(const std::string& nom) const { return aEcran(chercher(nom), nom); }

OuRefus<Fenetre> Tableau::terminal(const std::string& nom) const {
  if (vide(nom)) return Sinon{manque("agent")};
  const std::string replie = Texte::replier(nom);
  for (const FicheAgent& a : agents)
    if (porte(fenetreDe(a), replie)) return fenetreDe(a);
  return aEcran(chercher(nom), nom);
}

const FicheAgent* Tableau::parId(std::string_view id) const {
  const auto trouve = std::ranges::find(agents, id, &FicheAgent::id);
  return trouve == agents.end() ? nullptr : &*trouve;
}

bool Tableau::pris(std::string_view nom) const {
  const std::string replie = Texte::replier(nom);
  return std::ranges::any_of(agents, [&](const FicheAgent& a) { return porte(fenetreDe(a), replie); }) ||
         std::ranges::any_of(fiches, [&](const FicheFenetre& f) { return porte(fenetreDe(f), replie); });
}

Date::Instant Tableau::ouverture(Date::Instant maintenant) const {
  for (const FicheAgent& a : agents)
    maintenant = std::max(maintenant, a.ouverture + std::chrono::milliseconds(1));
  for (const FicheFenetre& f : fiches)
    maintenant = std::max(maintenant, f.ouverture + std::chrono::milliseconds(1));
  return maintenant;
}

std::string Tableau::sessionLibre(const std::string& programme,
                                  const std::function<bool(const std::string&)>& prise) const {
  for (std::int64_t rang = 1;; ++rang) {
    std::string nom = VoliereTmux::nommer({.id = programme, .rang = rang});
    if (!pris(nom) && !prise(nom)) return nom;
  }
}

bool vide(std::string_view texte) { return Texte::rogner(texte).empty(); }

ReponsePorte manque(std::string_view argument) {
  return ReponsePorte::echec("Il manque « " + std::string(argument) + " ».");
}

std::optional<ReponsePorte> tropLong(std::string_view argument, std::string_view valeur,
                                     std::size_t octetsMax) {
  if (valeur.size() <= octetsMax) return std::nullopt;
  return ReponsePorte::echec("« " + std::string(argument) + " » est trop long : " + std::to_string(octetsMax) +
                             " octets au plus.");
}

std::optional<ReponsePorte> refusTexte(std::string_view argument, std::string_view valeur) {
  return vide(valeur) ? manque(argument) : tropLong(argument, valeur);
}

ReponsePorte refus(const Avarie& avarie) { return ReponsePorte::echec(avarie.phrase); }

}  // namespace tarnavelle::Plateau
