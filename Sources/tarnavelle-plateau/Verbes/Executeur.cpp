#include "Verbes/Executeur.hpp"

#include <algorithm>
#include <array>
#include <map>
#include <thread>

#include "Adoption.hpp"
#include "Appliquer.hpp"
#include "Noms.hpp"
#include "Porte/LigneVerbe.hpp"
#include "Services.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::size_t cibleMax = 80;  ///< characters of a name in the journal
/// Between two rounds when nothing tells that there is something to do: an agent whose state nobody watches.
constexpr std::chrono::seconds ronde{5};

template <class Cas, class... Autres>
concept UnDe = (std::same_as<Cas, Autres> || ...);

/// The verbs that no board of terminals can honour yet.
ReponsePorte appliquer(Atelier&, const Appelant&, const UnDe<C::captureWeb> auto&) {
  return ReponsePorte::pasCable;
}

ReponsePorte appliquer(Atelier&, const Appelant&, const C::inconnue& c) {
  return vide(c.action) ? manque("action") : ReponsePorte::echec("Verbe inconnu : " + cite(c.action) + ".");
}

/// What a call names, for the journal: the first argument that designates an agent or a window.
std::string cibleDe(const LigneVerbe& verbe, const Json& corps) {
  for (const ParamVoix& p : verbe.outil.parametres)
    if (verbe.designe(p.nom) == Designe::agent) return Champ::texte(corps, p.nom);
  return "";
}

/// A value as the text that a command line would give for it.
std::string enTexte(const Json& valeur) {
  if (valeur.is_string()) return valeur.get<std::string>();
  if (!valeur.is_array()) return valeur.dump(-1, ' ', false, Json::error_handler_t::replace);
  return Texte::joindre(valeur, ",", enTexte);
}

/// An argument of a type that its verb does not read is as good as absent to the decoder, and then may mean the
/// agent looked at, or everybody: what it says as a text is not to be lost. Nothing when all are read.
std::optional<ReponsePorte> refusGenre(const LigneVerbe& verbe, const Json& corps) {
  for (const ParamVoix& p : verbe.outil.parametres) {
    const Json* valeur = Champ::membre(corps, p.nom);
    const std::string* texte = Champ::chaine(corps, p.nom);
    if (!valeur || valeur->is_null() || (texte && vide(*texte))) continue;
    if (p.genre == ParamVoix::Genre::booleen) {
      if (Champ::booleen(corps, p.nom, true) != Champ::booleen(corps, p.nom, false))
        return ReponsePorte::echec(cite(p.nom) + " vaut true ou false.");
    } else if (!texte) {
      Json ecrit = corps;
      ecrit[p.nom] = enTexte(*valeur);
      if (verbe.decoder(ecrit) != verbe.decoder(corps))
        return ReponsePorte::echec(cite(p.nom) + " doit être un texte.");
    }
  }
  return std::nullopt;
}

}  // namespace

struct Executeur::Corps {
  Corps(const Sol& sol, const ReglagesExecuteur& reglages) : atelier(sol, reglages) {}

  Atelier atelier;
  std::thread facteur;                       ///< gives messages
  std::array<std::thread, 3> verificateurs;  ///< attest tasks: each may take minutes

  void inscrire(std::string_view verbe, std::string_view cible, const Appelant& appelant,
                const ReponsePorte& reponse) {
    FicheJournal ligne;
    ligne.quand = atelier.date();
    ligne.qui = "l'opérateur";
    if (!appelant.agent.empty())
      if (const auto agent = atelier.sol.registre.agent(appelant.agent))
        ligne.qui = *agent ? (*agent)->nom : "?";
    ligne.verbe = verbe;
    ligne.cible = Texte::tronquer(Texte::reparer(cible), cibleMax);
    ligne.issue = reponse.ok ? "fait" : "refusé";
    atelier.sol.registre.inscrire(ligne);  // a journal that cannot be written stops no verb
  }

  /// An agent that could be given nothing: what it was doing, and when.
  struct Vaine {
    Situation situation;
    bool repose;
    Instant quand;
  };
  std::map<std::string, Vaine> vaines;  ///< the postman's own

  std::size_t distribuer() {
    reprendreAdoption(atelier);
    const auto destinataires = atelier.sol.registre.destinataires();
    if (!destinataires) return 0;
    std::erase_if(vaines, [&](const auto& v) { return !std::ranges::count(*destinataires, v.first); });
    std::size_t faits = 0;
    for (const std::string& id : *destinataires) {
      const Constat constat = atelier.sol.veille.constat(id);
      const Instant maintenant = atelier.sol.horloge.maintenant();
      // Trying moves the count that wakes the postman.
      if (const auto vaine = vaines.find(id);
          vaine != vaines.end() && vaine->second.situation == constat.situation &&
          vaine->second.repose == constat.repose && maintenant - vaine->second.quand < ronde)
        continue;
      const auto agent = atelier.sol.registre.agent(id);
      const std::size_t donnes = agent && *agent ? livrerMessages(atelier, **agent) : 0;
      vaines.erase(id);
      if (donnes == 0) vaines.emplace(id, Vaine{constat.situation, constat.repose, maintenant});
      faits += donnes;
    }
    return faits;
  }

  template <class Tache>
  std::thread enBoucle(Tache tache) {
    return std::thread([this, tache] {
      while (true) {
        const auto vus = atelier.battements();
        if (tache() > 0) continue;
        if (!atelier.dormir(vus, atelier.sol.horloge.maintenant() + ronde)) return;
      }
    });
  }
};

Executeur::Executeur(const Sol& sol, ReglagesExecuteur reglages)
    : corps_(std::make_unique<Corps>(sol, reglages)) {}

Executeur::~Executeur() { arreter(); }

ReponsePorte Executeur::executer(const Json& corps, const Appelant& appelant) {
  Atelier& atelier = corps_->atelier;
  reprendreAdoption(atelier);
  if (!appelant.agent.empty()) {
    const auto agent = atelier.sol.registre.agent(appelant.agent);
    if (!agent) return refus(agent.raison());
    if (!*agent) return ReponsePorte::echec("Ce jeton est celui d'un agent que le plateau a oublié.");
  }
  atelier.sol.veille.actualiser(atelier.sol.horloge.maintenant());
  const std::string action = Champ::texte(corps, "action");
  if (const Service* service = serviceNomme(action)) {
    const bool change = service->change(corps);
    const ReponsePorte reponse = rendre(*service, atelier, appelant, corps);
    if (change) corps_->inscrire(service->nom, Champ::texte(corps, "agent"), appelant, reponse);
    atelier.sonner();
    return reponse;
  }
  const auto* verbe = LigneVerbe::de(CommandeControle::canonique(action));
  const auto illisible = verbe ? refusGenre(*verbe, corps) : std::nullopt;
  const auto commande = CommandeControle::decoderObjet(action, corps);
  const auto ici = [&] {
    return std::visit([&](const auto& cas) { return appliquer(atelier, appelant, cas); }, commande.cas);
  };
  const ReponsePorte reponse = illisible ? *illisible
                               : verbe   ? iciOuLaBas(atelier, appelant, {*verbe, corps, commande}, ici)
                                         : ici();
  if (verbe) corps_->inscrire(verbe->outil.nom, cibleDe(*verbe, corps), appelant, reponse);
  atelier.sonner();
  return reponse;
}

std::optional<Avarie> Executeur::adopter() { return adopterLesTerminaux(corps_->atelier); }

std::size_t Executeur::avancer() {
  corps_->atelier.sol.veille.actualiser(corps_->atelier.sol.horloge.maintenant());
  return corps_->distribuer() + (attesterUneTache(corps_->atelier) ? 1 : 0);
}

void Executeur::veiller() {
  corps_->facteur = corps_->enBoucle([this] { return corps_->distribuer(); });
  if (corps_->atelier.sol.machine)
    for (std::thread& fil : corps_->verificateurs)
      fil = corps_->enBoucle([this] { return attesterUneTache(corps_->atelier) ? 1U : 0U; });
}

void Executeur::arreter() {
  corps_->atelier.arreter();
  if (corps_->facteur.joinable()) corps_->facteur.join();
  for (std::thread& fil : corps_->verificateurs)
    if (fil.joinable()) fil.join();
}

}  // namespace tarnavelle::Plateau
