#include "Plateau.hpp"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <utility>
#include <variant>

#include "Motif.hpp"
#include "Noms.hpp"
#include "Refus.hpp"
#include "Socle/Resultat.hpp"
#include "Socle/Texte.hpp"
#include "Verbes.hpp"

namespace tarnavelle::PorteEssai {
namespace {

/// What a wait is for: an event of the agent's life, or a pattern on its screen.
using Objet = std::variant<Evenement, Motif>;

std::string_view raisonDe(const Objet& objet) {
  const auto* evenement = std::get_if<Evenement>(&objet);
  if (!evenement) return "motif";
  switch (*evenement) {
    case Evenement::idle: return "idle";
    case Evenement::besoin: return "besoin";
    case Evenement::fini: return "fini";
    case Evenement::mort: return "mort";
  }
  return "";
}

Resultat<Objet, ReponsePorte> objetDe(const CommandeControle::attendre& commande) {
  const std::string jusqua = replier(commande.jusquA);
  if (!commande.motif.empty()) {
    if (Texte::caracteres(commande.motif) > Motif::caracteresMax)
      return Sinon{ReponsePorte::echec("« motif » est trop long : " + std::to_string(Motif::caracteresMax) +
                                       " caractères au plus.")};
    if (auto motif = Motif::lire(commande.motif)) return Objet(std::move(*motif));
    return Sinon{ReponsePorte::echec(cite(commande.motif) + " n'est pas une expression régulière.")};
  }
  if (jusqua == "motif") return Sinon{ReponsePorte::echec("Il manque « motif ».")};
  if (jusqua.empty()) return Objet(Evenement::idle);
  for (const Evenement e : {Evenement::idle, Evenement::besoin, Evenement::fini, Evenement::mort})
    if (jusqua == raisonDe(e)) return Objet(e);
  return Sinon{ReponsePorte::echec("« jusqu_a » vaut idle, besoin, fini, mort ou motif, pas " +
                                   cite(commande.jusquA) + ".")};
}

struct Issue {
  bool atteint;
  std::string_view raison;
};

std::string phraseDe(const std::string& agent, std::string_view raison) {
  if (raison == "idle") return agent + " s'est calmé.";
  if (raison == "besoin") return agent + " attend une réponse.";
  if (raison == "fini") return agent + " a fini.";
  if (raison == "mort") return agent + " est sorti.";
  if (raison == "motif") return "Le motif est à l'écran de " + agent + ".";
  return "Délai écoulé : rien de ce qui était attendu chez " + agent + ".";
}

ReponsePorte compteRendu(const std::string& agent, Issue issue, Instant::duration duree,
                         std::string_view etat) {
  const double secondes = std::round(std::chrono::duration<double, std::milli>(duree).count()) / 1000;
  return ReponsePorte::succes(phraseDe(agent, issue.raison), Verbes::donnees({{"agent", agent},
                                                                              {"atteint", issue.atteint},
                                                                              {"raison", issue.raison},
                                                                              {"duree_s", secondes},
                                                                              {"etat", etat}}));
}

}  // namespace

Instant HorlogeReelle::maintenant() const { return std::chrono::steady_clock::now(); }

void HorlogeReelle::attendre(std::condition_variable& reveil, std::unique_lock<std::mutex>& verrou,
                             Instant echeance) {
  reveil.wait_until(verrou, echeance);
}

Plateau::Plateau(Horloge& horloge) : horloge_(horloge) {}

ReponsePorte Plateau::executer(const CommandeControle& commande) {
  if (const auto* attente = std::get_if<CommandeControle::attendre>(&commande.cas)) return attendre(*attente);
  const std::lock_guard verrou(mutex_);
  const Instant maintenant = horloge_.maintenant();
  monde_.actualiser(maintenant);
  ReponsePorte reponse = Verbes::appliquer(monde_, commande, maintenant);
  reveil_.notify_all();
  return reponse;
}

void Plateau::arreter() {
  const std::lock_guard verrou(mutex_);
  arrete_ = true;
  reveil_.notify_all();
}

ReponsePorte Plateau::attendre(const CommandeControle::attendre& commande) {
  const auto objet = objetDe(commande);
  if (!objet) return objet.raison();
  const auto* evenement = std::get_if<Evenement>(&*objet);
  const auto* motif = std::get_if<Motif>(&*objet);

  std::unique_lock verrou(mutex_);
  const auto patience =
      commande.timeoutS <= 0 ? attenteDefaut : std::min(std::chrono::seconds(commande.timeoutS), attenteMax);
  const Instant debut = horloge_.maintenant();
  const Instant echeance = debut + patience;
  monde_.actualiser(debut);
  ReponsePorte refus;
  const Agent* agent = Refus::session(monde_, commande.agent, refus);
  if (!agent) return refus;
  const std::uint64_t id = agent->id;
  const std::string nom = agent->nom;
  const std::uint64_t passages = evenement ? agent->passages(*evenement) : 0;
  std::optional<std::uint64_t> revisionLue;

  while (true) {
    if (arrete_) return ReponsePorte::echec("La porte ferme.");
    const Instant maintenant = horloge_.maintenant();
    monde_.actualiser(maintenant);
    agent = monde_.agent(id);  // the dead leave the board with their window
    const std::string_view etat = Verbes::enMots(agent ? agent->etat() : EtatAgent::sorti);
    const auto rendre = [&](const Issue& issue) { return compteRendu(nom, issue, maintenant - debut, etat); };

    if (motif && agent && revisionLue != agent->revision()) {
      revisionLue = agent->revision();
      const std::deque<std::string> ecran = agent->ecran();
      verrou.unlock();  // a costly pattern must not hold the board
      const auto resultat = motif->chercher(ecran);
      verrou.lock();
      if (resultat == Motif::Resultat::present) return rendre({true, raisonDe(*objet)});
      if (resultat == Motif::Resultat::tropCouteux)
        return ReponsePorte::echec(cite(commande.motif) + " demande trop de calcul : simplifie le motif.");
      continue;  // the board may have moved meanwhile
    }
    if (evenement && agent && (agent->est(*evenement) || agent->passages(*evenement) != passages))
      return rendre({true, raisonDe(*objet)});
    if (!agent || agent->etat() == EtatAgent::sorti)
      return rendre({evenement && *evenement == Evenement::mort, "mort"});
    if (maintenant >= echeance) return rendre({false, "timeout"});
    horloge_.attendre(reveil_, verrou, std::min(echeance, monde_.prochainChangement().value_or(echeance)));
  }
}

}  // namespace tarnavelle::PorteEssai
