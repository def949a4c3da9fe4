// Each verb: what it does to the board and what it answers, in French. A refusal changes nothing.
#pragma once

#include <functional>

#include "Atelier.hpp"
#include "Porte/CommandeControle.hpp"
#include "Porte/LigneVerbe.hpp"
#include "Socle/JSON.hpp"
#include "Verbes/Appelant.hpp"

namespace tarnavelle::Plateau {

using C = CommandeControle;

// VerbesAgents
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::ouvrirAgent& c);
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::relancerAgent& c);
// VerbesSaisie
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::dicter& c);
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::diffuser& c);
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::envoyerTouches& c);
// VerbesMessages
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::souffler& c);
// VerbesLecture
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::etat& c);
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::lire& c);
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::lireTerminal& c);
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::resumer& c);
// VerbesAttente
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::attendre& c);
// VerbesScenes
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::focus& c);
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::allerScene& c);
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::ranger& c);
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::fermer& c);
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::fermerTout& c);
// VerbesMemoire
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::retiens& c);
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::rappelle& c);
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::postit& c);
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::nommerZone& c);
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::nommage& c);
// VerbesTaches
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::pondreAgent& c);
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::taches& c);
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::fini& c);
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::bloque& c);
// VerbesHermes
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::ouvrirChat& c);
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::messageChat& c);
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::commande& c);
// VerbesMachine
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::shell& c);
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::script& c);
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::ouvrirWeb& c);
ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::capture& c);

/// A call of a verb.
struct AppelVerbe {
  const LigneVerbe& verbe;
  const Json& corps;  ///< as it was posted
  const CommandeControle& commande;
};
/// Carries a call out by `ici`, unless it is aimed at the cockpit of another Mac: it is relayed then, or
/// refused.
ReponsePorte iciOuLaBas(Atelier& atelier, const Appelant& appelant, const AppelVerbe& appel,
                        const std::function<ReponsePorte()>& ici);
/// What that cockpit shows joins a state of the board.
void direDistant(const Atelier& atelier, Json& json, std::string& phrase);

// What verbs and the threads behind them have in common.

/// From a call to its reply, of a verb that opens and types: the bridge gives up at 30 s.
inline constexpr std::chrono::seconds reponseMax{25};
/// From a call to the last text that is begun to be typed: the proof takes its time.
inline constexpr std::chrono::seconds frappeMax{12};
/// Longest text that stands in a list, in characters.
inline constexpr std::size_t affichesMax = 500;

/// Does it for each rank below `nombre`, several at once.
void surPlusieursFils(std::size_t nombre, const std::function<void(std::size_t)>& faire);

/// Who calls, as it is told to others: an agent's name, or "l'opérateur".
std::string nomDe(const Appelant& appelant, const Tableau& tableau);

/// What is told of an agent whose program has ended; the second: if it has.
ReponsePorte refusSorti(const std::string& nom);
std::optional<ReponsePorte> refusSorti(const Atelier& atelier, const FicheAgent& agent);
/// What is told of an agent that lives elsewhere and is not shown here; nothing of any other.
std::optional<ReponsePorte> refusLaBas(const Atelier& atelier, const FicheAgent& agent);
/// A message to an agent, kept until it is given: its number.
Garde<std::int64_t> garderPour(Atelier& atelier, const Appelant& appelant, const FicheAgent& agent,
                               const std::string& texte);

/// Gives an agent that can take it what waits for it; how many messages were given.
std::size_t livrerMessages(Atelier& atelier, const FicheAgent& agent);
/// Attests one task that was reported, or nothing; whether there was one.
bool attesterUneTache(Atelier& atelier);

/// An agent to be opened.
struct DemandeAgent {
  std::string programme;  ///< empty: the usual one
  std::string dossier;
  std::string hote;
  std::string nom;             ///< empty: the next call sign
  std::string laBas{};         ///< its session on its machine, where it lives already
  std::string conversation{};  ///< that it goes on with; empty for one of its own
};
struct AgentOuvert {
  FicheAgent agent;
  bool pret = false;             ///< its box shows
  std::string ecran{};           ///< the last lines of its screen, when it is not ready
  std::optional<Panne> panne{};  ///< why it could not be looked at
};
/// Once `refusOuverture` has let it pass.
OuRefus<FicheAgent> lancerUnAgent(Atelier& atelier, const DemandeAgent& demande);
/// Starts what the record tells of, in a new terminal; the record then knows it. `laBas`: its session on its
/// machine, which it is to be joined in again.
OuRefus<FicheAgent> demarrer(Atelier& atelier, FicheAgent agent, const std::string& laBas = {});
/// What an agent that was started is told of: ready, gone at once, or what its screen says.
ReponsePorte direOuverture(Atelier& atelier, const AgentOuvert& ouvert, const std::string& phrase);
/// Joins again what lives on another machine: an agent of the board by its name, a session there by its own.
/// Nothing when that names neither.
std::optional<ReponsePorte> rouvrirLaBas(Atelier& atelier, const C::ouvrirAgent& c);
/// What lives elsewhere and is not shown here, for `etat`; empty when there is nothing.
Json laBasEnJSON(Atelier& atelier, const Tableau& tableau);
/// Waits until its box shows, a dialog asks something, its program is gone, or until then.
AgentOuvert attendrePret(Atelier& atelier, FicheAgent agent, Instant limite);
/// What is told of an agent that ended as soon as it was opened, and is forgotten with that.
std::optional<ReponsePorte> refusParti(Atelier& atelier, const AgentOuvert& ouvert);
/// Why that many agents cannot be opened: an unknown program, a full board.
std::optional<ReponsePorte> refusOuverture(const Atelier& atelier, std::string_view programme,
                                           std::int64_t nombre);

/// The relays that are armed, as they are listed.
Json relaisEnJSON(const std::vector<FicheRelais>& relais, const Tableau& tableau);

/// What Hermès published and nobody has read yet joins a state of the board, and how his notices are heard.
void direAvis(const Atelier& atelier, Json& json, std::string& phrase);

/// The last lines of a screen that hold something, one text.
std::string texteVisible(const std::vector<std::string>& lignes);
/// The last line of it.
std::string derniereLigne(std::string_view texte);

}  // namespace tarnavelle::Plateau
