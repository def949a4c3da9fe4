// A decoded call of the control door: one case per verb, plus `inconnue`, and the way from an action
// name and its JSON arguments to that value. What the verbs are stands in TableVerbes; carrying a
// command out is the cockpit's business. Plain values, constant tables and plain functions, safe from any
// thread.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "Porte/OutilVoix.hpp"
#include "Socle/JSON.hpp"

namespace tarnavelle {

struct CommandeControle {
  struct focus {
    std::string cible;
    bool operator==(const focus&) const = default;
  };
  struct fermer {
    std::string cible;
    bool operator==(const fermer&) const = default;
  };
  struct fermerTout {
    std::string sauf;  ///< names to spare, joined with ", "
    bool operator==(const fermerTout&) const = default;
  };
  struct allerScene {
    std::string nom;
    bool operator==(const allerScene&) const = default;
  };
  struct dicter {
    std::string agent;  ///< empty: the one being looked at, as for lire and resumer
    std::string texte;
    bool valider = true;
    bool operator==(const dicter&) const = default;
  };
  struct ouvrirAgent {
    std::string cli;      ///< empty: the first installed
    std::string dossier;  ///< empty: the current scene
    std::string hote;     ///< empty: this machine
    bool operator==(const ouvrirAgent&) const = default;
  };
  struct ouvrirWeb {
    std::string cible;
    bool externe = false;
    bool operator==(const ouvrirWeb&) const = default;
  };
  struct lire {
    std::string agent;
    bool operator==(const lire&) const = default;
  };
  struct resumer {
    std::string agent;
    bool operator==(const resumer&) const = default;
  };
  struct retiens {
    std::string texte;
    std::string portee;  ///< "canvas" when the call gave none
    bool operator==(const retiens&) const = default;
  };
  struct rappelle {
    std::string requete;
    std::int64_t limite = 5;
    bool operator==(const rappelle&) const = default;
  };
  struct commande {
    std::string texte;
    bool operator==(const commande&) const = default;
  };
  struct pondreAgent {
    std::string cli;
    std::string prompt;
    std::string verify;
    std::string nom;
    std::int64_t nombre = 1;
    bool operator==(const pondreAgent&) const = default;
  };
  struct souffler {
    std::string agent;
    std::string texte;
    bool operator==(const souffler&) const = default;
  };
  struct lireTerminal {
    std::string agent;
    bool depuisPrompt = false;
    bool operator==(const lireTerminal&) const = default;
  };
  struct shell {
    std::string commande;
    std::string cible;
    bool operator==(const shell&) const = default;
  };
  struct capture {
    std::string cible;
    std::string chemin;
    bool inline_ = false;  ///< the argument "inline", a keyword here
    bool operator==(const capture&) const = default;
  };
  struct captureWeb {
    std::string chemin;
    bool inline_ = false;
    bool operator==(const captureWeb&) const = default;
  };
  struct diffuser {
    std::string texte;
    bool sceneSeulement = false;
    bool operator==(const diffuser&) const = default;
  };
  struct fini {
    std::string agent;
    std::string note;
    bool operator==(const fini&) const = default;
  };
  struct bloque {
    std::string agent;
    std::string raison;
    bool operator==(const bloque&) const = default;
  };
  struct postit {
    std::string texte;
    bool operator==(const postit&) const = default;
  };
  struct nommerZone {
    std::string nom;
    std::string cible;
    bool operator==(const nommerZone&) const = default;
  };
  struct relancerAgent {
    std::string agent;
    bool operator==(const relancerAgent&) const = default;
  };
  struct script {
    std::string genre;
    std::string dossier;
    bool operator==(const script&) const = default;
  };
  struct ouvrirChat {
    std::string hote;
    std::string texte;
    bool operator==(const ouvrirChat&) const = default;
  };
  struct messageChat {
    std::string texte;
    std::string cible;
    bool operator==(const messageChat&) const = default;
  };
  struct attendre {
    std::string agent;
    std::string jusquA;
    std::string motif;
    std::int64_t timeoutS = 0;  ///< seconds; 0 when not given, the executor applies its own default
    bool operator==(const attendre&) const = default;
  };
  struct envoyerTouches {
    std::string agent;
    std::string touches;
    bool operator==(const envoyerTouches&) const = default;
  };
  struct ranger {
    std::string plan;
    std::string vedette;
    bool operator==(const ranger&) const = default;
  };
  struct nommage {
    std::vector<std::string> noms;  ///< empty asks for the factory roster
    bool operator==(const nommage&) const = default;
  };
  struct inconnue {
    std::string action;  ///< as received, only trimmed
    bool operator==(const inconnue&) const = default;
  };
  struct etat {
    bool operator==(const etat&) const = default;
  };
  struct taches {
    bool operator==(const taches&) const = default;
  };

  std::variant<focus, fermer, fermerTout, allerScene, dicter, ouvrirAgent, ouvrirWeb, lire, resumer, retiens,
               rappelle, commande, pondreAgent, souffler, lireTerminal, shell, capture, captureWeb, diffuser,
               fini, bloque, postit, nommerZone, relancerAgent, script, ouvrirChat, messageChat, attendre,
               envoyerTouches, ranger, nommage, inconnue, etat, taches>
      cas;

  bool operator==(const CommandeControle&) const = default;

  /// The verbs of the door, in the order in which they are listed, wherever they are.
  static const std::vector<OutilVoix>& outilsPorte();

  /// The verb of exactly that name, or null.
  static const OutilVoix* outil(std::string_view nom);

  /// English alias to verb name.
  static const std::map<std::string, std::string, std::less<>>& aliasEN();

  /// Trimmed, lower case, "-" turned into "_". Accents and inner spaces stay.
  static std::string normaliserAction(std::string_view action);

  /// The normalised name, an English alias replaced by its verb. Does not check that the verb exists.
  static std::string canonique(std::string_view action);

  /// The command of an action and of its arguments, a JSON object as text. Unreadable arguments read
  /// as an empty object; an unknown action gives `inconnue`. Never fails.
  static CommandeControle decoder(std::string_view action, std::string_view argsJSON);

  /// The same from arguments already parsed; anything but an object reads as an empty one. Not an
  /// overload: a text converts to both parameters.
  static CommandeControle decoderObjet(std::string_view action, const Json& arguments);

  /// The body that a command line posts: "action", then the verb's arguments. An unknown verb has no
  /// arguments: the door will answer for it.
  static Json chargeGenerique(std::string_view verbe, const MotsCLI& mots);

  /// The options of the verb that a command line takes without a value; none for an unknown verb.
  static std::set<std::string, std::less<>> drapeauxBooleens(std::string_view verbe);

  /// One argument of a call given as JSON text: the readers of `Champ`, parsing the text each time.
  static std::vector<std::string> listeTextes(std::string_view cle, std::string_view argsJSON);
  static std::int64_t entier(std::string_view cle, std::string_view argsJSON, std::int64_t defaut);
  static std::string texte(std::string_view cle, std::string_view argsJSON);
  static bool booleen(std::string_view cle, std::string_view argsJSON, bool defaut);
};

}  // namespace tarnavelle
