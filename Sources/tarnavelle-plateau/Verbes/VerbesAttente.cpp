// `attendre`, the only verb that takes its time.
#include <algorithm>
#include <cmath>
#include <variant>

#include "Appliquer.hpp"
#include "Motif.hpp"
#include "Noms.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::chrono::seconds attenteDefaut{60};
constexpr std::chrono::seconds attenteMax{300};
constexpr std::chrono::seconds entreRegards{1};  ///< at whether the caller is still there

/// What a wait is for: an event of the agent's life, or a pattern on its screen.
using Objet = std::variant<Evenement, Motif>;

OuRefus<Objet> objetDe(const C::attendre& commande) {
  const std::string jusqua = Texte::replier(commande.jusquA);
  if (!commande.motif.empty()) {
    // Alone it is enough, and "idle" is what jusqu_a is when it is not given.
    if (!jusqua.empty() && jusqua != "motif" && jusqua != raisonDe(Evenement::idle))
      return Sinon{ReponsePorte::echec("« motif » ne va pas avec « jusqu_a » " + cite(commande.jusquA) +
                                       " : c'est l'un ou l'autre.")};
    auto motif = Motif::lire(commande.motif);
    if (motif) return Objet(std::move(*motif));
    switch (motif.raison()) {
      case Motif::Refus::tropLong:
        return Sinon{ReponsePorte::echec("« motif » est trop long : " + std::to_string(Motif::caracteresMax) +
                                         " caractères au plus.")};
      case Motif::Refus::malforme:
        return Sinon{ReponsePorte::echec(cite(commande.motif) + " n'est pas une expression régulière.")};
      case Motif::Refus::tropCouteux:
        return Sinon{
            ReponsePorte::echec(cite(commande.motif) + " demande trop de calcul : simplifie le motif.")};
    }
  }
  if (jusqua == "motif") return Sinon{ReponsePorte::echec("Il manque « motif ».")};
  if (jusqua.empty()) return Objet(Evenement::idle);
  for (const Evenement e : {Evenement::idle, Evenement::besoin, Evenement::fini, Evenement::mort})
    if (jusqua == raisonDe(e)) return Objet(e);
  return Sinon{ReponsePorte::echec("« jusqu_a » vaut idle, besoin, fini, mort ou motif, pas " +
                                   cite(commande.jusquA) + ".")};
}

std::string phraseDe(const std::string& agent, std::string_view raison) {
  if (raison == "idle") return agent + " s'est calmé.";
  if (raison == "besoin") return agent + " attend une réponse.";
  if (raison == "fini") return agent + " a fini.";
  if (raison == "mort") return agent + " est sorti.";
  if (raison == "motif") return "Le motif est à l'écran de " + agent + ".";
  return "Délai écoulé : rien de ce qui était attendu chez " + agent + ".";
}

/// How long a wait lasts, and how it is told.
struct Patience {
  Instant debut;
  Instant echeance;
  bool ecourtee = false;  ///< the caller's own patience ends it sooner than he asked
  std::function<bool()> parti;

  Patience(const Atelier& atelier, const Appelant& appelant, std::int64_t timeoutS)
      : debut(atelier.sol.horloge.maintenant()), parti(appelant.parti) {
    const auto demandee = timeoutS <= 0 ? attenteDefaut : std::min(std::chrono::seconds(timeoutS), attenteMax);
    const auto permise = appelant.patience ? appelant.patience : atelier.reglages.patienceMuette;
    ecourtee = permise && *permise < demandee;
    echeance = debut + (ecourtee ? *permise : demandee);
  }

  bool delaissee() const { return parti && parti(); }
  /// When to look again whether anybody still waits.
  Instant reveil(Instant maintenant) const {
    return parti ? std::min(echeance, maintenant + entreRegards) : echeance;
  }
  double duree(Instant maintenant) const {
    return std::round(std::chrono::duration<double, std::milli>(maintenant - debut).count()) / 1000;
  }
  std::string phrase(const std::string& nom, std::string_view raison) const {
    return phraseDe(nom, raison) + (raison == "timeout" && ecourtee ? " Relance attendre pour continuer." : "");
  }
};

/// Looks for a pattern on a screen, when that has changed.
class Veilleur {
 public:
  Veilleur(Atelier& atelier, const Motif* motif, IdTerminal terminal)
      : atelier_(atelier), motif_(motif), terminal_(std::move(terminal)) {}
  bool present() {
    const auto ecran = motif_ ? atelier_.sol.terminaux.ecran(terminal_) : Sinon{Panne::inconnu};
    if (!ecran || revisionLue_ == ecran->revision) return false;
    revisionLue_ = ecran->revision;
    return motif_->present(ecran->lignes);
  }

 private:
  Atelier& atelier_;
  const Motif* motif_;
  const IdTerminal terminal_;
  std::optional<std::uint64_t> revisionLue_;
};

ReponsePorte attendreAgent(Atelier& atelier, const FicheAgent& agent, const Objet& objet,
                           const Patience& patience) {
  const auto* evenement = std::get_if<Evenement>(&objet);
  const auto passages = evenement ? atelier.passages(agent.id, *evenement) : 0;
  std::optional<Atelier::Guet> guet;
  std::optional<Veilleur> veilleur;
  std::optional<IdTerminal> terminal;
  while (true) {
    const auto vus = atelier.battements();
    const auto encore = atelier.sol.registre.agent(agent.id);  // the dead leave the board with their window
    const bool parti = encore && !*encore;
    const FicheAgent& fiche = encore && *encore ? **encore : agent;
    if (terminal != terminalDe(fiche)) {  // at first, and once it was started anew
      terminal = terminalDe(fiche);
      guet.emplace(atelier, fiche);
      veilleur.emplace(atelier, std::get_if<Motif>(&objet), *terminal);
    }
    const Constat constat = parti ? Constat{} : atelier.constat(fiche);
    const Etat etat = parti ? Etat::sorti : constat.situation.etat;
    const Instant maintenant = atelier.sol.horloge.maintenant();
    const auto rendre = [&](bool atteint, std::string_view raison) {
      const bool rompue = etat == Etat::rompue && raison == "timeout";
      return ReponsePorte::succes(rompue ? "Délai écoulé : le lien avec " + agent.nom + " sur " +
                                               cite(agent.hote) + " est rompu, ce qu'il fait n'est pas connu."
                                         : patience.phrase(agent.nom, raison),
                                  donnees({{"agent", agent.nom},
                                           {"atteint", atteint},
                                           {"raison", raison},
                                           {"duree_s", patience.duree(maintenant)},
                                           {"etat", enMots(etat)}}));
    };
    if (!parti && veilleur->present()) return rendre(true, "motif");
    if (evenement && !parti &&
        (Atelier::est(constat, *evenement) || atelier.passages(agent.id, *evenement) != passages))
      return rendre(true, raisonDe(*evenement == Evenement::idle && Atelier::est(constat, Evenement::besoin)
                                       ? Evenement::besoin
                                       : *evenement));
    if (etat == Etat::sorti) return rendre(evenement && *evenement == Evenement::mort, "mort");
    if (maintenant >= patience.echeance) return rendre(false, "timeout");
    if (patience.delaissee()) return ReponsePorte::echec("Plus personne n'attend.");
    if (!atelier.dormir(vus, patience.reveil(maintenant))) return ReponsePorte::echec("La porte ferme.");
  }
}

/// A shell's window: its line ends, or its screen shows something. It needs nobody.
ReponsePorte attendreFenetre(Atelier& atelier, const FicheFenetre& fenetre, const Objet& objet,
                             const Patience& patience) {
  const auto* evenement = std::get_if<Evenement>(&objet);
  const Atelier::Guet guet(atelier, fenetre.id, terminalDe(fenetre));
  Veilleur veilleur(atelier, std::get_if<Motif>(&objet), terminalDe(fenetre));
  atelier.relever();  // the ground tells of an end when it happens to notice, and when asked
  while (true) {
    const auto vus = atelier.battements();
    const auto fiches = atelier.sol.registre.fenetres();
    const FicheFenetre* fiche = nullptr;
    if (fiches)
      if (const auto la = std::ranges::find(*fiches, fenetre.id, &FicheFenetre::id); la != fiches->end())
        fiche = &*la;
    const bool finie = fiches && (!fiche || fiche->termine);
    const Instant maintenant = atelier.sol.horloge.maintenant();
    const auto rendre = [&](bool atteint, std::string_view raison) {
      const std::optional<int> statut = finie && fiche ? fiche->statut : std::nullopt;
      Json json = {{"nom", fenetre.nom},
                   {"atteint", atteint},
                   {"raison", raison},
                   {"duree_s", patience.duree(maintenant)},
                   {"fini", finie}};
      if (statut) json["statut"] = *statut;
      std::string phrase = patience.phrase(fenetre.nom, raison);
      if (finie && raison != "motif")
        phrase = cite(fenetre.commande) + " a pris fin dans " + fenetre.nom +
                 (statut ? ", statut " + std::to_string(*statut) + "." : ", statut inconnu.");
      return ReponsePorte::succes(phrase, donnees(json));
    };
    if (veilleur.present()) return rendre(true, "motif");
    if (finie && evenement && *evenement != Evenement::besoin) return rendre(true, raisonDe(*evenement));
    if (finie) return rendre(false, "mort");
    if (maintenant >= patience.echeance) return rendre(false, "timeout");
    if (patience.delaissee()) return ReponsePorte::echec("Plus personne n'attend.");
    if (!atelier.dormir(vus, patience.reveil(maintenant))) return ReponsePorte::echec("La porte ferme.");
  }
}

}  // namespace

ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::attendre& c) {
  const auto objet = objetDe(c);
  if (!objet) return objet.raison();
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  const Patience patience(atelier, appelant, c.timeoutS);
  const auto agent = tableau->agent(c.agent);
  if (auto refus = agent ? refusLaBas(atelier, *agent) : std::nullopt) return *refus;
  if (agent) return attendreAgent(atelier, *agent, *objet, patience);
  if (!vide(c.agent))
    if (const auto fenetre = tableau->fenetre(c.agent);
        fenetre && fenetre->fenetre && !fenetre->session.empty())
      return attendreFenetre(atelier, *fenetre->fenetre, *objet, patience);
  return agent.raison();
}

}  // namespace tarnavelle::Plateau
