// The cockpit of another Mac: which calls are aimed at it, what is relayed and what is refused, what is told of
// it. A name is aimed there by "@" and that machine's name after it; an address, which may hold an "@" itself,
// by the same after a blank; `hote` by "@" before it, because without one it is a machine for an agent of this
// board. To look there, a name that is known there alone will do.
#include <algorithm>

#include "Appliquer.hpp"
#include "Noms.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::string_view seuls =
    " Seuls focus, aller_scene, ouvrir_agent et ouvrir_web se relaient sur un autre Mac.";
constexpr std::chrono::seconds ageTu{10};  ///< of what is told without saying how old it is

bool meme(std::string_view a, std::string_view b) { return Texte::replier(a) == Texte::replier(b); }

/// What stands before "@" and that machine's name at the end of a text; nothing when they are not there.
std::optional<std::string> avantHote(std::string_view texte, const std::string& hote, bool apresBlanc = false) {
  for (auto a = texte.find('@'); a != std::string_view::npos; a = texte.find('@', a + 1)) {
    const auto avant = texte.substr(0, a);
    if (meme(texte.substr(a + 1), hote) && (!apresBlanc || Texte::rogner(avant).size() < avant.size()))
      return std::string(Texte::rogner(avant));
  }
  return std::nullopt;
}

std::vector<std::string> nomsDe(const AppelVerbe& appel) {
  if (const auto* c = std::get_if<C::allerScene>(&appel.commande.cas)) return {c->nom};
  std::vector<std::string> noms;
  for (const ParamVoix& p : appel.verbe.outil.parametres)
    if (appel.verbe.designe(p.nom) == Designe::agent) noms.push_back(Champ::texte(appel.corps, p.nom));
  return noms;
}

bool estIci(const Tableau& tableau, const AppelVerbe& appel, const std::string& nom) {
  if (std::holds_alternative<C::allerScene>(appel.commande.cas)) return tableau.scene(nom) != nullptr;
  return tableau.pris(nom);
}

/// How often something there bears that name, and how it is written there.
std::vector<std::string> homonymes(const PlateauMac& plateau, const AppelVerbe& appel, const std::string& nom) {
  std::vector<std::string> trouves;
  const auto voir = [&](const std::string& autre) {
    if (meme(autre, nom)) trouves.push_back(autre);
  };
  if (std::holds_alternative<C::allerScene>(appel.commande.cas)) {
    voir(plateau.scene);
    for (const auto& scene : plateau.autresScenes) voir(scene);
  } else {
    for (const auto& agent : plateau.agents) voir(agent.nom);
    for (const auto& fenetre : plateau.crew) voir(fenetre);
  }
  return trouves;
}

std::optional<CommandeControle> regard(const AppelVerbe& appel, const std::string& nom) {
  if (std::holds_alternative<C::focus>(appel.commande.cas)) return CommandeControle{C::focus{nom}};
  if (std::holds_alternative<C::allerScene>(appel.commande.cas)) return CommandeControle{C::allerScene{nom}};
  return std::nullopt;
}

ReponsePorte refusRelais(const std::string& nom, const std::string& hote) {
  return ReponsePorte::echec(cite(nom) + " est du plateau de " + cite(hote) + ", pas de celui-ci." +
                             std::string(seuls));
}

ReponsePorte relayer(Atelier& atelier, const Appelant& appelant, const CommandeControle& commande) {
  if (!appelant.agent.empty())
    return ReponsePorte::echec("Agir sur le plateau d'un autre Mac est réservé à l'opérateur.");
  const std::string& hote = atelier.sol.distant->hote();
  const auto reponse = atelier.sol.distant->relayer(commande);
  if (!reponse) return ReponsePorte::echec(reponse.raison());
  const std::string mot = reponse->ok ? ComptesRendusVoix::porteDit(*reponse)
                                      : reponse->error.value_or("c'est refusé, sans que rien dise pourquoi.");
  const std::string dit = "Sur " + cite(hote) + " : " + Inoffensif::epurer(Texte::tronquer(mot, affichesMax));
  if (!reponse->ok) return ReponsePorte::echec(dit);
  return ReponsePorte::succes(
      dit, donnees({{"hote", hote}, {"reponse", reponse->data ? reponse->data->json() : Json()}}));
}

/// The reply to a call that names the other Mac; nothing of one that does not.
std::optional<ReponsePorte> nommement(Atelier& atelier, const Appelant& appelant, const AppelVerbe& appel) {
  const auto& cas = appel.commande.cas;
  const std::string voulu = Champ::texte(appel.corps, "hote");
  const std::string_view machine = Texte::rogner(voulu);
  const bool parHote = machine.starts_with('@');
  if (!atelier.sol.distant)
    return parHote ? std::optional(ReponsePorte::echec(
                         "Aucun second Mac n'est réglé : TARNAVELLE_PLATEAU_DISTANT nomme sa machine."))
                   : std::nullopt;
  const std::string& hote = atelier.sol.distant->hote();
  if (parHote) {
    if (!meme(machine.substr(1), hote))
      return ReponsePorte::echec("Le second Mac est " + cite(hote) + ", pas " + cite(machine.substr(1)) + ".");
    const auto* c = std::get_if<C::ouvrirAgent>(&cas);
    if (!c) return refusRelais(voulu, hote);
    return relayer(atelier, appelant, {C::ouvrirAgent{.cli = c->cli, .dossier = c->dossier, .hote = ""}});
  }
  if (const auto* c = std::get_if<C::ouvrirWeb>(&cas)) {
    const auto cible = avantHote(c->cible, hote, true);
    if (!cible) return std::nullopt;
    return relayer(atelier, appelant, {C::ouvrirWeb{.cible = *cible, .externe = c->externe}});
  }
  for (const std::string& nom : nomsDe(appel)) {
    const auto laBas = avantHote(nom, hote);
    if (!laBas) continue;
    const auto tableau = Tableau::lire(atelier.sol.registre);
    if (!tableau) return tableau.raison();
    if (estIci(*tableau, appel, nom)) continue;
    const auto commande = regard(appel, *laBas);
    if (!commande) return refusRelais(*laBas, hote);
    return laBas->empty() ? ReponsePorte::echec("Il manque le nom devant « @ ».")
                          : relayer(atelier, appelant, *commande);
  }
  return std::nullopt;
}

/// The reply to a call that was refused here and whose name is known over there alone.
std::optional<ReponsePorte> connuLaBas(Atelier& atelier, const AppelVerbe& appel) {
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return std::nullopt;
  const std::string& hote = atelier.sol.distant->hote();
  for (const std::string& nom : nomsDe(appel)) {
    if (vide(nom) || estIci(*tableau, appel, nom)) continue;
    const bool relaye = regard(appel, nom).has_value();
    const auto vue = atelier.sol.distant->vue(relaye);
    const auto trouves = vue.plateau ? homonymes(*vue.plateau, appel, nom) : std::vector<std::string>();
    if (trouves.empty()) continue;
    if (!relaye) return refusRelais(nom, hote);
    if (trouves.size() > 1)
      return ReponsePorte::echec("Rien ne s'appelle " + cite(nom) + " ici, et plusieurs portent ce nom sur " +
                                 cite(hote) + ".");
    return relayer(atelier, {}, *regard(appel, trouves.front()));
  }
  return std::nullopt;
}

Json plateauEnJSON(const PlateauMac& plateau) {
  const auto court = [](const std::string& texte) { return Texte::tronquer(texte, affichesMax); };
  Json agents = Json::array(), scenes = Json::array(), fenetres = Json::array();
  for (std::size_t i = 0; i < std::min(plateau.agents.size(), plateau.ancrages.size()); ++i)  // told in step
    agents.push_back({{"nom", court(plateau.agents[i].nom)},
                      {"etat", court(plateau.agents[i].etat)},
                      {"scene", court(plateau.ancrages[i].scene)}});
  for (const auto& scene : plateau.autresScenes) scenes.push_back(court(scene));
  for (const auto& fenetre : plateau.crew) fenetres.push_back(court(fenetre));
  return {{"scene", court(plateau.scene)},
          {"autres_scenes", scenes},
          {"agents", agents},
          {"fenetres", fenetres},
          {"dossier", court(plateau.dossier)}};
}

}  // namespace

ReponsePorte iciOuLaBas(Atelier& atelier, const Appelant& appelant, const AppelVerbe& appel,
                        const std::function<ReponsePorte()>& ici) {
  if (auto reponse = nommement(atelier, appelant, appel)) return *reponse;
  ReponsePorte reponse = ici();
  if (reponse.ok || !atelier.sol.distant || !appelant.agent.empty()) return reponse;
  return connuLaBas(atelier, appel).value_or(std::move(reponse));
}

void direDistant(const Atelier& atelier, Json& json, std::string& phrase) {
  if (!atelier.sol.distant) return;
  const auto vue = atelier.sol.distant->vue(true);
  Json distant = vue.plateau ? plateauEnJSON(*vue.plateau) : Json::object();
  distant["hote"] = atelier.sol.distant->hote();
  if (vue.plateau) phrase += " " + Inoffensif::epurer(Texte::tronquer(vue.plateau->recit(), affichesMax));
  if (vue.age) {
    distant["age_s"] = vue.age->count();
    if (*vue.age > ageTu || !vue.panne.empty())
      phrase += " Vu il y a " + std::to_string(vue.age->count()) + " s.";
  }
  if (!vue.panne.empty()) {
    distant["panne"] = vue.panne;
    phrase += " " + vue.panne;
  }
  json["distant"] = std::move(distant);
}

}  // namespace tarnavelle::Plateau
