// What is looked at: the board, the screens.
#include <algorithm>

#include "Agents/TranscriptClaude.hpp"
#include "Appliquer.hpp"
#include "Noms.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"
#include "Transcript.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr int historiqueMax = 2000;  ///< lines read back of a terminal

struct Vu {
  FicheAgent agent;
  Constat constat;
};

Json ligneDe(const Atelier& atelier, const Vu& vu, std::size_t messages) {
  const Situation& s = vu.constat.situation;
  const std::string session = vu.agent.hote.empty() ? vu.agent.session : sessionLaBas(vu.agent);
  Json ligne = {{"nom", vu.agent.nom},   {"etat", enMots(s.etat)},    {"tmux", session},
                {"hote", vu.agent.hote}, {"cli", vu.agent.programme}, {"source", nom(s.preuve.source)}};
  if (s.etat == Etat::fini) ligne["fini"] = true;
  if (const auto depuis = atelier.depuis(vu.agent, s)) ligne["depuis_s"] = depuis->count();
  if (messages > 0) ligne["messages"] = messages;
  return ligne;
}

std::string_view enMots(FicheMessage::Etat etat) {
  switch (etat) {
    case FicheMessage::Etat::attend: return "attend";
    case FicheMessage::Etat::pris: return "en cours";
    case FicheMessage::Etat::douteux: return "peut-être donné";
    case FicheMessage::Etat::perdu: return "perdu";
  }
  return "";
}

/// What stands on the board. The ground tells of a command's end when it happens to notice, and when asked.
OuRefus<Tableau> tableauReleve(Atelier& atelier) {
  auto tableau = Tableau::lire(atelier.sol.registre);
  const auto enCours = [](const FicheFenetre& f) { return !f.terminal.empty() && !f.termine; };
  if (!tableau || std::ranges::none_of(tableau->fiches, enCours)) return tableau;
  atelier.relever();
  return Tableau::lire(atelier.sol.registre);
}

/// What is read of a terminal.
struct Lu {
  Fenetre fenetre;
  std::vector<std::string> lignes;
};
/// Its screen, or what was there before it too.
OuRefus<Lu> ecranDe(Atelier& atelier, OuRefus<Fenetre> fenetre, bool historique) {
  if (!fenetre) return Sinon{fenetre.raison()};
  const auto panne = [&](Panne raison) {
    return Sinon{ReponsePorte::echec("Impossible de lire l'écran de " + fenetre->nom + " : " +
                                     std::string(description(raison)) + ".")};
  };
  if (auto refus = fenetre->agent ? refusLaBas(atelier, *fenetre->agent) : std::nullopt) return Sinon{*refus};
  const IdTerminal terminal = terminalDe(*fenetre);
  if (historique) {
    // Its terminal here is drawn by the tmux over there, which alone knows what has scrolled out.
    if (const FicheAgent* a = fenetre->agent;
        a && atelier.loin(a->hote) && atelier.constat(*a).situation.etat != Etat::rompue)
      if (auto lignes = atelier.sol.lointain->historique(a->hote, sessionLaBas(*a), historiqueMax))
        return Lu{*fenetre, *std::move(lignes)};
    auto lignes = atelier.sol.terminaux.historique(terminal, historiqueMax);
    if (!lignes) return panne(lignes.raison());
    return Lu{*fenetre, std::move(*lignes)};
  }
  auto ecran = atelier.sol.terminaux.ecran(terminal);
  if (!ecran) return panne(ecran.raison());
  return Lu{*fenetre, std::move(ecran->lignes)};
}

ReponsePorte montrer(const Atelier& atelier, const Fenetre& fenetre, const std::string& texte,
                     const std::vector<std::string>& sansCadre = {}) {
  std::string ligne = derniereLigne(Texte::joindre(sansCadre, "\n"));
  if (ligne.empty()) ligne = derniereLigne(texte);
  Json json = {{"agent", fenetre.nom}, {"etat", atelier.etat(fenetre)}, {"texte", texte}};
  if (fenetre.fenetre && fenetre.fenetre->statut) json["statut"] = *fenetre.fenetre->statut;
  return ReponsePorte::succes(
      ligne.empty() ? "L'écran de " + fenetre.nom + " est vide." : fenetre.nom + " affiche : " + ligne,
      donnees(json));
}

}  // namespace

std::string texteVisible(const std::vector<std::string>& lignes) {
  auto fin = lignes.end();
  while (fin != lignes.begin() && vide(*(fin - 1))) --fin;
  auto debut = lignes.begin();
  while (debut != fin && vide(*debut)) ++debut;
  return Texte::reparer(Texte::joindre(std::vector(debut, fin), "\n"));
}

Json relaisEnJSON(const std::vector<FicheRelais>& relais, const Tableau& tableau) {
  const auto nomDe = [&](const std::string& id) {
    const FicheAgent* agent = tableau.parId(id);
    return agent ? agent->nom : "?";
  };
  Json liste = Json::array();
  for (const FicheRelais& r : relais)
    liste.push_back({{"numero", r.numero},
                     {"agent", nomDe(r.agent)},
                     {"evenement", r.evenement},
                     {"destinataire", nomDe(r.destinataire)},
                     {"texte", Texte::tronquer(r.texte, affichesMax)}});
  return liste;
}

std::string derniereLigne(std::string_view texte) {
  const auto visible = Texte::rogner(texte);
  return std::string(Texte::rogner(visible.substr(visible.rfind('\n') + 1)));
}

ReponsePorte appliquer(Atelier& atelier, const Appelant&, const C::etat&) {
  const auto tableau = tableauReleve(atelier);
  if (!tableau) return tableau.raison();
  const auto relais = atelier.sol.registre.relais();
  if (!relais) return refus(relais.raison());
  const auto postits = atelier.sol.registre.postits();
  if (!postits) return refus(postits.raison());
  const auto messages = atelier.sol.registre.messages();
  if (!messages) return refus(messages.raison());
  const FicheScene& scene = tableau->visible();
  Json autres = Json::array(), crew = Json::array(), fenetres = Json::array(), ici = Json::array(),
       ailleurs = Json::array(), fermes = Json::array(), colles = Json::array(), attendent = Json::array();
  for (const FicheScene& s : tableau->scenes)
    if (s.numero != scene.numero) autres.push_back(s.nom);
  // Told of with the other sessions of its machine: what it is doing nobody here can know.
  const auto auLoin = [&](const FicheAgent& a) { return atelier.loin(a.hote) && estLaBas(a); };
  std::vector<Vu> vus;
  for (const Fenetre& f : tableau->fenetres()) {
    if (f.agent) {
      if (!auLoin(*f.agent)) vus.push_back({*f.agent, atelier.constat(*f.agent)});
      continue;
    }
    if (f.scene == scene.numero) crew.push_back(f.nom);
    if (f.session.empty()) continue;
    Json fenetre = {{"nom", f.nom}, {"commande", f.fenetre->commande}, {"fini", f.fenetre->termine}};
    if (f.fenetre->statut) fenetre["statut"] = *f.fenetre->statut;
    fenetres.push_back(std::move(fenetre));
  }
  for (const FicheAgent& agent : tableau->agents)
    if (!agent.ouvert && !auLoin(agent)) vus.push_back({agent, atelier.constat(agent)});
  // The most urgent first, else as they were opened.
  std::ranges::stable_sort(vus, {}, [](const Vu& vu) { return urgence(vu.constat.situation.etat); });
  std::string phrase = "Scène " + scene.nom + ".";
  for (const Vu& vu : vus) {
    const auto siens = std::ranges::count(*messages, vu.agent.id, &FicheMessage::destinataire);
    Json ligne = ligneDe(atelier, vu, static_cast<std::size_t>(siens));
    phrase += " " + vu.agent.nom + " : " + std::string(Plateau::enMots(vu.constat.situation.etat));
    if (vu.agent.scene == scene.numero && vu.agent.ouvert) {
      ici.push_back(std::move(ligne));
    } else {
      const FicheScene* sienne = tableau->scene(vu.agent.scene);
      const std::string ou = sienne ? sienne->nom : "";
      ligne["scene"] = ou;
      phrase += vu.agent.ouvert ? " (" + ou + ")" : " (fermé)";
      (vu.agent.ouvert ? ailleurs : fermes).push_back(std::move(ligne));
    }
    phrase += ".";
  }
  for (const FichePostIt& p : *postits)
    if (p.scene == scene.numero) colles.push_back(Texte::tronquer(p.texte, affichesMax));
  for (const FicheMessage& m : *messages) {
    attendent.push_back({{"numero", m.numero},
                         {"de", m.expediteur},
                         {"a", m.nomDestinataire},
                         {"etat", enMots(m.etat)},
                         {"texte", Texte::tronquer(m.texte, affichesMax)}});
    if (const std::string contre = atelier.refusMessage(m.destinataire); !contre.empty())
      attendent.back()["raison"] = contre;
  }
  Json json = {{"scene", scene.nom}, {"dossier", scene.dossier}, {"autres_scenes", autres}, {"crew", crew},
               {"agents", ici},      {"ailleurs", ailleurs},     {"postits", colles}};
  if (!fermes.empty()) json["fermes"] = fermes;
  if (!fenetres.empty()) json["fenetres"] = fenetres;
  if (!attendent.empty()) json["messages"] = attendent;
  direAvis(atelier, json, phrase);
  if (Json laBas = laBasEnJSON(atelier, *tableau); !laBas.empty()) {
    phrase += " Là-bas : " +
              Texte::joindre(
                  laBas, ", ",
                  [](const Json& l) { return Champ::texte(l, "nom") + " (" + Champ::texte(l, "hote") + ")"; }) +
              ".";
    json["laBas"] = std::move(laBas);
  }
  direDistant(atelier, json, phrase);
  if (!relais->empty()) json["relais"] = relaisEnJSON(*relais, *tableau);
  return ReponsePorte::succes(phrase, donnees(json));
}

ReponsePorte appliquer(Atelier& atelier, const Appelant&, const C::lire& c) {
  const auto tableau = tableauReleve(atelier);
  if (!tableau) return tableau.raison();
  const auto lu = ecranDe(atelier, tableau->terminalOuvert(c.agent), false);
  if (!lu) return lu.raison();
  // Said aloud: what the agent shows, not the footer of its box.
  const auto dit = lu->fenetre.agent ? atelier.sol.veille.depuisConsigne(lu->fenetre.id, lu->lignes)
                                     : std::vector<std::string>{};
  return montrer(atelier, lu->fenetre, texteVisible(lu->lignes), dit);
}

ReponsePorte appliquer(Atelier& atelier, const Appelant&, const C::lireTerminal& c) {
  const auto tableau = tableauReleve(atelier);
  if (!tableau) return tableau.raison();
  const auto lu = ecranDe(atelier, tableau->terminal(c.agent), true);
  if (!lu) return lu.raison();
  const bool depuis = c.depuisPrompt && lu->fenetre.agent;
  const auto lignes = depuis ? atelier.sol.veille.depuisConsigne(lu->fenetre.id, lu->lignes) : lu->lignes;
  return montrer(atelier, lu->fenetre, texteVisible(lignes));
}

ReponsePorte appliquer(Atelier& atelier, const Appelant&, const C::resumer& c) {
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  const auto vise = tableau->agentOuvert(c.agent);
  if (!vise) return vise.raison();
  const FicheAgent& agent = *vise;
  const auto lu = ecranDe(atelier, tableau->terminal(agent.nom), true);
  if (!lu) return lu.raison();
  // At the end of a turn its hook comes before the record is written.
  const Constat constat = atelier.sol.veille.constat(agent.id);
  std::string_view source = "crochet";
  std::string texte = constat.reponse;
  if (texte.empty()) {
    source = "transcription";
    // A path that another machine tells is none of ours.
    texte = (agent.hote.empty()     ? Transcript::derniereReponse(constat.transcript)
             : atelier.sol.lointain ? atelier.sol.lointain->derniereReponse(agent.hote, constat.transcript)
                                    : std::nullopt)
                .value_or("");
  }
  if (texte.empty()) {
    source = "écran";
    texte = texteVisible(atelier.sol.veille.depuisConsigne(agent.id, lu->lignes));
  }
  texte = Texte::tronquer(texte, TranscriptClaude::reponseMax);
  return ReponsePorte::succes(
      texte.empty() ? agent.nom + " n'a rien dit depuis sa dernière consigne." : texte,
      donnees({{"agent", agent.nom}, {"etat", atelier.etat(agent)}, {"source", source}, {"texte", texte}}));
}

}  // namespace tarnavelle::Plateau
