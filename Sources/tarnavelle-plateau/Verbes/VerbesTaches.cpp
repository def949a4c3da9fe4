// Tracked work: agents laid with a task, what they declare, how a task is attested.
#include <algorithm>

#include "Appliquer.hpp"
#include "Noms.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::int64_t exemplairesMax = 8;

std::string_view etatDeTache(FicheTache::Etat etat) {
  switch (etat) {
    case FicheTache::Etat::enCours: return "en cours";
    case FicheTache::Etat::done: return "done";
    case FicheTache::Etat::unknown: return "unknown";
  }
  return "";
}

/// Who declares: the one named, else the one that calls. An agent speaks for itself alone, and must live.
OuRefus<FicheAgent> declarant(const Atelier& atelier, const Tableau& tableau, const Appelant& appelant,
                              const std::string& nom, std::string_view verbe) {
  const FicheAgent* soi = tableau.parId(appelant.agent);
  auto agent = soi && vide(nom) ? OuRefus<FicheAgent>(*soi) : tableau.agent(nom);
  if (!agent) return agent;
  if (soi && agent->id != soi->id)
    return Sinon{ReponsePorte::echec(std::string(verbe) + " se déclare pour soi : tu es " + soi->nom +
                                     ", pas " + agent->nom + ".")};
  if (auto refus = refusSorti(atelier, *agent)) return Sinon{*refus};
  return agent;
}

/// In a list: what is known of how it was attested too.
std::string etatDite(const FicheTache& t) {
  std::string dit(etatDeTache(t.etat));
  if (t.etat == FicheTache::Etat::enCours && t.rapportee) return dit + " (vérification)";
  return t.etat == FicheTache::Etat::unknown && !t.issue.empty() ? dit + " (" + t.issue + ")" : dit;
}

std::string enMots(const Machine::Issue& issue) {
  if (issue.horsDelai) return "hors délai";
  return issue.statut < 0 ? "interrompue" : "statut " + std::to_string(issue.statut);
}

/// What the agent's report is about: its tasks under way, else the last one that its report could not attest.
std::vector<FicheTache> aRapporter(const std::vector<FicheTache>& taches, const FicheAgent& agent) {
  std::vector<FicheTache> visees;
  const FicheTache* derniere = nullptr;
  for (const FicheTache& t : taches) {
    if (t.agent != agent.id) continue;
    if (t.etat == FicheTache::Etat::enCours) visees.push_back(t);
    if (t.etat == FicheTache::Etat::unknown && t.rapportee) derniere = &t;
  }
  if (visees.empty() && derniere) visees.push_back(*derniere);
  return visees;
}

/// What was reported for the agent's tasks; those that nothing is to attest are closed at once.
Garde<Fait> rapporter(Atelier& atelier, const FicheAgent& agent, const std::string& note) {
  const auto taches = atelier.sol.registre.taches();
  if (!taches) return Sinon{taches.raison()};
  for (const FicheTache& t : aRapporter(*taches, agent)) {
    auto garde = atelier.sol.registre.rapporter(t.numero, note, atelier.date());
    if (garde && t.verify.empty())
      garde = atelier.sol.registre.juger(t.numero, {.etat = FicheTache::Etat::done}, atelier.date());
    else if (garde && !atelier.sol.machine)  // nothing here can run a command
      garde = atelier.sol.registre.juger(t.numero, {}, atelier.date());
    if (!garde) return garde;
  }
  atelier.sonner();
  return Fait{};
}

std::optional<PorteJSON> agentEtEtat(const Atelier& atelier, const FicheAgent& agent) {
  return donnees({{"agent", agent.nom}, {"etat", atelier.etat(agent)}});
}

/// A worker, its task, and what became of the text.
struct Ponte {
  AgentOuvert ouvert;
  FicheTache tache{};
  std::string livraison{};
};

/// Its task is kept; of a worker that is gone at once, or whose task cannot be, nothing is left.
std::optional<ReponsePorte> engager(Atelier& atelier, Ponte& ponte) {
  if (auto refus = refusParti(atelier, ponte.ouvert)) return refus;
  ponte.tache.agent = ponte.ouvert.agent.id;
  ponte.tache.nomAgent = ponte.ouvert.agent.nom;
  ponte.tache.pondue = atelier.date();
  const auto numero = atelier.sol.registre.pondre(ponte.tache);
  if (numero) {
    ponte.tache.numero = *numero;
    return std::nullopt;
  }
  atelier.oublier(ponte.ouvert.agent);
  return refus(numero.raison());
}

/// The text is given now when the agent can take it, else kept as a message that it will be given.
void confier(Atelier& atelier, const Appelant& appelant, Ponte& ponte) {
  const FicheAgent& agent = ponte.ouvert.agent;
  if (ponte.ouvert.pret || !atelier.sol.veille.saitLire(agent.id)) {
    const Livraison livraison = atelier.taper(agent, ponte.tache.prompt, true);
    ponte.livraison = nom(livraison.sort);
    if (livraison.sort != Livraison::Sort::refuse) return;
  }
  const bool garde = static_cast<bool>(garderPour(atelier, appelant, agent, ponte.tache.prompt));
  ponte.livraison = garde ? "attend" : nom(Livraison::Sort::refuse);
}

std::string phraseDesPontes(const std::vector<Ponte>& pontes, std::int64_t voulues) {
  std::vector<std::string> phrases;
  const auto dire = [&](const std::string& quoi, auto dont) {
    std::vector<std::string> noms;
    for (const Ponte& p : pontes)
      if (dont(p.livraison)) noms.push_back(p.ouvert.agent.nom);
    if (!noms.empty()) phrases.push_back(quoi + enumerer(noms) + ".");
  };
  dire("Au travail : ", [](const std::string& l) { return l == "soumis"; });
  dire("Gardée pour ", [](const std::string& l) { return l == "attend"; });
  dire("Sans preuve que la consigne soit partie : ",
       [](const std::string& l) { return l != "soumis" && l != "attend"; });
  if (const auto manquent = voulues - static_cast<std::int64_t>(pontes.size()); manquent > 0)
    phrases.push_back("Il en manque " + std::to_string(manquent) + " :");
  return Texte::joindre(phrases, " ");
}

}  // namespace

std::string nomDe(const Appelant& appelant, const Tableau& tableau) {
  const FicheAgent* agent = tableau.parId(appelant.agent);
  return agent ? agent->nom : "l'opérateur";
}

ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::pondreAgent& c) {
  if (vide(c.cli)) return manque("cli");
  if (auto refus = refusTexte("prompt", c.prompt)) return *refus;
  if (auto refus = tropLong("verify", c.verify)) return *refus;
  if (c.nombre < 1 || c.nombre > exemplairesMax)
    return ReponsePorte::echec("« nombre » va de 1 à " + std::to_string(exemplairesMax) + ".");
  if (auto refus = refusOuverture(atelier, c.cli, c.nombre)) return *refus;
  if (!vide(c.nom))
    if (auto refus = refusNom(c.nom, true)) return ReponsePorte::echec(*refus);
  const Instant limite = atelier.sol.horloge.maintenant() + frappeMax;
  std::vector<Ponte> pontes;
  std::optional<ReponsePorte> manque;  // those that were laid stay, and are told
  while (!manque && static_cast<std::int64_t>(pontes.size()) < c.nombre) {
    auto agent = lancerUnAgent(atelier, {.programme = c.cli, .dossier = {}, .hote = {}, .nom = c.nom});
    if (agent)
      pontes.push_back({.ouvert = {.agent = std::move(*agent)},
                        .tache = {.prompt = c.prompt,
                                  .verify = std::string(Texte::rogner(c.verify)),
                                  .exemplaire = static_cast<int>(pontes.size()) + 1,
                                  .nombre = static_cast<int>(c.nombre)}});
    else
      manque = agent.raison();
  }
  surPlusieursFils(pontes.size(), [&](std::size_t i) {
    pontes[i].ouvert = attendrePret(atelier, std::move(pontes[i].ouvert.agent), limite);
  });
  std::vector<Ponte> engagees;
  for (Ponte& ponte : pontes) {
    if (auto refus = engager(atelier, ponte))
      manque = std::move(refus);
    else
      engagees.push_back(std::move(ponte));
  }
  if (engagees.empty()) return *manque;
  surPlusieursFils(engagees.size(), [&](std::size_t i) { confier(atelier, appelant, engagees[i]); });
  Json pondus = Json::array();
  for (const Ponte& p : engagees)
    pondus.push_back({{"agent", p.ouvert.agent.nom}, {"tache", p.tache.numero}, {"livraison", p.livraison}});
  std::string phrase = phraseDesPontes(engagees, c.nombre);
  if (manque) phrase += " " + manque->error.value_or("");
  return ReponsePorte::succes(phrase, donnees({{"agents", pondus}}));
}

ReponsePorte appliquer(Atelier& atelier, const Appelant&, const C::taches&) {
  const auto taches = atelier.sol.registre.taches();
  if (!taches) return refus(taches.raison());
  Json lignes = Json::array();
  for (const FicheTache& t : *taches) {
    Json ligne = {{"numero", t.numero},
                  {"agent", t.nomAgent},
                  {"etat", etatDeTache(t.etat)},
                  {"prompt", Texte::tronquer(t.prompt, affichesMax)},
                  {"verify", Texte::tronquer(t.verify, affichesMax)},
                  {"note", t.note}};
    if (!t.sortie.empty()) ligne["sortie"] = t.sortie;
    if (!t.issue.empty()) ligne["verification"] = t.issue;
    if (t.etat == FicheTache::Etat::enCours && t.rapportee) ligne["verification"] = "en cours";
    lignes.push_back(std::move(ligne));
  }
  const std::string phrase =
      Texte::joindre(*taches, " ", [](const FicheTache& t) { return t.nomAgent + " : " + etatDite(t) + "."; });
  return ReponsePorte::succes(phrase.empty() ? "Aucune tâche." : phrase, donnees({{"taches", lignes}}));
}

ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::fini& c) {
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  const auto agent = declarant(atelier, *tableau, appelant, c.agent, "fini");
  if (!agent) return agent.raison();
  const std::string note = Texte::tronquer(Texte::rogner(c.note), affichesMax);
  if (const auto garde = rapporter(atelier, *agent, note); !garde) return refus(garde.raison());
  if (const auto garde = atelier.declencher(agent->id, raisonDe(Evenement::fini)); !garde)
    return refus(garde.raison());
  atelier.sol.veille.declarerFini(agent->id);
  return ReponsePorte::succes(agent->nom + (note.empty() ? " a fini." : " a fini : " + note),
                              agentEtEtat(atelier, *agent));
}

ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::bloque& c) {
  if (vide(c.raison)) return manque("raison");
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  const auto agent = declarant(atelier, *tableau, appelant, c.agent, "bloque");
  if (!agent) return agent.raison();
  const std::string raison = Texte::tronquer(Texte::rogner(c.raison), affichesMax);
  if (const auto garde = atelier.declencher(agent->id, raisonDe(Evenement::besoin)); !garde)
    return refus(garde.raison());
  atelier.sol.veille.declarerBloque(agent->id, raison);
  return ReponsePorte::succes(agent->nom + " a besoin de vous : " + raison, agentEtEtat(atelier, *agent));
}

bool attesterUneTache(Atelier& atelier) {
  if (!atelier.sol.machine) return false;
  if (!atelier.rattraper()) return false;
  const auto lues = atelier.sol.registre.tachesAJuger();
  if (!lues) return false;
  const auto libre =
      std::ranges::find_if(*lues, [&](const FicheTache& t) { return atelier.verifiees.prendre(t.numero); });
  if (libre == lues->end()) return false;
  const FicheTache& due = *libre;
  const auto agent = atelier.sol.registre.agent(due.agent);
  // A worker that was forgotten left no folder to attest anything in.
  Machine::Issue issue;
  const bool vu = agent && *agent;
  if (vu)
    issue = atelier.sol.machine->verifier({.commande = due.verify,
                                           .dossier = (*agent)->dossier,
                                           .auPlus = atelier.reglages.verificationMax,
                                           .arret = [&] { return atelier.arrete(); }});
  if (issue.arretee) return false;  // the next door attests it
  const bool atteste = issue.statut == 0 && !issue.horsDelai;
  const auto etat = atteste ? FicheTache::Etat::done : FicheTache::Etat::unknown;
  const bool juge = atelier.consigner(
      [=, &atelier, numero = due.numero, dite = vu ? enMots(issue) : "", quand = atelier.date()] {
        auto ecrit =
            atelier.sol.registre.juger(numero, {.etat = etat, .sortie = issue.sortie, .issue = dite}, quand);
        // Until it is written, nobody is to find it out anew.
        if (ecrit || ecrit.raison().cas == Avarie::Cas::absent) atelier.verifiees.rendre(numero);
        return ecrit;
      });
  atelier.sonner();
  return juge;
}

}  // namespace tarnavelle::Plateau
