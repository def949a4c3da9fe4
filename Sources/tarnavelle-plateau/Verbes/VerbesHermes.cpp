// Conversations with Hermès: agents of the board whose program talks to his gateway. What is said in one is
// typed there, with the proofs that any other has.
#include <algorithm>
#include <variant>

#include "Appliquer.hpp"
#include "Noms.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::string_view nomHermes = "Hermès";

/// The last one opened of those that are meant; null when there is none.
template <class Vise>
const FicheAgent* derniere(const Tableau& tableau, Vise vise) {
  const FicheAgent* trouvee = nullptr;
  for (const FicheAgent& agent : tableau.agents)
    if (agent.estConversation() && vise(agent) && (!trouvee || agent.ouverture >= trouvee->ouverture))
      trouvee = &agent;
  return trouvee;
}

bool toutes(const FicheAgent&) { return true; }

std::string avecHote(const FicheAgent& agent) {
  return agent.nom + (agent.conversation.empty() ? "" : " (" + agent.conversation + ")");
}

/// One that is there comes into view, its program started anew if it has ended, as is known or as `morte` says.
OuRefus<FicheAgent> ramener(Atelier& atelier, const Appelant& appelant, const FicheAgent& agent,
                            bool morte = false) {
  if (morte || atelier.constat(agent).situation.etat == Etat::sorti || agent.terminal.empty()) {
    const auto relancee = appliquer(atelier, appelant, C::relancerAgent{.agent = agent.nom});
    if (!relancee.ok) return Sinon{relancee};
  }
  if (const auto garde = atelier.modifier(agent.id, [](FicheAgent& fiche) { fiche.ouvert = true; }); !garde)
    return Sinon{refus(garde.raison())};
  atelier.sol.registre.montrerScene(agent.scene);
  atelier.sol.registre.regarder(agent.scene, agent.id);
  auto relue = ouRefus(atelier.sol.registre.agent(agent.id));
  if (!relue) return Sinon{relue.raison()};
  if (!*relue) return Sinon{ReponsePorte::echec(agent.nom + " vient d'être fermé.")};
  return **relue;
}

OuRefus<FicheAgent> ouvrir(Atelier& atelier, const std::string& hote) {
  auto lance = lancerUnAgent(atelier, {.programme = std::string(FicheAgent::conversationHermes),
                                       .dossier = {},
                                       .hote = {},
                                       .nom = std::string(nomHermes),
                                       .conversation = hote});
  if (!lance) return Sinon{lance.raison()};
  const AgentOuvert ouverte =
      attendrePret(atelier, std::move(*lance), atelier.sol.horloge.maintenant() + atelier.reglages.pretMax);
  if (auto refus = refusParti(atelier, ouverte)) return Sinon{*refus};
  return ouverte.agent;
}

/// The host that is meant, or why none can be talked to.
OuRefus<std::string> lieu(const Atelier& atelier, const std::string& hote) {
  const auto lieu = atelier.sol.lanceurs.conversation(std::string(Texte::rogner(hote)));
  if (!lieu) return Sinon{ReponsePorte::pasCable};
  if (!*lieu) return Sinon{ReponsePorte::echec(lieu->raison())};
  return **lieu;
}

/// Whether this refusal says that nothing was typed, for want of a program.
bool sansProgramme(const Atelier& atelier, const FicheAgent& agent, const ReponsePorte& reponse) {
  if (reponse.ok) return false;
  if (!reponse.data) return atelier.constat(agent).situation.etat == Etat::sorti;
  const auto* objet = std::get_if<PorteJSON::objet>(&reponse.data->cas);
  const auto dit = [&](const std::string& cle, std::string_view texte) {
    const auto membre = objet->membres.find(cle);
    return membre != objet->membres.end() && membre->second == PorteJSON{PorteJSON::texte{std::string(texte)}};
  };
  return objet && dit("livraison", nom(Livraison::Sort::refuse)) &&
         dit("raison", description({.raison = Livraison::Raison::mort}));
}

/// What is typed into one, and what is said of that after `avant`.
ReponsePorte dire(Atelier& atelier, const Appelant& appelant, const FicheAgent& agent, const std::string& texte,
                  const std::string& avant) {
  const C::dicter consigne{.agent = agent.nom, .texte = texte, .valider = true};
  ReponsePorte reponse = appliquer(atelier, appelant, consigne);
  // Its program may have ended just before, unseen until it was looked at.
  if (sansProgramme(atelier, agent, reponse) && ramener(atelier, appelant, agent, true))
    reponse = appliquer(atelier, appelant, consigne);
  std::optional<std::string>& phrase = reponse.ok ? reponse.spoken_text : reponse.error;
  if (!avant.empty()) phrase = avant + " " + phrase.value_or("");
  return reponse;
}

}  // namespace

ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::ouvrirChat& c) {
  if (auto refus = tropLong("hote", c.hote)) return *refus;
  if (auto refus = tropLong("texte", c.texte, octetsTapesMax)) return *refus;
  const auto hote = lieu(atelier, c.hote);
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  // Without a host, one that is open comes before what is set.
  const FicheAgent* la = vide(c.hote) ? derniere(*tableau, toutes)
                         : hote ? derniere(*tableau, [&](const auto& a) { return a.conversation == *hote; })
                                : nullptr;
  if (!hote && !la) return hote.raison();
  const auto agent = la ? ramener(atelier, appelant, *la) : ouvrir(atelier, *hote);
  if (!agent) return agent.raison();
  const std::string phrase = la ? "La conversation avec " + avecHote(*agent) + " est sous les yeux."
                                : "La conversation avec " + avecHote(*agent) + " est ouverte.";
  if (!vide(c.texte)) return dire(atelier, appelant, *agent, c.texte, phrase);
  const FicheScene* scene = tableau->scene(agent->scene);
  return ReponsePorte::succes(phrase, donnees({{"agent", agent->nom},
                                               {"hote", agent->conversation},
                                               {"scene", scene ? scene->nom : ""},
                                               {"tmux", agent->session},
                                               {"etat", atelier.etat(*agent)},
                                               {"neuve", la == nullptr}}));
}

ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::messageChat& c) {
  if (vide(c.texte)) return manque("texte");
  if (auto refus = tropLong("texte", c.texte, octetsTapesMax)) return *refus;
  if (auto refus = tropLong("cible", c.cible)) return *refus;
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  const std::string cible = Texte::replier(c.cible);
  const FicheAgent* la = derniere(*tableau, [&](const FicheAgent& a) {
    return cible.empty() || Texte::replier(a.conversation) == cible || Texte::replier(a.nom) == cible;
  });
  if (!la && derniere(*tableau, toutes)) {
    std::vector<std::string> noms;
    for (const FicheAgent& a : tableau->agents)
      if (a.estConversation()) noms.push_back(avecHote(a));
    return ReponsePorte::echec("Aucune conversation n'est ouverte avec " + cite(c.cible) +
                               ". Ouvertes : " + enumerer(noms) + ". Pour une autre : ouvrir_chat.");
  }
  if (la) {
    const auto agent = ramener(atelier, appelant, *la);
    return agent ? dire(atelier, appelant, *agent, c.texte, "") : agent.raison();
  }
  const auto hote = lieu(atelier, c.cible);
  if (!hote) return hote.raison();
  const auto agent = ouvrir(atelier, *hote);
  if (!agent) return agent.raison();
  return dire(atelier, appelant, *agent, c.texte, "La conversation avec " + avecHote(*agent) + " est ouverte.");
}

ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::commande& c) {
  if (vide(c.texte)) return manque("texte");
  if (auto refus = tropLong("texte", c.texte, octetsTapesMax)) return *refus;
  if (!atelier.sol.lanceurs.conversation("")) return ReponsePorte::pasCable;
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  const FicheAgent* la = derniere(*tableau, [&](const FicheAgent& a) {
    return !a.terminal.empty() && atelier.constat(a).situation.etat != Etat::sorti;
  });
  if (!la)
    return ReponsePorte::echec(
        "Ce plateau ne comprend pas les demandes libres, et aucune conversation avec Hermès n'est ouverte à "
        "qui la "
        "transmettre : ouvrir_chat en ouvre une.");
  const auto agent = ramener(atelier, appelant, *la);
  return agent ? dire(atelier, appelant, *agent, c.texte, "") : agent.raison();
}

}  // namespace tarnavelle::Plateau
