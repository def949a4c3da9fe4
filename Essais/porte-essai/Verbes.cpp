#include "Verbes.hpp"

#include <algorithm>
#include <concepts>
#include <utility>

#include "Noms.hpp"
#include "Refus.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Selon.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::PorteEssai::Verbes {
namespace {

using C = CommandeControle;

// What the board holds at most: a door left open for weeks must not grow without end.
constexpr std::size_t agentsMax = 64;
constexpr std::size_t fichesMax = 1000;  ///< notes, post-its, tasks: each
constexpr std::size_t etiquettesMax = 20;
constexpr std::size_t indicatifsMax = 100;
constexpr std::int64_t exemplairesMax = 8;
constexpr std::int64_t limiteMax = 50;
constexpr std::size_t affichesMax = 500;  ///< characters of a text that stands in a list or on a screen

template <class Fiche>
std::optional<ReponsePorte> refusPlein(const std::vector<Fiche>& fiches) {
  if (fiches.size() < fichesMax) return std::nullopt;
  return ReponsePorte::echec("Le plateau est plein : " + std::to_string(fichesMax) + " fiches au plus.");
}

/// The program named, the default one for an empty name; nothing for an unknown one.
std::optional<std::string> lanceur(std::string_view nom) {
  if (Refus::vide(nom)) return lanceurs().front();
  const auto trouve = std::ranges::find(lanceurs(), replier(nom));
  return trouve == lanceurs().end() ? std::nullopt : std::optional(*trouve);
}

std::optional<ReponsePorte> refusOuverture(const Monde& monde, std::string_view cli, std::int64_t nombre) {
  if (!lanceur(cli))
    return ReponsePorte::echec("Aucun CLI ne s'appelle " + cite(cli) + ". Connus : " + enumerer(lanceurs()) +
                               ".");
  if (monde.agents.size() + static_cast<std::size_t>(nombre) > agentsMax)
    return ReponsePorte::echec("Le plateau est plein : " + std::to_string(agentsMax) + " agents au plus.");
  return std::nullopt;
}

/// A task whose worker has reported is done, unless a command was to attest it: this door runs none.
void rapporter(Monde& monde, const Agent& agent, const std::string& note) {
  for (Tache& tache : monde.taches) {
    if (tache.agent != agent.id || tache.etat != Tache::Etat::enCours) continue;
    tache.note = note;
    tache.etat = tache.verify.empty() ? Tache::Etat::done : Tache::Etat::unknown;
  }
}

/// The tasks of a worker that is gone without reporting.
void abandonner(Monde& monde, const Agent& agent) {
  for (Tache& tache : monde.taches)
    if (tache.agent == agent.id && tache.etat == Tache::Etat::enCours) tache.etat = Tache::Etat::unknown;
}

std::string_view etatDeTache(Tache::Etat etat) {
  switch (etat) {
    case Tache::Etat::enCours: return "en cours";
    case Tache::Etat::done: return "done";
    case Tache::Etat::unknown: return "unknown";
  }
  return "";
}

std::optional<PorteJSON> agentEtEtat(const Agent& agent) {
  return donnees({{"agent", agent.nom}, {"etat", enMots(agent.etat())}});
}

/// The words of a text, folded.
std::vector<std::string> mots(std::string_view texte) {
  const std::string replie = replier(texte);
  std::vector<std::string> liste;
  constexpr std::string_view separateurs = " \t\r\n.,;:!?'\"()";
  for (std::size_t debut = 0; (debut = replie.find_first_not_of(separateurs, debut)) != std::string::npos;) {
    const std::size_t fin = std::min(replie.find_first_of(separateurs, debut), replie.size());
    liste.push_back(replie.substr(debut, fin - debut));
    debut = fin;
  }
  return liste;
}

ReponsePorte appliquer(Monde& monde, Instant, const C::etat&) {
  const Scene& scene = monde.sceneVisible();
  Json autres = Json::array(), crew = Json::array(), ici = Json::array(), ailleurs = Json::array(),
       postits = Json::array();
  std::string phrase = "Scène " + scene.nom + ".";
  for (const Scene& s : monde.scenes)
    if (&s != &scene) autres.push_back(s.nom);
  for (const Fenetre& f : monde.fenetres) {
    const Agent* agent = monde.agent(f.agent);
    if (!agent) {
      if (f.scene == scene.nom) crew.push_back(f.nom);
      continue;
    }
    Json ligne = {
        {"nom", agent->nom}, {"etat", enMots(agent->etat())}, {"tmux", agent->tmux}, {"hote", agent->hote}};
    phrase += " " + agent->nom + " : " + std::string(enMots(agent->etat()));
    if (f.scene == scene.nom) {
      ici.push_back(std::move(ligne));
    } else {
      ligne["scene"] = f.scene;
      ailleurs.push_back(std::move(ligne));
      phrase += " (" + f.scene + ")";
    }
    phrase += ".";
  }
  for (const PostIt& p : monde.postits)
    if (p.scene == scene.nom) postits.push_back(Texte::tronquer(p.texte, affichesMax));
  return ReponsePorte::succes(phrase, donnees({{"scene", scene.nom},
                                               {"dossier", scene.dossier},
                                               {"autres_scenes", autres},
                                               {"crew", crew},
                                               {"agents", ici},
                                               {"ailleurs", ailleurs},
                                               {"postits", postits}}));
}

ReponsePorte appliquer(Monde& monde, Instant, const C::focus& c) {
  if (Refus::vide(c.cible)) return Refus::manque("cible");
  ReponsePorte refus;
  const Fenetre* fenetre = Refus::fenetreVisee(monde, c.cible, refus);
  if (!fenetre) return refus;
  Scene& scene = monde.sceneVisible();
  if (fenetre->scene != scene.nom)
    return ReponsePorte::echec(fenetre->nom + " est sur la scène " + cite(fenetre->scene) +
                               " : c'est aller_scene qui y mène.");
  scene.auRegard = fenetre->nom;
  return ReponsePorte::succes(fenetre->nom + " est en grand.", donnees({{"cible", fenetre->nom}}));
}

ReponsePorte appliquer(Monde& monde, Instant, const C::allerScene& c) {
  if (Refus::vide(c.nom)) return Refus::manque("nom");
  const Scene* scene = monde.scene(c.nom);
  if (!scene) {
    std::vector<std::string> noms;
    for (const Scene& s : monde.scenes) noms.push_back(s.nom);
    return ReponsePorte::echec("Aucune scène ne s'appelle " + cite(c.nom) + ". Scènes : " + enumerer(noms) +
                               ".");
  }
  monde.visible = static_cast<std::size_t>(scene - monde.scenes.data());
  return ReponsePorte::succes("Scène " + scene->nom + ".",
                              donnees({{"scene", scene->nom}, {"dossier", scene->dossier}}));
}

ReponsePorte appliquer(Monde& monde, Instant maintenant, const C::dicter& c) {
  if (Refus::vide(c.texte)) return Refus::manque("texte");
  ReponsePorte refus;
  Agent* agent = Refus::agentOuvert(monde, c.agent, refus);
  if (!agent) return refus;
  if (auto sorti = Refus::sorti(*agent)) return *sorti;
  agent->recevoir(c.texte, c.valider, maintenant);
  if (agent->etat() == EtatAgent::sorti) abandonner(monde, *agent);
  return ReponsePorte::succes(c.valider ? "Envoyé à " + agent->nom + "." : "Posé chez " + agent->nom + ".",
                              agentEtEtat(*agent));
}

ReponsePorte appliquer(Monde& monde, Instant, const C::ouvrirAgent& c) {
  if (auto refus = refusOuverture(monde, c.cli, 1)) return *refus;
  if (auto refus = Refus::tropLong("dossier", c.dossier)) return *refus;
  if (auto refus = Refus::tropLong("hote", c.hote)) return *refus;
  const Scene* nommee = monde.scene(c.dossier);
  const Scene& scene = nommee ? *nommee : monde.sceneVisible();
  const Agent& agent = monde.ouvrir({.cli = *lanceur(c.cli),
                                     .dossier = nommee || Refus::vide(c.dossier) ? scene.dossier : c.dossier,
                                     .hote = std::string(Texte::rogner(c.hote)),
                                     .scene = scene.nom,
                                     .noms = monde.indicatifs});
  return ReponsePorte::succes(agent.nom + " est ouvert : " + agent.cli + " dans " + agent.dossier + ".",
                              donnees({{"nom", agent.nom},
                                       {"cli", agent.cli},
                                       {"dossier", agent.dossier},
                                       {"hote", agent.hote},
                                       {"scene", scene.nom},
                                       {"tmux", agent.tmux}}));
}

ReponsePorte appliquer(Monde& monde, Instant, const C::lire& c) {
  ReponsePorte refus;
  const Agent* agent = Refus::agentOuvert(monde, c.agent, refus);
  if (!agent) return refus;
  const std::string texte = Texte::joindre(agent->ecran(), "\n");
  const auto visible = Texte::rogner(texte);
  const std::string phrase =
      visible.empty() ? "L'écran de " + agent->nom + " est vide."
                      : agent->nom + " affiche : " + std::string(visible.substr(visible.rfind('\n') + 1));
  return ReponsePorte::succes(
      phrase, donnees({{"agent", agent->nom}, {"etat", enMots(agent->etat())}, {"texte", texte}}));
}

ReponsePorte appliquer(Monde& monde, Instant, const C::retiens& c) {
  if (auto refus = Refus::texte("texte", c.texte)) return *refus;
  if (auto refus = refusPlein(monde.notes)) return *refus;
  const std::string portee = replier(c.portee);
  if (portee != "canvas" && portee != "global")
    return ReponsePorte::echec("La portée est canvas ou global, pas " + cite(c.portee) + ".");
  monde.notes.push_back({.texte = c.texte, .scene = portee == "global" ? "" : monde.sceneVisible().nom});
  return ReponsePorte::succes("C'est noté.", donnees({{"portee", portee}}));
}

ReponsePorte appliquer(Monde& monde, Instant, const C::rappelle& c) {
  const auto cherches = mots(c.requete);
  struct Trouvee {
    std::size_t pertinence;
    const Note* note;
  };
  std::vector<Trouvee> trouvees;
  for (auto note = monde.notes.rbegin(); note != monde.notes.rend(); ++note) {  // the latest first
    if (!note->scene.empty() && note->scene != monde.sceneVisible().nom) continue;
    const std::string texte = replier(note->texte);
    const auto pertinence = static_cast<std::size_t>(std::ranges::count_if(
        cherches, [&](const std::string& mot) { return texte.find(mot) != std::string::npos; }));
    if (cherches.empty() || pertinence > 0) trouvees.push_back({pertinence, &*note});
  }
  std::ranges::stable_sort(trouvees, std::ranges::greater{}, &Trouvee::pertinence);
  trouvees.resize(
      std::min(trouvees.size(), static_cast<std::size_t>(std::clamp(c.limite, std::int64_t{1}, limiteMax))));
  Json fiches = Json::array();
  for (const Trouvee& t : trouvees)
    fiches.push_back({{"texte", t.note->texte},
                      {"portee", t.note->scene.empty() ? "global" : "canvas"},
                      {"scene", t.note->scene}});
  const std::string phrase = trouvees.empty() ? "Rien dans la mémoire là-dessus." : trouvees[0].note->texte;
  return ReponsePorte::succes(phrase, donnees({{"fiches", fiches}}));
}

ReponsePorte appliquer(Monde& monde, Instant maintenant, const C::pondreAgent& c) {
  if (Refus::vide(c.cli)) return Refus::manque("cli");
  if (auto refus = Refus::texte("prompt", c.prompt)) return *refus;
  if (auto refus = Refus::tropLong("verify", c.verify)) return *refus;
  if (c.nombre < 1 || c.nombre > exemplairesMax)
    return ReponsePorte::echec("« nombre » va de 1 à " + std::to_string(exemplairesMax) + ".");
  if (auto refus = refusOuverture(monde, c.cli, c.nombre)) return *refus;
  if (auto refus = refusPlein(monde.taches)) return *refus;
  const bool nomme = !Refus::vide(c.nom);
  if (auto refus = nomme ? refusNom(c.nom, true) : std::nullopt) return ReponsePorte::echec(*refus);
  std::vector<std::string> noms;
  Json pondus = Json::array();
  for (std::int64_t i = 0; i < c.nombre; ++i) {
    Agent& agent =
        monde.ouvrir({.cli = *lanceur(c.cli),
                      .dossier = monde.sceneVisible().dossier,
                      .hote = {},
                      .scene = monde.sceneVisible().nom,
                      .noms = nomme ? std::vector{std::string(Texte::rogner(c.nom))} : monde.indicatifs});
    agent.recevoir(c.prompt, true, maintenant);
    monde.taches.push_back({.numero = monde.taches.size() + 1,
                            .agent = agent.id,
                            .nomAgent = agent.nom,
                            .prompt = c.prompt,
                            .verify = std::string(Texte::rogner(c.verify)),
                            .note = {},
                            .etat = Tache::Etat::enCours});
    noms.push_back(agent.nom);
    pondus.push_back({{"agent", agent.nom}, {"tache", monde.taches.back().numero}});
  }
  return ReponsePorte::succes("Au travail : " + enumerer(noms) + ".", donnees({{"agents", pondus}}));
}

ReponsePorte appliquer(Monde& monde, Instant, const C::taches&) {
  Json lignes = Json::array();
  for (const Tache& t : monde.taches)
    lignes.push_back({{"numero", t.numero},
                      {"agent", t.nomAgent},
                      {"etat", etatDeTache(t.etat)},
                      {"prompt", Texte::tronquer(t.prompt, affichesMax)},
                      {"verify", Texte::tronquer(t.verify, affichesMax)},
                      {"note", t.note}});
  const std::string phrase = Texte::joindre(monde.taches, " ", [](const Tache& t) {
    return t.nomAgent + " : " + std::string(etatDeTache(t.etat)) + ".";
  });
  return ReponsePorte::succes(phrase.empty() ? "Aucune tâche." : phrase, donnees({{"taches", lignes}}));
}

/// What fini and bloque have in common: who declares must be alive.
Agent* declarant(Monde& monde, const std::string& nom, ReponsePorte& refus) {
  Agent* agent = Refus::session(monde, nom, refus);
  if (!agent) return nullptr;
  if (auto sorti = Refus::sorti(*agent)) {
    refus = *sorti;
    return nullptr;
  }
  return agent;
}

ReponsePorte appliquer(Monde& monde, Instant, const C::fini& c) {
  ReponsePorte refus;
  Agent* agent = declarant(monde, c.agent, refus);
  if (!agent) return refus;
  const std::string note = Texte::tronquer(Texte::rogner(c.note), affichesMax);
  agent->declarerFini(note);
  rapporter(monde, *agent, note);
  return ReponsePorte::succes(agent->nom + (note.empty() ? " a fini." : " a fini : " + note),
                              agentEtEtat(*agent));
}

ReponsePorte appliquer(Monde& monde, Instant, const C::bloque& c) {
  if (Refus::vide(c.raison)) return Refus::manque("raison");
  ReponsePorte refus;
  Agent* agent = declarant(monde, c.agent, refus);
  if (!agent) return refus;
  const std::string raison = Texte::tronquer(Texte::rogner(c.raison), affichesMax);
  agent->declarerBloque(raison);
  return ReponsePorte::succes(agent->nom + " a besoin de vous : " + raison, agentEtEtat(*agent));
}

ReponsePorte appliquer(Monde& monde, Instant, const C::postit& c) {
  if (auto refus = Refus::texte("texte", c.texte)) return *refus;
  if (auto refus = refusPlein(monde.postits)) return *refus;
  monde.postits.push_back({.texte = c.texte, .scene = monde.sceneVisible().nom});
  return ReponsePorte::succes("Post-it posé.", donnees({{"scene", monde.sceneVisible().nom}}));
}

ReponsePorte appliquer(Monde& monde, Instant, const C::nommerZone& c) {
  if (auto refus = refusNom(c.nom, false)) return ReponsePorte::echec(*refus);
  ReponsePorte refus;
  Fenetre* fenetre = Refus::fenetreVisee(monde, c.cible, refus);
  if (!fenetre) return refus;
  const std::string etiquette(Texte::rogner(c.nom));
  const Fenetre* porteuse = monde.fenetre(etiquette);
  if ((porteuse && porteuse != fenetre) || (!porteuse && monde.agent(etiquette)))
    return ReponsePorte::echec(cite(etiquette) + " désigne déjà autre chose.");
  if (!porteuse) {
    if (fenetre->etiquettes.size() >= etiquettesMax)
      return ReponsePorte::echec(fenetre->nom + " a déjà " + std::to_string(etiquettesMax) + " étiquettes.");
    fenetre->etiquettes.push_back(etiquette);
  }
  return ReponsePorte::succes(fenetre->nom + " répond aussi au nom de " + cite(etiquette) + ".",
                              donnees({{"cible", fenetre->nom}, {"nom", etiquette}}));
}

ReponsePorte appliquer(Monde& monde, Instant, const C::nommage& c) {
  std::vector<std::string> noms;
  for (const std::string& nom : c.noms) {
    if (auto refus = refusNom(nom, true)) return ReponsePorte::echec(*refus);
    const auto memeNom = [&](const std::string& autre) { return replier(autre) == replier(nom); };
    if (std::ranges::none_of(noms, memeNom)) noms.push_back(nom);
    if (noms.size() > indicatifsMax)
      return ReponsePorte::echec("Trop d'indicatifs : " + std::to_string(indicatifsMax) + " au plus.");
  }
  const bool usine = noms.empty();
  monde.indicatifs = usine ? rosterUsine() : std::move(noms);
  return ReponsePorte::succes(usine ? "Retour aux noms d'usine : Merlin, Milan, Harfang…"
                                    : "Les prochains agents : " + enumerer(monde.indicatifs) + ".",
                              donnees({{"noms", monde.indicatifs}}));
}

ReponsePorte appliquer(Monde& monde, Instant, const C::fermer& c) {
  ReponsePorte refus;
  const Fenetre* fenetre = Refus::fenetreVisee(monde, c.cible, refus);
  if (!fenetre) return refus;
  const Agent* agent = monde.agent(fenetre->agent);
  const std::string session = agent && agent->etat() != EtatAgent::sorti ? agent->tmux : "";
  const std::string nom = fenetre->nom;
  monde.fermer(*fenetre);
  return ReponsePorte::succes(
      "Fermé : " + nom + (session.empty() ? "." : ", dont la session " + session + " continue."),
      donnees({{"ferme", Json::array({nom})}}));
}

ReponsePorte appliquer(Monde& monde, Instant, const C::fermerTout& c) {
  std::vector<std::string> epargnes;
  for (const std::string& nom : Champ::liste({{"sauf", c.sauf}}, "sauf")) {
    ReponsePorte refus;
    const Fenetre* fenetre = Refus::fenetreVisee(monde, nom, refus);
    if (!fenetre) return refus;  // a misheard name must not cost the window it meant
    epargnes.push_back(fenetre->nom);
  }
  std::vector<std::string> fermes;
  for (const Fenetre& f : monde.fenetres)
    if (f.scene == monde.sceneVisible().nom && std::ranges::find(epargnes, f.nom) == epargnes.end())
      fermes.push_back(f.nom);
  for (const std::string& nom : fermes) monde.fermer(*monde.fenetre(nom));
  return ReponsePorte::succes(fermes.empty() ? "Rien à fermer." : "Fermé : " + enumerer(fermes) + ".",
                              donnees({{"ferme", fermes}}));
}

ReponsePorte appliquer(Monde&, Instant, const C::inconnue& c) {
  return Refus::vide(c.action) ? Refus::manque("action")
                               : ReponsePorte::echec("Verbe inconnu : " + cite(c.action) + ".");
}

template <class Cas, class... Autres>
concept UnDe = (std::same_as<Cas, Autres> || ...);

/// The verbs that a board without processes, browser or operator cannot honour.
ReponsePorte appliquer(
    Monde&, Instant,
    const UnDe<C::ouvrirWeb, C::resumer, C::commande, C::souffler, C::lireTerminal, C::shell, C::capture,
               C::captureWeb, C::diffuser, C::relancerAgent, C::script, C::ouvrirChat, C::messageChat,
               C::attendre, C::envoyerTouches, C::ranger> auto&) {
  return ReponsePorte::pasCable;
}

}  // namespace

ReponsePorte appliquer(Monde& monde, const CommandeControle& commande, Instant maintenant) {
  return std::visit([&](const auto& cas) { return appliquer(monde, maintenant, cas); }, commande.cas);
}

std::string_view enMots(EtatAgent etat) {
  switch (etat) {
    case EtatAgent::repos: return "au repos";
    case EtatAgent::travaille: return "travaille";
    case EtatAgent::besoin: return "attend une réponse";
    case EtatAgent::sorti: return "sorti";
  }
  return "";
}

std::optional<PorteJSON> donnees(const Json& json) { return PorteJSON::depuis(json); }

}  // namespace tarnavelle::PorteEssai::Verbes
