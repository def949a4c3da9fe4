// What there is on the trial board: scenes, windows, agents and their screens, notes, post-its, tracked
// tasks, and how agents live as time passes. No words for the operator here (Verbes), no lock (Plateau).
// Names compare folded. One thread at a time.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <deque>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnavelle::PorteEssai {

using Instant = std::chrono::steady_clock::time_point;

enum class EtatAgent { repos, travaille, besoin, sorti };

/// What can be awaited in an agent's life.
enum class Evenement { idle, besoin, fini, mort };

/// A simulated agent: an instruction makes it work for `dureeTravail`, then it says so and rests.
class Agent {
 public:
  static constexpr std::chrono::seconds dureeTravail{3};
  static constexpr std::size_t lignesMax = 40;       ///< the bottom of the screen is all that is kept
  static constexpr std::size_t caracteresMax = 200;  ///< longest line kept

  std::uint64_t id = 0;
  std::string nom;
  std::string cli;
  std::string dossier;
  std::string hote;  ///< empty for this machine
  std::string tmux;  ///< session name; the session outlives the agent's window

  EtatAgent etat() const { return etat_; }
  const std::deque<std::string>& ecran() const { return ecran_; }
  std::uint64_t revision() const { return revision_; }  ///< changes with the screen

  /// Shows what runs where, as a program does when it starts.
  void demarrer();
  /// Types a text; with `valider` what was typed is sent and work begins, or the program exits when the
  /// text asks it to ("exit", "/exit", "/quit").
  void recevoir(std::string_view texte, bool valider, Instant maintenant);
  void declarerFini(std::string_view note);
  void declarerBloque(std::string_view raison);

  /// Ends the work whose time has come.
  void actualiser(Instant maintenant);
  std::optional<Instant> finDuTravail() const;

  /// Whether the event is a fact now.
  bool est(Evenement evenement) const;
  /// How many times it has happened: tells one that came and went from one that never came.
  std::uint64_t passages(Evenement evenement) const;

 private:
  void afficher(std::string_view texte);
  void passer(EtatAgent etat);
  void signaler(Evenement evenement);

  EtatAgent etat_ = EtatAgent::repos;
  bool aFini_ = false;  ///< has declared its end since its last instruction
  std::string saisie_;  ///< typed and not sent
  std::string consigne_;
  Instant fin_{};
  std::deque<std::string> ecran_;
  std::uint64_t revision_ = 0;
  std::array<std::uint64_t, 4> passages_{};
};

struct Scene {
  std::string nom;
  std::string dossier;
  std::string auRegard;  ///< name of the window in view, empty when there is none
};

/// A window: an agent's terminal when `agent` is not 0, else a window of the cockpit.
struct Fenetre {
  std::string nom;
  std::string scene;
  std::uint64_t agent = 0;
  std::vector<std::string> etiquettes;  ///< further names, given by nommer_zone
};

struct Note {
  std::string texte;
  std::string scene;  ///< empty for a global note
};

struct PostIt {
  std::string texte;
  std::string scene;
};

struct Tache {
  enum class Etat { enCours, done, unknown };
  std::uint64_t numero = 0;
  std::uint64_t agent = 0;
  std::string nomAgent;
  std::string prompt;
  std::string verify;
  std::string note;
  Etat etat = Etat::enCours;
};

class Monde {
 public:
  /// Two scenes, Sources and Atelier; Merlin and the Forge on the first, Milan on the second.
  static Monde depart();

  std::vector<Scene> scenes;  ///< never empty
  std::size_t visible = 0;
  std::list<Fenetre> fenetres;  ///< in the order of their opening
  std::list<Agent> agents;      ///< every living session, and the dead whose window is still open
  std::vector<std::string> indicatifs;
  std::vector<Note> notes;
  std::vector<PostIt> postits;
  std::vector<Tache> taches;

  Scene& sceneVisible() { return scenes[visible]; }
  const Scene& sceneVisible() const { return scenes[visible]; }

  /// By its name, its folder or the last part of its folder.
  Scene* scene(std::string_view nom);
  /// By its name or a label; the window in view when the name is empty.
  Fenetre* fenetre(std::string_view nom);
  /// By its name, its session's name or a label of its window.
  Agent* agent(std::string_view nom);
  Agent* agent(std::uint64_t id);
  Fenetre* fenetreDe(const Agent& agent);

  /// Whether the name already designates a window, an agent or a label.
  bool pris(std::string_view nom);
  std::vector<std::string> nomsDesFenetres() const;
  std::vector<std::string> nomsDesAgentsOuverts() const;

  struct Ouverture {
    std::string cli;
    std::string dossier;
    std::string hote;
    std::string scene;
    std::vector<std::string> noms;  ///< where its name is taken from
  };
  /// Opens an agent in a window that comes into view on its scene.
  Agent& ouvrir(Ouverture ouverture);
  /// Closes the window; a living agent's session goes on without it.
  void fermer(const Fenetre& fenetre);

  void actualiser(Instant maintenant);
  /// When the next change that time alone brings is due.
  std::optional<Instant> prochainChangement() const;

 private:
  std::string sessionLibre(const std::string& cli) const;
  std::uint64_t dernierId_ = 0;
};

}  // namespace tarnavelle::PorteEssai
