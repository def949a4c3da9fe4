#include "Adoption.hpp"

#include <algorithm>

#include "Agents/VoliereTmux.hpp"
#include "Noms.hpp"

namespace tarnavelle::Plateau {
namespace {

template <class Fiche>
void situer(Fiche& fiche, const Terminal* terminal) {
  bool ailleurs = false;  // it goes on where it lives, whatever became of its terminal here
  if constexpr (std::is_same_v<Fiche, FicheAgent>) ailleurs = !terminal && !fiche.hote.empty();
  if (!ailleurs) fiche.termine = !terminal || terminal->mort;
  fiche.terminal = terminal ? terminal->id.valeur : "";
}

/// Takes up an agent, with its terminal where it has one left.
Garde<Fait> installer(Atelier& atelier, FicheAgent agent, const Terminal* terminal) {
  situer(agent, terminal);
  auto garde = atelier.sol.registre.garderAgent(agent);
  if (garde && agent.termine) garde = atelier.sol.registre.rompreRelais(agent.id, atelier.date());
  if (!garde || !terminal) return garde;
  atelier.suivre(agent, terminal->id);
  if (terminal->mort)
    atelier.sol.veille.termine(agent.id, terminal->statut);
  else
    atelier.redeclarer(agent);
  return garde;
}

Garde<Fait> installer(Atelier& atelier, FicheFenetre fenetre, const Terminal* terminal) {
  if (fenetre.terminal.empty() && !terminal) return Fait{};
  situer(fenetre, terminal);
  if (terminal && terminal->statut) fenetre.statut = terminal->statut;
  return atelier.sol.registre.garderFenetre(fenetre);
}

/// A terminal of ours that the registry does not know: it was set aside, and its program went on. The session's
/// name tells which one.
Garde<Fait> recueillir(Atelier& atelier, const Terminal& terminal) {
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return Fait{};
  const auto remplir = [&](auto fiche, const std::vector<std::string>& noms) {
    fiche.id = terminal.cle;
    fiche.nom = prochainNom(noms, [&](const std::string& nom) { return tableau->pris(nom); });
    fiche.scene = tableau->visible().numero;
    fiche.dossier = tableau->visible().dossier;
    fiche.session = terminal.session;
    fiche.ouverture = tableau->ouverture(atelier.date());
    return fiche;
  };
  if (const auto nom = VoliereTmux::decomposer(terminal.session)) {
    FicheAgent agent = remplir(FicheAgent{}, rosterUsine());
    agent.programme = nom->id;
    agent.noeud = agent.nom;
    return installer(atelier, agent, &terminal);
  }
  FicheFenetre fenetre = remplir(FicheFenetre{}, {"Shell"});
  fenetre.commande = terminal.commande;
  return installer(atelier, fenetre, &terminal);
}

}  // namespace

std::optional<Avarie> adopterLesTerminaux(Atelier& atelier) {
  atelier.adopte = false;
  // Who was there is read before what is there: what is opened meanwhile is not meant.
  atelier.sol.registre.oublierMessages(atelier.date());
  const auto agents = atelier.sol.registre.agents();
  if (!agents) return agents.raison();
  const auto fenetres = atelier.sol.registre.fenetres();
  if (!fenetres) return fenetres.raison();
  const auto terminaux = atelier.sol.terminaux.lister();
  if (!terminaux) return std::nullopt;  // out of reach: nobody knows who is gone
  const std::lock_guard verrou(atelier.fiches);
  if (atelier.adopte) return std::nullopt;
  const auto debout = [&](const std::string& cle) -> const Terminal* {
    const auto trouve = std::ranges::find(*terminaux, cle, &Terminal::cle);
    return trouve == terminaux->end() ? nullptr : &*trouve;
  };
  const auto encore = [](const auto& fiches, const auto& fiche) {
    return fiches && std::ranges::any_of(*fiches, [&](const auto& f) {
             return f.id == fiche.id && f.terminal == fiche.terminal;
           });
  };
  const auto agentsLa = atelier.sol.registre.agents();
  const auto fenetresLa = atelier.sol.registre.fenetres();
  for (const FicheAgent& agent : *agents)
    if (encore(agentsLa, agent))
      if (const auto garde = installer(atelier, agent, debout(agent.id)); !garde) return garde.raison();
  for (const FicheFenetre& fenetre : *fenetres)
    if (encore(fenetresLa, fenetre))
      if (const auto garde = installer(atelier, fenetre, debout(fenetre.id)); !garde) return garde.raison();
  const auto connu = [](const auto& fiches, const std::string& cle) {
    return !fiches || std::ranges::any_of(*fiches, [&](const auto& f) { return f.id == cle; });
  };
  for (const Terminal& terminal : *terminaux)
    if (!connu(agentsLa, terminal.cle) && !connu(fenetresLa, terminal.cle))
      if (const auto garde = recueillir(atelier, terminal); !garde) return garde.raison();
  atelier.adopte = true;
  return std::nullopt;
}

void reprendreAdoption(Atelier& atelier) {
  if (!atelier.adopte) {
    adopterLesTerminaux(atelier);
  } else if (atelier.aRelever()) {
    atelier.relever();
  }
}

}  // namespace tarnavelle::Plateau
