// What a board can do beside driving its terminals. Each is asked for by the verbs and given by the program
// that opens the door: what is not given is refused in so many words. Safe from any thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Porte/PorteDistante.hpp"
#include "Socle/Resultat.hpp"
#include "Terminaux/Terminaux.hpp"

namespace tarnavelle::Plateau {

/// An agent that is to be started.
struct Embarquement {
  std::string cle;           ///< the board's own id of it
  std::string nom;           ///< by which it is called, and calls itself
  std::string programme;     ///< in the catalogue
  std::string session;       ///< its terminal's name
  std::string dossier;       ///< as it was asked for
  std::string hote;          ///< empty for this machine
  std::string conversation;  ///< its own; empty for one that is to be chosen
  bool entamee = false;      ///< and something was said in it: it is to be resumed
  std::string laBas{};       ///< the session on its host that it is to be joined in again; empty for a new one
};

/// How it is started.
struct Depart {
  Lancement lancement;
  /// The one resumed, or chosen in advance so that it can be; empty when the program chooses its own.
  std::string conversation;
  std::string dossier{};  ///< on its host; empty for this machine
};

/// How programs are started.
class Lanceurs {
 public:
  virtual ~Lanceurs() = default;
  /// The programs that can be asked for beside those of the catalogue, whether they are installed or not.
  virtual std::vector<std::string> enPlus() const { return {}; }
  /// The program that an empty name stands for; nothing when none is installed.
  virtual std::optional<std::string> usuel() = 0;
  /// A folder as it was asked for, "~" in full. Relative ones stay so: nobody here knows to what.
  virtual std::string absolu(const std::string& dossier) const { return dossier; }
  /// In French, why it could not be started now, if that is known before anything is done: a sentence.
  virtual std::optional<std::string> empechement(const Embarquement& /*embarquement*/) const {
    return std::nullopt;
  }
  /// Or, in French, why it cannot be: a sentence.
  virtual Resultat<Depart, std::string> agent(const Embarquement& embarquement) = 0;
  /// A shell that runs a line and stays; nothing where no process runs.
  virtual std::optional<Lancement> shell(const std::string& cle, const std::string& session,
                                         const std::string& commande, const std::string& dossier) = 0;
  /// The host by which a conversation with Hermès is known, as it was asked for or as it is set; empty when he
  /// is reached without one. Or, in French, why there can be none: a sentence. Nothing where none can be led.
  virtual std::optional<Resultat<std::string, std::string>> conversation(const std::string& /*hote*/) const {
    return std::nullopt;
  }
  /// What was written for an agent that is forgotten.
  virtual void oublier(const std::string& /*cle*/) {}
};

/// Agents on other machines, in sessions that outlast the link. The last of the words that started one's
/// terminal here is its session's name over there.
class Lointain {
 public:
  virtual ~Lointain() = default;
  struct Session {
    std::string nom;
    std::string dossier;
    std::string titre;  ///< of the conversation: hostile text, may be empty
  };
  /// Those of a machine, asked for now; or in French why they cannot be: a sentence.
  virtual Resultat<std::vector<Session>, std::string> sessions(const std::string& hote) = 0;
  /// The same as they were last seen, nothing before that; what is old is asked for anew behind the caller's
  /// back.
  virtual std::optional<std::vector<Session>> vues(const std::string& hote) = 0;

  /// From here on, until `oublier`, what an agent's hooks say over there comes to its log here.
  virtual void suivre(const std::string& cle, const std::string& hote, const std::string& session) = 0;
  virtual void oublier(const std::string& cle) = 0;
  /// Between the two somebody waits for a change of that agent. Counted.
  virtual void guetter(const std::string& cle) = 0;
  virtual void laisser(const std::string& cle) = 0;

  /// Why an agent that was started cannot call the door from over there: in French, a sentence. Nothing when it
  /// can, or when it was only joined.
  virtual std::optional<std::string> sansPorte(const std::string& cle) = 0;

  /// The last reply that a program's own record over there holds.
  virtual std::optional<std::string> derniereReponse(const std::string& hote,
                                                     const std::string& transcript) = 0;

  /// What has scrolled out of a session's window, the last `lignes` of it, then its screen; nothing when it
  /// cannot be had.
  virtual std::optional<std::vector<std::string>> historique(const std::string& hote,
                                                             const std::string& session, int lignes) = 0;

  /// A machine that the configuration names.
  struct Hote {
    std::string nom;
    std::string mene{};            ///< where its name leads, as "user@host:port"; empty when that was not asked
    std::optional<bool> repond{};  ///< nothing when it was not asked
    std::optional<std::string> refus{};  ///< in French, why nobody knows where it leads, or does not answer
  };
  /// All of them. What each leads to, and with `sonder` whether it answers, is asked of the first ones, several
  /// at once, with a bound.
  virtual std::vector<Hote> hotes(bool sonder) = 0;
};

/// The cockpit of another Mac, seen and steered through its own door.
class Distant {
 public:
  virtual ~Distant() = default;
  /// That machine, as ssh knows it.
  virtual const std::string& hote() const = 0;

  struct Vue {
    std::optional<PlateauMac> plateau;          ///< as it was last read; nothing before that
    std::optional<std::chrono::seconds> age{};  ///< of that
    std::string panne{};  ///< why it could not be read since, in French: a sentence; else empty
  };
  /// What is known of its board. `fraiche`: what is old is read anew, and that is awaited for a second at most.
  virtual Vue vue(bool fraiche) = 0;

  /// Has its door carry out a command that may be relayed (`PorteDistante::corpsAction`), once at most. Its
  /// reply; or in French why there is none, and whether the command may have been carried out: sentences.
  virtual Resultat<ReponsePorte, std::string> relayer(const CommandeControle& commande) = 0;
};

/// What is asked of the machine, outside the terminals.
class Machine {
 public:
  virtual ~Machine() = default;
  struct Verification {
    std::string commande;  ///< a shell's line
    std::string dossier;
    std::chrono::milliseconds auPlus;
    std::function<bool()> arret;  ///< asked now and then: true ends it before its time
  };
  struct Issue {
    int statut = -1;  ///< of exit; -1 when it was ended
    bool horsDelai = false;
    bool arretee = false;  ///< `arret` asked for it
    std::string sortie;    ///< both streams, the end of it, well-formed UTF-8
  };
  /// Runs a line, with all that it starts.
  virtual Issue verifier(const Verification& quoi) = 0;
  /// Shows an address in the system's browser, or says in French why it cannot.
  virtual std::optional<std::string> ouvrirWeb(const std::string& cible) = 0;
};

/// What a person sees: it shows what the registry and the watch hold.
class Vues {
 public:
  virtual ~Vues() = default;
  /// What is shown may have changed: states, windows, messages, tasks, post-its, the visible scene. Short: it
  /// is seen to later, once for many.
  virtual void rafraichir() = 0;
  enum class Rangement {
    vu,       ///< somebody sees it so
    sansVue,  ///< somebody looks at the scene, but what was named, or anything at all, has no view there
    ignore,   ///< nobody looks: whoever looks next will see it so
  };
  /// Lays a scene out: "grille", "colonnes", "scene", "apercu_agents" or "auto", for as long as nobody lays it
  /// out otherwise; `vedette` is the id of what takes the large place, empty for what is in view. Or says in
  /// French why it cannot: a sentence.
  virtual Resultat<Rangement, std::string> ranger(std::int64_t scene, std::string_view plan,
                                                  const std::string& vedette) = 0;
};

/// Ends all that the board runs, at the operator's word.
class Extincteur {
 public:
  virtual ~Extincteur() = default;
  /// Every agent and program, what these agents left behind, and what holds their terminals; the door itself
  /// follows once it has answered. The processes of theirs that are left, in words; or, in French, why nothing
  /// ends: a clause.
  virtual Resultat<std::vector<std::string>, std::string> eteindre(const std::vector<std::string>& agents) = 0;
};

/// What hears Hermès's notices, and puts them into the registry.
class Oreille {
 public:
  virtual ~Oreille() = default;
  /// How it does, in French: a clause ("écoute"); empty when nothing is set for it.
  virtual std::string dit() const = 0;
};

/// What is to be in a picture.
struct Sujet {
  struct Vue {
    std::string nom;
    std::string etat;     ///< in words
    IdTerminal terminal;  ///< empty when it has none
  };
  std::string nom;        ///< of the only view, or of the scene
  std::vector<Vue> vues;  ///< what matters most first
  bool scene = false;     ///< all of them, each with its name; else the first one alone
};

/// Where a picture goes.
struct Tirage {
  bool enLigne = false;  ///< nowhere: its base64 is the answer
  std::string chemin;    ///< a file or a folder; empty for the usual folder
  std::string depuis;    ///< the folder that a relative `chemin` starts from
};

struct Photo {
  std::string valeur;  ///< its base64, or where it was written
  std::string avis;    ///< in French, what is to be known of it: sentences, or nothing
};

/// Pictures of what a person sees, in PNG.
class Photographe {
 public:
  virtual ~Photographe() = default;
  /// Or in French why there is none: a sentence.
  virtual Resultat<Photo, std::string> photographier(const Sujet& sujet, const Tirage& tirage) = 0;
};

}  // namespace tarnavelle::Plateau
