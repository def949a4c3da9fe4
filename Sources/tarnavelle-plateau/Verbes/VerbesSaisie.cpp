// What is typed into agents' terminals: instructions, messages, keys.
#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>

#include "Appliquer.hpp"
#include "Noms.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::size_t touchesMax = 100;
constexpr std::size_t filsMax = 8;                    ///< agents that are typed to at once
constexpr std::size_t basMax = 8;                     ///< lines of the screen shown after keys
constexpr std::chrono::milliseconds effetMax{400};    ///< for the screen to show what keys did
constexpr std::chrono::milliseconds apresEsc{100};    ///< for Esc to be read as a key of its own
constexpr std::chrono::milliseconds dessinMax{1500};  ///< for a dialog to show

/// A message is read, whatever it begins with and whoever reads it.
std::string enMessage(const std::string& texte) { return Signes().commande(texte) ? " " + texte : texte; }

/// Whether a text was typed into a program of whose screen nothing will ever be seen.
bool aLAveugle(const Atelier& atelier, const FicheAgent& agent, const Livraison& livraison) {
  return livraison.sort == Livraison::Sort::inconnu && livraison.raison == Livraison::Raison::pasMontre &&
         !atelier.sol.veille.saitLire(agent.id);
}

/// What became of a text, as a sentence.
std::string phraseLivraison(const Atelier& atelier, const FicheAgent& agent, const Livraison& livraison) {
  if (aLAveugle(atelier, agent, livraison))
    return "Tapé chez " + agent.nom +
           ", sans preuve que ce soit parti : le plateau ne sait pas lire l'écran de " + agent.programme + ".";
  const std::string_view raison = description(livraison);
  const std::string suite = raison.empty() ? "." : " : " + std::string(raison) + ".";
  switch (livraison.sort) {
    case Livraison::Sort::soumis: return "Envoyé à " + agent.nom + ".";
    case Livraison::Sort::pose:
      return raison.empty() ? "Posé chez " + agent.nom + "."
                            : "Posé chez " + agent.nom + ", pas envoyé" + suite;
    case Livraison::Sort::refuse: return "Rien n'a été tapé chez " + agent.nom + suite;
    case Livraison::Sort::inconnu: return "Tapé chez " + agent.nom + ", sans preuve que ce soit parti" + suite;
  }
  return "";
}

ReponsePorte rendre(bool ok, const std::string& phrase, const Json& json) {
  ReponsePorte reponse = ok ? ReponsePorte::succes(phrase) : ReponsePorte::echec(phrase);
  reponse.data = donnees(json);
  return reponse;
}

bool toucheConnue(const std::string& touche) {
  if (std::ranges::count(nomsDesTouches, touche) > 0) return true;
  return Texte::caracteres(touche) == 1 && Texte::utf8Valide(touche) && !Texte::porteControle(touche);
}

/// The keys of a sequence: names whatever their case and accents, characters as they are.
OuRefus<std::vector<Touche>> lireTouches(const std::string& sequence) {
  std::vector<Touche> touches;
  for (const std::string_view mot : Texte::mots(sequence)) {
    std::string touche(mot);
    if (Texte::caracteres(touche) > 1) touche = Texte::replier(touche);
    if (!toucheConnue(touche))
      return Sinon{ReponsePorte::echec("Touche inconnue : " + cite(mot) + ". Rien n'a été tapé. Connues : " +
                                       Texte::joindre(nomsDesTouches, ", ") + ", ou un caractère seul.")};
    touches.push_back(std::move(touche));
  }
  if (touches.empty()) return Sinon{manque("touches")};
  if (touches.size() > touchesMax)
    return Sinon{ReponsePorte::echec("Trop de touches : " + std::to_string(touchesMax) + " au plus.")};
  return touches;
}

/// Waits until a dialog that a hook announced is drawn: before that, keys go to what it covers.
void attendreDessin(Atelier& atelier, const FicheAgent& agent) {
  const Instant limite = atelier.sol.horloge.maintenant() + dessinMax;
  while (atelier.sol.horloge.maintenant() < limite) {
    const auto vus = atelier.battements();
    const Situation situation = atelier.constat(agent).situation;
    if (situation.activite != Etat::besoin || situation.preuve.source != Source::crochet) return;
    const auto ecran = atelier.sol.terminaux.ecran(terminalDe(agent));
    if (!ecran || atelier.sol.veille.lire(agent.id, *ecran).dialogue()) return;
    if (!atelier.dormir(vus, limite)) return;
  }
}

void patienter(Atelier& atelier, std::chrono::milliseconds duree) {
  const Instant fin = atelier.sol.horloge.maintenant() + duree;
  while (atelier.sol.horloge.maintenant() < fin && atelier.dormir(atelier.battements(), fin)) {
  }
}

/// What the bottom of the screen says once the keys have had their effect on it, which may be none.
std::string basDeLEcran(Atelier& atelier, const IdTerminal& terminal, std::uint64_t avant) {
  const Instant limite = atelier.sol.horloge.maintenant() + effetMax;
  auto vus = atelier.battements();
  auto ecran = atelier.sol.terminaux.ecran(terminal);
  while (ecran && ecran->revision == avant && atelier.sol.horloge.maintenant() < limite) {
    if (!atelier.dormir(vus, limite)) break;
    vus = atelier.battements();
    ecran = atelier.sol.terminaux.ecran(terminal);
  }
  if (!ecran) return "";
  const std::string texte = texteVisible(ecran->lignes);
  std::size_t debut = texte.size();
  for (std::size_t n = 0; n < basMax && debut != std::string::npos && debut > 0; ++n)
    debut = texte.rfind('\n', debut - 1);
  return debut == std::string::npos || debut == 0 ? texte : texte.substr(debut + 1);
}

}  // namespace

void surPlusieursFils(std::size_t nombre, const std::function<void(std::size_t)>& faire) {
  std::atomic<std::size_t> suivant{0};
  const auto servir = [&] {
    for (std::size_t i; (i = suivant++) < nombre;) faire(i);
  };
  std::vector<std::thread> fils;
  try {
    for (std::size_t i = 1; i < std::min(filsMax, nombre); ++i) fils.emplace_back(servir);
  } catch (const std::system_error&) {  // no more threads: those there are serve all
  }
  servir();
  for (std::thread& fil : fils) fil.join();
}

ReponsePorte appliquer(Atelier& atelier, const Appelant&, const C::dicter& c) {
  if (vide(c.texte)) return manque("texte");
  if (auto refus = tropLong("texte", c.texte, octetsTapesMax)) return *refus;
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  const auto agent = tableau->agentOuvert(c.agent);
  if (!agent) return agent.raison();
  if (auto refus = refusSorti(atelier, *agent)) return *refus;
  if (auto refus = refusLaBas(atelier, *agent)) return *refus;
  const Livraison livraison = atelier.taper(*agent, {.texte = c.texte, .valider = c.valider, .suite = true});
  Json json = {{"agent", agent->nom}, {"etat", atelier.etat(*agent)}, {"livraison", nom(livraison.sort)}};
  if (livraison.raison != Livraison::Raison::aucune) json["raison"] = description(livraison);
  std::string phrase = phraseLivraison(atelier, *agent, livraison);
  if (atelier.sol.veille.signes(agent->id).commande(c.texte)) {
    json["commande"] = true;
    phrase += " C'est une commande de " + agent->programme + ", pas un message.";
  }
  const bool ok = livraison.sort == (c.valider ? Livraison::Sort::soumis : Livraison::Sort::pose) ||
                  aLAveugle(atelier, *agent, livraison);
  return rendre(ok, phrase, json);
}

ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::diffuser& c) {
  if (vide(c.texte)) return manque("texte");
  if (auto refus = tropLong("texte", c.texte, octetsTapesMax)) return *refus;
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  struct Vise {
    FicheAgent agent;
    Livraison livraison{};
    bool garde = false;  ///< its turn came too late for this reply: it is a message by now
  };
  const Instant limite = atelier.sol.horloge.maintenant() + frappeMax;
  std::vector<Vise> vises;
  for (const Fenetre& f : tableau->fenetres()) {
    if (!f.agent || f.agent->id == appelant.agent) continue;  // who speaks has heard
    if (refusLaBas(atelier, *f.agent)) continue;
    if (!c.sceneSeulement || f.scene == tableau->visible().numero) vises.push_back({.agent = *f.agent});
  }
  if (vises.empty()) return ReponsePorte::echec("Aucun autre agent n'est ouvert.");
  surPlusieursFils(vises.size(), [&](std::size_t i) {
    auto& [agent, livraison, garde] = vises[i];
    if (atelier.constat(agent).situation.etat == Etat::sorti) {
      livraison = {Livraison::Sort::refuse, Livraison::Raison::mort};
    } else if (atelier.sol.horloge.maintenant() < limite) {
      livraison = atelier.taper(agent, enMessage(c.texte), true);
    } else {
      livraison = {Livraison::Sort::refuse, Livraison::Raison::occupe};
      garde = static_cast<bool>(garderPour(atelier, appelant, agent, c.texte));
    }
  });

  std::vector<std::string> recus, manques, gardes, aveugles;
  Json livraisons = Json::array();
  for (const Vise& v : vises) {
    const std::string raison(v.garde ? "" : description(v.livraison));
    if (v.garde)
      gardes.push_back(v.agent.nom);
    else if (v.livraison.sort == Livraison::Sort::soumis)
      recus.push_back(v.agent.nom);
    else if (aLAveugle(atelier, v.agent, v.livraison))
      aveugles.push_back(v.agent.nom);
    else
      manques.push_back(v.agent.nom + " (" + raison + ")");
    livraisons.push_back({{"agent", v.agent.nom},
                          {"livraison", v.garde ? "attend" : nom(v.livraison.sort)},
                          {"raison", raison}});
  }
  std::string phrase = recus.empty() ? "Personne ne l'a reçu." : "Reçu par " + enumerer(recus) + ".";
  if (!aveugles.empty()) phrase += " Tapé sans preuve chez " + enumerer(aveugles) + ".";
  if (!gardes.empty()) phrase += " Gardé pour " + enumerer(gardes) + ".";
  if (!manques.empty()) phrase += " Manqué : " + enumerer(manques) + ".";
  const bool ok = manques.size() < vises.size();
  return rendre(ok, phrase, {{"recu", recus}, {"livraisons", livraisons}});
}

ReponsePorte appliquer(Atelier& atelier, const Appelant&, const C::envoyerTouches& c) {
  auto touches = lireTouches(c.touches);
  if (!touches) return touches.raison();
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  const auto vise = tableau->terminal(c.agent);
  if (!vise) return vise.raison();
  if (atelier.etat(*vise) == enMots(Etat::sorti)) return refusSorti(vise->nom);
  if (auto refus = vise->agent ? refusLaBas(atelier, *vise->agent) : std::nullopt) return *refus;
  const Atelier::Tour tour(atelier, vise->id);
  if (!tour) return ReponsePorte::echec("D'autres tapent chez " + vise->nom + " depuis trop longtemps.");
  const IdTerminal terminal = terminalDe(*vise);
  const Atelier::Guet guet(atelier, vise->id, terminal);
  if (vise->agent) attendreDessin(atelier, *vise->agent);
  const bool rompue = atelier.etat(*vise) == enMots(Etat::rompue);
  if (rompue && *touches != std::vector<Touche>{"entree"})
    return ReponsePorte::echec(
        "Rien n'a été tapé chez " + vise->nom +
        " : le lien avec sa machine est rompu. « entree » le fait réessayer tout de suite.");
  const auto avant = atelier.sol.terminaux.ecran(terminal);
  std::size_t faites = 0;
  while (faites < touches->size()) {
    // What follows Esc at once is read as one key with it.
    const auto esc = std::find(touches->begin() + static_cast<std::ptrdiff_t>(faites), touches->end(), "esc");
    const std::vector<Touche> groupe(touches->begin() + static_cast<std::ptrdiff_t>(faites),
                                     esc == touches->end() ? esc : esc + 1);
    if (faites > 0) patienter(atelier, apresEsc);
    const auto fait = atelier.sol.terminaux.presser(terminal, groupe);
    if (!fait)
      return ReponsePorte::echec((fait.raison() == Panne::muet ? "Peut-être tapé chez "
                                  : faites > 0                 ? "Tapé en partie chez "
                                                               : "Rien n'a été tapé chez ") +
                                 vise->nom + " : " + std::string(description(fait.raison())) + ".");
    faites += groupe.size();
    if (vise->agent) atelier.sol.veille.touches(vise->id, groupe);
  }
  const std::string bas = basDeLEcran(atelier, terminal, avant ? avant->revision : 0);
  return ReponsePorte::succes(
      "Tapé chez " + vise->nom + " : " + Texte::joindre(*touches, " ") + ".",
      donnees({{"agent", vise->nom}, {"etat", atelier.etat(*vise)}, {"touches", *touches}, {"texte", bas}}));
}

}  // namespace tarnavelle::Plateau
