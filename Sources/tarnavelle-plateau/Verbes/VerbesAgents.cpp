// Agents opened and started anew.
#include <algorithm>
#include <array>
#include <cctype>
#include <random>

#include "Agents/AgentCLI.hpp"
#include "Appliquer.hpp"
#include "Noms.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::size_t lignesMax = 6;    ///< of a screen, in a sentence
constexpr std::size_t ligneMax = 80;    ///< characters of each
constexpr std::size_t sessionsMax = 4;  ///< names tried beside the first

std::string nouvelId() {
  std::random_device hasard;
  std::string id;
  for (int i = 0; i < 16; ++i) id += "0123456789abcdef"[hasard() % 16];
  return id;
}

/// The program named, or the usual one for an empty name.
OuRefus<std::string> programme(const Atelier& atelier, std::string_view nom) {
  auto connus = lanceurs();
  for (std::string& id : atelier.sol.lanceurs.enPlus()) connus.push_back(std::move(id));
  if (vide(nom)) {
    if (auto usuel = atelier.sol.lanceurs.usuel()) return *usuel;
    return Sinon{
        ReponsePorte::echec("Aucun programme d'agent n'est installé. Connus : " + enumerer(connus) + ".")};
  }
  const auto trouve = std::ranges::find(connus, Texte::replier(nom));
  if (trouve != connus.end()) return *trouve;
  return Sinon{
      ReponsePorte::echec("Aucun CLI ne s'appelle " + cite(nom) + ". Connus : " + enumerer(connus) + ".")};
}

/// The sessions of its machine, for an agent that is to live elsewhere.
OuRefus<std::vector<Lointain::Session>> sessionsLaBas(Atelier& atelier, const std::string& hote) {
  if (hote.empty() || !atelier.sol.lointain) return std::vector<Lointain::Session>();
  auto sessions = atelier.sol.lointain->sessions(hote);
  if (!sessions) return Sinon{ReponsePorte::echec(sessions.raison())};
  return *std::move(sessions);
}

/// Without the "/" that a completed path ends with.
std::string sansBarreFinale(std::string dossier) {
  while (dossier.size() > 1 && dossier.ends_with('/')) dossier.pop_back();
  return dossier;
}

/// A record for it, its name and its session taken, its window in view.
OuRefus<FicheAgent> inscrire(Atelier& atelier, const DemandeAgent& demande, const std::string& programme) {
  const std::string hote(Texte::rogner(demande.hote));
  const auto laBas =
      demande.laBas.empty() ? sessionsLaBas(atelier, hote) : OuRefus<std::vector<Lointain::Session>>({});
  if (!laBas) return Sinon{laBas.raison()};
  const std::lock_guard verrou(atelier.fiches);
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return Sinon{tableau.raison()};
  const auto pris = [&](const std::string& nom) { return tableau->pris(nom); };
  std::vector<std::string> liste = {std::string(Texte::rogner(demande.nom))};
  if (vide(demande.nom)) {
    auto indicatifs = ouRefus(atelier.sol.registre.indicatifs());
    if (!indicatifs) return Sinon{indicatifs.raison()};
    liste = indicatifs->empty() ? rosterUsine() : std::move(*indicatifs);
  }
  const FicheScene* nommee = vide(demande.dossier) || !hote.empty() ? nullptr : tableau->scene(demande.dossier);
  const FicheScene& scene = nommee ? *nommee : tableau->visible();
  FicheAgent agent;
  agent.id = nouvelId();
  agent.nom = prochainNom(liste, pris);
  agent.programme = programme;
  agent.dossier = nommee || (vide(demande.dossier) && !atelier.loin(hote)) ? scene.dossier
                                                                           : sansBarreFinale(demande.dossier);
  agent.hote = hote;
  agent.scene = scene.numero;
  agent.noeud = agent.nom;
  agent.conversation = demande.conversation;
  // There, a name is taken by whichever begins with it: tmux may mean the one by the other.
  agent.session = tableau->sessionLibre(programme, [&](const std::string& session) {
    return std::ranges::any_of(*laBas, [&](const auto& s) { return s.nom.starts_with(session); });
  });
  if (!demande.laBas.empty() && !tableau->pris(demande.laBas)) agent.session = demande.laBas;
  agent.ouverture = tableau->ouverture(atelier.date());
  agent.depuis = atelier.date();
  agent.etat = nom(Etat::inconnu);
  if (const auto garde = atelier.sol.registre.garderAgent(agent); !garde) return Sinon{refus(garde.raison())};
  atelier.sol.registre.regarder(scene.numero, agent.id);
  return agent;
}

/// Opens its terminal, under another name where somebody else has that session: the registry knows only its
/// own.
Ou<Terminal> ouvrirTerminal(Atelier& atelier, FicheAgent& agent, Lancement lancement) {
  std::vector<std::string> prises;
  while (true) {
    auto terminal = atelier.sol.terminaux.ouvrir(lancement);
    if (terminal || terminal.raison() != Panne::refuse || prises.size() > sessionsMax) return terminal;
    const auto la = atelier.sol.terminaux.lister();
    const std::lock_guard verrou(atelier.fiches);
    const auto tableau = Tableau::lire(atelier.sol.registre);
    if (!la || !tableau) return terminal;
    prises.push_back(agent.session);
    agent.session = tableau->sessionLibre(agent.programme, [&](const std::string& nom) {
      return std::ranges::count(prises, nom) > 0 || std::ranges::count(*la, nom, &Terminal::session) > 0;
    });
    lancement.session = agent.session;
    if (!atelier.sol.registre.garderAgent(agent)) return terminal;
  }
}

Embarquement embarquement(const FicheAgent& agent, const std::string& laBas = "") {
  return {.cle = agent.id,
          .nom = agent.nom,
          .programme = agent.programme,
          .session = agent.session,
          .dossier = agent.dossier,
          .hote = agent.hote,
          .conversation = agent.conversation,
          .entamee = agent.entamee,
          .laBas = laBas};
}

}  // namespace

OuRefus<FicheAgent> demarrer(Atelier& atelier, FicheAgent agent, const std::string& laBas) {
  const auto depart = atelier.sol.lanceurs.agent(embarquement(agent, laBas));
  if (!depart) return Sinon{ReponsePorte::echec(depart.raison())};
  // Kept first: a conversation that was begun must be found again. What is still told of an older terminal is
  // nothing to it any more.
  agent.entamee = agent.entamee && agent.conversation == depart->conversation;
  agent.conversation = depart->conversation;
  agent.mots = depart->lancement.mots;
  if (!depart->dossier.empty()) agent.dossier = depart->dossier;
  agent.terminal.clear();
  agent.termine = false;
  const auto garder = [&] {
    const std::lock_guard verrou(atelier.fiches);
    return atelier.sol.registre.garderAgent(agent);
  };
  if (const auto garde = garder(); !garde) return Sinon{refus(garde.raison())};
  auto terminal = ouvrirTerminal(atelier, agent, depart->lancement);
  if (!terminal)
    return Sinon{ReponsePorte::echec("Impossible d'ouvrir " + agent.nom + " : " +
                                     std::string(description(terminal.raison())) + ".")};
  agent.terminal = terminal->id.valeur;
  agent.dossier = agent.dossier.empty() ? depart->lancement.dossier : agent.dossier;
  atelier.suivre(agent, terminal->id);
  atelier.boiteNeuve(agent.id);
  if (const auto garde = garder(); !garde) {
    atelier.sol.terminaux.terminer(terminal->id);  // else it would run, with its token, known to nobody
    return Sinon{refus(garde.raison())};
  }
  atelier.relever();  // it may have ended before anybody knew whose terminal that was
  return agent;
}

namespace {

/// The last lines of a screen that say something, as one.
std::string basDe(const std::vector<std::string>& lignes) {
  std::vector<std::string> bas;
  for (auto ligne = lignes.rbegin(); ligne != lignes.rend() && bas.size() < lignesMax; ++ligne)
    if (std::ranges::any_of(*ligne, [](unsigned char c) { return std::isalnum(c) != 0; }))
      bas.insert(bas.begin(),
                 Texte::tronquer(Texte::joindre(Texte::mots(Texte::reparer(*ligne)), " "), ligneMax));
  return Texte::joindre(bas, " / ");
}

bool parti(Atelier& atelier, const FicheAgent& agent) {
  return atelier.constat(agent).situation.activite == Etat::sorti;
}

std::string surSonEcran(const AgentOuvert& ouvert) {
  if (ouvert.panne && ouvert.ecran.empty()) return std::string(description(*ouvert.panne));
  return ouvert.ecran.empty() ? "son écran est vide" : "son écran montre « " + ouvert.ecran + " »";
}

Json fiche(const Atelier& atelier, const AgentOuvert& ouvert, const std::string& scene) {
  const FicheAgent& agent = ouvert.agent;
  Json json = {{"nom", agent.nom},   {"cli", agent.programme}, {"dossier", agent.dossier},
               {"hote", agent.hote}, {"scene", scene},         {"tmux", agent.session}};
  if (atelier.sol.veille.saitLire(agent.id)) json["pret"] = ouvert.pret;
  return json;
}

ReponsePorte arretAussitot(const AgentOuvert& ouvert) {
  return ReponsePorte::echec(ouvert.agent.nom + " s'est arrêté aussitôt ouvert : " + surSonEcran(ouvert) + ".");
}

}  // namespace

ReponsePorte direOuverture(Atelier& atelier, const AgentOuvert& ouvert, const std::string& phrase) {
  const FicheAgent& agent = ouvert.agent;
  if (parti(atelier, agent)) return arretAussitot(ouvert);
  if (!ouvert.pret && atelier.sol.veille.saitLire(agent.id))
    return ReponsePorte::echec(agent.nom + " est ouvert, mais n'attend pas encore de texte : " +
                               surSonEcran(ouvert) + ". envoyer_touches lui répond.");
  const auto tableau = Tableau::lire(atelier.sol.registre);
  const FicheScene* scene = tableau ? tableau->scene(agent.scene) : nullptr;
  return ReponsePorte::succes(phrase, donnees(fiche(atelier, ouvert, scene ? scene->nom : "")));
}

namespace {

/// Ends what is left of it, and starts it in a new terminal.
OuRefus<AgentOuvert> redemarrer(Atelier& atelier, FicheAgent agent, Instant limite) {
  // It goes on rather than end for nothing.
  if (const auto refus = atelier.sol.lanceurs.empechement(embarquement(agent)))
    return Sinon{ReponsePorte::echec(agent.nom + " n'est pas relancé. " + *refus)};
  // What it had started may have outlived its terminal.
  const auto fin = atelier.sol.terminaux.terminer(terminalDe(agent));
  if (!fin && fin.raison() != Panne::inconnu)
    return Sinon{ReponsePorte::echec("Impossible d'arrêter " + agent.nom + " : " +
                                     std::string(description(fin.raison())) + ".")};
  agent.ouvert = true;
  auto demarre = demarrer(atelier, agent);
  if (!demarre) {
    atelier.modifier(agent.id, [](FicheAgent& fiche) { fiche.termine = true; });
    return Sinon{demarre.raison()};
  }
  const Instant pret = atelier.sol.horloge.maintenant() + atelier.reglages.pretMax;
  return attendrePret(atelier, std::move(*demarre), std::min(limite, pret));
}

}  // namespace

AgentOuvert attendrePret(Atelier& atelier, FicheAgent agent, Instant limite) {
  AgentOuvert ouvert{.agent = std::move(agent)};
  const FicheAgent& a = ouvert.agent;
  if (!atelier.sol.veille.saitLire(a.id)) return ouvert;
  const Atelier::Guet guet(atelier, a);
  std::optional<Instant> libreDepuis;
  while (true) {
    const auto vus = atelier.battements();
    const auto ecran = atelier.sol.terminaux.ecran(terminalDe(a));
    ouvert.panne = ecran ? std::nullopt : std::optional(ecran.raison());
    const bool muet = ouvert.panne == Panne::muet || ouvert.panne == Panne::absent;
    const bool mort = (!ecran && !muet) || atelier.constat(a).situation.activite == Etat::sorti;
    const auto lecture = ecran ? atelier.sol.veille.lire(a.id, *ecran) : LectureEcran{};
    const bool libre = ecran && !mort && lecture.boite && !lecture.dialogue();
    if (ecran) ouvert.ecran = basDe(ecran->lignes);
    const Instant maintenant = atelier.sol.horloge.maintenant();
    libreDepuis = libre ? libreDepuis.value_or(maintenant) : std::optional<Instant>();
    ouvert.pret = libre && maintenant - *libreDepuis >= atelier.reglages.pretDepuis;
    if (ouvert.pret || mort || maintenant >= limite) return ouvert;
    if (lecture.dialogue()) return ouvert;
    if (!atelier.dormir(vus, std::min(limite, maintenant + std::chrono::milliseconds(200)))) return ouvert;
  }
}

std::optional<ReponsePorte> refusParti(Atelier& atelier, const AgentOuvert& ouvert) {
  if (!parti(atelier, ouvert.agent)) return std::nullopt;
  atelier.oublier(ouvert.agent);  // nothing of it is left to be looked at
  return arretAussitot(ouvert);
}

std::optional<ReponsePorte> refusOuverture(const Atelier& atelier, std::string_view nom, std::int64_t nombre) {
  if (const auto connu = programme(atelier, nom); !connu) return connu.raison();
  const auto agents = atelier.sol.registre.agents();
  if (!agents) return refus(agents.raison());
  if (agents->size() + static_cast<std::size_t>(nombre) > atelier.reglages.agentsMax)
    return ReponsePorte::echec("Le plateau est plein : " + std::to_string(atelier.reglages.agentsMax) +
                               " agents au plus.");
  return std::nullopt;
}

OuRefus<FicheAgent> lancerUnAgent(Atelier& atelier, const DemandeAgent& demande) {
  const auto voulu = demande.programme == FicheAgent::conversationHermes
                         ? OuRefus<std::string>(demande.programme)
                         : programme(atelier, demande.programme);
  if (!voulu) return Sinon{voulu.raison()};
  auto inscrit = inscrire(atelier, demande, *voulu);
  if (!inscrit) return Sinon{inscrit.raison()};
  auto demarre = demarrer(atelier, *inscrit, demande.laBas);
  if (demarre)
    atelier.sonner();  // it is to be seen while it starts
  else
    atelier.oublier(*inscrit);
  return demarre;
}

ReponsePorte appliquer(Atelier& atelier, const Appelant&, const C::ouvrirAgent& c) {
  if (auto refus = tropLong("dossier", c.dossier)) return *refus;
  if (auto refus = tropLong("hote", c.hote)) return *refus;
  if (auto refus = refusOuverture(atelier, c.cli, 1)) {
    if (auto rouvert = rouvrirLaBas(atelier, c)) return *rouvert;
    return *refus;
  }
  auto lance = lancerUnAgent(atelier, {.programme = c.cli, .dossier = c.dossier, .hote = c.hote, .nom = {}});
  if (!lance) return lance.raison();
  const AgentOuvert ouvert =
      attendrePret(atelier, std::move(*lance), atelier.sol.horloge.maintenant() + atelier.reglages.pretMax);
  const FicheAgent& agent = ouvert.agent;
  if (auto refus = refusParti(atelier, ouvert)) return *refus;
  const auto sansPorte = atelier.loin(agent.hote) ? atelier.sol.lointain->sansPorte(agent.id) : std::nullopt;
  ReponsePorte reponse =
      direOuverture(atelier, ouvert,
                    agent.nom + " est ouvert : " + agent.programme + " dans " + agent.dossier +
                        (atelier.loin(agent.hote) ? " sur " + cite(agent.hote) : "") + ".");
  if (sansPorte) (reponse.ok ? reponse.spoken_text : reponse.error).value() += " " + *sansPorte;
  return reponse;
}

ReponsePorte appliquer(Atelier& atelier, const Appelant&, const C::relancerAgent& c) {
  const Instant limite = atelier.sol.horloge.maintenant() + reponseMax;
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  const auto trouve = tableau->agent(c.agent);
  if (!trouve) return trouve.raison();
  if (!trouve->hote.empty())
    return ReponsePorte::echec(trouve->nom + " vit sur " + cite(trouve->hote) +
                               " : un agent distant ne peut pas être relancé d'ici." +
                               (estLaBas(*trouve) ? " ouvrir_agent " + trouve->nom + " le rejoint." : ""));
  const Atelier::Tour tour(atelier, trouve->id);
  if (!tour) return ReponsePorte::echec("D'autres tapent chez " + trouve->nom + " depuis trop longtemps.");
  // Others may have started it anew, or forgotten it, while its turn was awaited.
  const auto relu = atelier.sol.registre.agent(trouve->id);
  if (!relu) return refus(relu.raison());
  if (!*relu) return ReponsePorte::echec(trouve->nom + " vient d'être fermé.");
  const FicheAgent agent = **relu;
  std::string phrase = agent.nom + " est relancé : un processus neuf, le même dossier.";
  auto ouvert = redemarrer(atelier, agent, limite);
  if (ouvert && !agent.conversation.empty() && !agent.estConversation() && parti(atelier, ouvert->agent)) {
    phrase +=
        " Sa conversation n'a pas pu être reprise (" + surSonEcran(*ouvert) + ") : il en commence une neuve.";
    FicheAgent neuf = ouvert->agent;
    neuf.conversation.clear();
    ouvert = redemarrer(atelier, std::move(neuf), limite);
    if (!ouvert || parti(atelier, ouvert->agent))  // it was not for that: it may be resumed yet
      atelier.modifier(agent.id, [&](FicheAgent& fiche) {
        fiche.conversation = agent.conversation;
        fiche.entamee = agent.entamee;
      });
  }
  return ouvert ? direOuverture(atelier, *ouvert, phrase) : ouvert.raison();
}

}  // namespace tarnavelle::Plateau
