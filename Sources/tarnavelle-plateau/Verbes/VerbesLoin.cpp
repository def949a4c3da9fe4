// Agents that live on other machines, and are not shown here: what is told of them, how they are joined again.
#include <algorithm>
#include <set>

#include "Agents/VoliereTmux.hpp"
#include "Appliquer.hpp"
#include "Noms.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

/// The machines where agents of the board live.
std::set<std::string> machines(const Tableau& tableau) {
  std::set<std::string> hotes;
  for (const FicheAgent& a : tableau.agents)
    if (!a.hote.empty()) hotes.insert(a.hote);
  return hotes;
}

const FicheAgent* deLaSession(const Tableau& tableau, const std::string& hote, const std::string& session) {
  const auto trouve = std::ranges::find_if(tableau.agents, [&](const FicheAgent& a) {
    return a.hote == hote && !a.termine && sessionLaBas(a) == session;
  });
  return trouve == tableau.agents.end() ? nullptr : &*trouve;
}

/// It is shown here already.
ReponsePorte dejaLa(Atelier& atelier, const FicheAgent& agent) {
  const bool rompue = atelier.constat(agent).situation.activite == Etat::rompue;
  if (rompue) atelier.sol.terminaux.presser(terminalDe(agent), {"entree"});
  if (!agent.ouvert) atelier.modifier(agent.id, [](FicheAgent& fiche) { fiche.ouvert = true; });
  return ReponsePorte::succes(
      agent.nom + " est déjà ouvert ici" + (rompue ? ", mais son lien est rompu : nouvel essai." : "."),
      donnees({{"nom", agent.nom}, {"hote", agent.hote}}));
}

ReponsePorte rouvrir(Atelier& atelier, const std::string& id) {
  const Atelier::Tour tour(atelier, id);
  const auto relu = atelier.sol.registre.agent(id);
  if (!relu) return refus(relu.raison());
  if (!*relu) return ReponsePorte::echec("Cet agent vient d'être fermé.");
  FicheAgent agent = **relu;
  if (!tour) return ReponsePorte::echec("D'autres tapent chez " + agent.nom + " depuis trop longtemps.");
  const bool sorti = !estLaBas(agent) && atelier.constat(agent).situation.activite == Etat::sorti;
  if (!estLaBas(agent) && !sorti) return dejaLa(atelier, agent);
  const std::string session = sessionLaBas(agent);
  const auto sessions = atelier.sol.lointain->sessions(agent.hote);
  if (!sessions) return ReponsePorte::echec(sessions.raison());
  if (std::ranges::find(*sessions, session, &Lointain::Session::nom) == sessions->end()) {
    atelier.modifier(id, [](FicheAgent& fiche) { fiche.termine = fiche.ouvert = true; });
    return ReponsePorte::echec("La session " + session + " n'est plus sur " + cite(agent.hote) + " : " +
                               agent.nom + " y a pris fin.");
  }
  if (!agent.terminal.empty()) atelier.sol.terminaux.terminer(terminalDe(agent));
  agent.ouvert = true;
  auto demarre = demarrer(atelier, agent, session);
  if (!demarre) return demarre.raison();
  atelier.sol.registre.regarder(agent.scene, agent.id);
  const auto ouvert =
      attendrePret(atelier, *std::move(demarre), atelier.sol.horloge.maintenant() + atelier.reglages.pretMax);
  return direOuverture(atelier, ouvert,
                       agent.nom + " est rejoint : sa session " + session + " sur " + cite(agent.hote) + ".");
}

/// Takes a session that no agent of the board has.
ReponsePorte accueillir(Atelier& atelier, const std::string& hote, const Lointain::Session& session) {
  const auto nom = VoliereTmux::decomposer(session.nom);
  if (!nom)
    return ReponsePorte::echec("Personne ne sait quel programme tourne dans " + cite(session.nom) + ".");
  if (auto plein = refusOuverture(atelier, nom->id, 1)) return *plein;
  auto lance = lancerUnAgent(
      atelier,
      {.programme = nom->id, .dossier = session.dossier, .hote = hote, .nom = {}, .laBas = session.nom});
  if (!lance) return lance.raison();
  const auto ouvert =
      attendrePret(atelier, *std::move(lance), atelier.sol.horloge.maintenant() + atelier.reglages.pretMax);
  if (auto refus = refusParti(atelier, ouvert)) return *refus;
  return direOuverture(
      atelier, ouvert,
      ouvert.agent.nom + " est rejoint : sa session " + session.nom + " sur " + cite(hote) + ".");
}

}  // namespace

std::optional<ReponsePorte> rouvrirLaBas(Atelier& atelier, const C::ouvrirAgent& c) {
  if (!atelier.sol.lointain || vide(c.cli)) return std::nullopt;
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  const std::string hote(Texte::rogner(c.hote)), nom(Texte::rogner(c.cli));
  const auto vise = tableau->agent(nom);
  if (vise && !vise->hote.empty() && (hote.empty() || vise->hote == hote)) return rouvrir(atelier, vise->id);
  if (!VoliereTmux::vraiNom(nom)) return std::nullopt;
  struct Trouvee {
    std::string hote;
    Lointain::Session session;
  };
  std::vector<Trouvee> trouvees;
  for (const std::string& h : hote.empty() ? machines(*tableau) : std::set<std::string>{hote}) {
    std::vector<Lointain::Session> sessions;
    if (hote.empty()) {
      sessions = atelier.sol.lointain->vues(h).value_or(sessions);
    } else {
      auto lues = atelier.sol.lointain->sessions(h);
      if (!lues) return ReponsePorte::echec(lues.raison());
      sessions = *std::move(lues);
    }
    for (auto& s : sessions)
      if (s.nom == nom) trouvees.push_back({h, std::move(s)});
  }
  if (trouvees.empty())
    return ReponsePorte::echec(
        "Aucune session ne s'appelle " + cite(nom) +
        (hote.empty() ? " sur les machines connues : précise hote." : " sur " + cite(hote) + "."));
  if (trouvees.size() > 1)
    return ReponsePorte::echec(cite(nom) + " vit sur plusieurs machines : " +
                               Texte::joindre(trouvees, ", ", [](const Trouvee& t) { return t.hote; }) +
                               ". Précise hote.");
  const Trouvee& elle = trouvees.front();
  if (const FicheAgent* agent = deLaSession(*tableau, elle.hote, nom)) return rouvrir(atelier, agent->id);
  return accueillir(atelier, elle.hote, elle.session);
}

std::optional<ReponsePorte> refusLaBas(const Atelier& atelier, const FicheAgent& agent) {
  if (!atelier.loin(agent.hote) || !estLaBas(agent)) return std::nullopt;
  return ReponsePorte::echec(agent.nom + " vit sur " + cite(agent.hote) +
                             " et n'est pas ouvert ici : ouvrir_agent " + agent.nom + " le rejoint.");
}

Json laBasEnJSON(Atelier& atelier, const Tableau& tableau) {
  Json liste = Json::array();
  if (!atelier.sol.lointain) return liste;
  for (const std::string& hote : machines(tableau)) {
    const auto vues = atelier.sol.lointain->vues(hote);
    std::set<std::string> dites;
    for (const FicheAgent& a : tableau.agents) {
      if (a.hote != hote) continue;
      const std::string session = sessionLaBas(a);
      dites.insert(session);
      if (!estLaBas(a)) continue;
      Json ligne = {
          {"nom", a.nom}, {"hote", hote}, {"tmux", session}, {"cli", a.programme}, {"dossier", a.dossier}};
      const auto vue = vues ? std::ranges::find(*vues, session, &Lointain::Session::nom)
                            : std::vector<Lointain::Session>::const_iterator{};
      if (vues && vue != vues->end() && !vue->titre.empty()) ligne["titre"] = vue->titre;
      liste.push_back(std::move(ligne));
    }
    for (const auto& s : vues.value_or(std::vector<Lointain::Session>())) {
      if (dites.contains(s.nom)) continue;
      const auto nom = VoliereTmux::decomposer(s.nom);
      Json ligne = {
          {"nom", s.nom}, {"hote", hote}, {"tmux", s.nom}, {"cli", nom ? nom->id : ""}, {"dossier", s.dossier}};
      if (!s.titre.empty()) ligne["titre"] = s.titre;
      liste.push_back(std::move(ligne));
    }
  }
  return liste;
}

}  // namespace tarnavelle::Plateau
