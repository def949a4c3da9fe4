// What a board does with terminals, whatever they are: real ones in tmux, or simulated ones that live by the
// clock. Which agent runs in one, what it is doing and what the operator is told of it are others' business.
//
// Safe from any thread. No call waits longer than its ground's deadline (`delaiMax`); a ground that does not
// answer in time gives `Panne::muet`. Handlers of `Observateur` are called on the ground's own thread, one at a
// time, and may call back.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Socle/Resultat.hpp"
#include "Terminaux/Peinture.hpp"

namespace tarnavelle::Plateau {

/// One terminal of this ground, for as long as the ground lives: in tmux a pane's number ("%12"). Given by the
/// ground, never made up by a caller. A ground that begins anew gives its numbers again.
struct IdTerminal {
  std::string valeur;
  std::string cle{};  ///< of what is meant to run there, when that matters: another's terminal is `inconnu`
  bool operator==(const IdTerminal& autre) const { return valeur == autre.valeur; }
  auto operator<=>(const IdTerminal& autre) const { return valeur <=> autre.valeur; }
  /// Whether what runs there under that key is what is meant.
  bool admet(std::string_view autre) const { return cle.empty() || cle == autre; }
};

/// What is started in a new terminal.
struct Lancement {
  std::string cle;      ///< the board's own id of what runs there, kept by the ground, and so found again
  std::string session;  ///< the terminal's name as a person sees it
  std::vector<std::string> mots;                     ///< program and arguments; no shell reads them
  std::map<std::string, std::string> environnement;  ///< added to a cleaned one; may hold secrets
  std::string dossier;                               ///< absolute
  Taille taille;
};

/// A terminal that the ground holds.
struct Terminal {
  IdTerminal id;
  std::string cle;
  std::string session;
  std::int64_t processus = 0;  ///< the program's; 0 when simulated or gone
  bool mort = false;           ///< the program has ended, the screen is still there
  std::optional<int> statut;   ///< its exit status, once it has ended
  std::string titre;           ///< what the program says of itself: hostile text
  std::string commande;        ///< name of what is in the foreground
};

/// The screen as a person sees it.
struct Ecran {
  std::vector<std::string> lignes;     ///< UTF-8, without trailing blanks; as many as the terminal is high
  std::vector<std::string> attenuees;  ///< the same lines with what is drawn dim blanked out
  int curseurLigne = 0;                ///< from 0
  int curseurColonne = 0;
  bool ecranAlterne = false;  ///< a full-screen program: no history behind it
  bool modeCopie = false;     ///< a person scrolls back in it: keys would be eaten
  /// The program asks for bracketed paste. Nothing: the ground cannot tell (tmux before 3.7).
  std::optional<bool> collageEncadre;
  std::string titre;           ///< what the program says of itself: hostile text
  std::uint64_t revision = 0;  ///< changes when the screen may have changed
};

/// Why the ground did not do it.
enum class Panne {
  inconnu,    ///< no such terminal, or no longer
  mort,       ///< its program has ended
  muet,       ///< no answer in time: done or not, nobody knows
  absent,     ///< the ground itself is gone or could not be started
  refuse,     ///< it refused; nothing was done
  condition,  ///< what had to hold before the act did not; nothing was done
};

/// In French, for the operator: a lower-case clause without a full stop.
std::string_view description(Panne panne);

template <class T>
using Ou = Resultat<T, Panne>;

/// The text as it may be pasted: valid UTF-8, line ends LF, without control characters but LF and tab, without
/// the line feeds that end it.
std::string collable(std::string_view texte);

/// What a key is to a terminal: a name of envoyer_touches' list ("esc", "entree", "ctrl+c") or one character.
using Touche = std::string;
/// The names of that list, in the order in which they are told.
inline constexpr std::array<std::string_view, 13> nomsDesTouches = {
    "esc",    "entree", "tab",    "haut",   "bas",    "gauche", "droite",
    "espace", "ctrl+c", "ctrl+d", "ctrl+z", "ctrl+u", "ctrl+r"};

/// Told of what happens in the terminals. Calls are short: whoever has much to do hands it on.
class Observateur {
 public:
  virtual ~Observateur() = default;
  /// Once, too, for each that stands there when observing begins; again when its program is started anew.
  virtual void apparu(const Terminal&) {}
  virtual void disparu(const IdTerminal&) {}
  /// The program has ended; its screen stays until `fermer`.
  virtual void termine(const IdTerminal&, std::optional<int> /*statut*/) {}
  /// The screen of a watched terminal has changed: at most once for many changes.
  virtual void ecrit(const IdTerminal&) {}
  /// The ground is lost: every terminal of it is out of reach.
  virtual void perdu() {}
};

class Terminaux {
 public:
  static constexpr std::chrono::milliseconds delaiMax{3000};

  virtual ~Terminaux() = default;

  /// What stands there now, whoever started it: for adoption after a restart.
  virtual Ou<std::vector<Terminal>> lister() = 0;
  virtual Ou<Terminal> ouvrir(const Lancement& lancement) = 0;
  /// Starts the same words anew in the same terminal, once what runs in it has ended.
  virtual Ou<Terminal> relancer(const IdTerminal& id, const Lancement& lancement) = 0;
  /// Ends the program, whatever it left behind (TERM, then KILL), and the terminal.
  virtual Ou<Fait> terminer(const IdTerminal& id) = 0;

  virtual Ou<Ecran> ecran(const IdTerminal& id) = 0;
  /// The same with its colours.
  virtual Ou<Peinture> peinture(const IdTerminal& id) = 0;
  /// What has scrolled out, the last `lignes` of it, then the screen. Empty before it for a full-screen
  /// program.
  virtual Ou<std::vector<std::string>> historique(const IdTerminal& id, int lignes) = 0;

  /// Pastes a text, byte for byte but for what no terminal may be sent (control characters other than LF and
  /// tab), without submitting it. Leaves copy mode first. Nothing is pasted into a dead terminal.
  virtual Ou<Fait> coller(const IdTerminal& id, std::string_view texte) = 0;
  /// Presses keys, all or none: an unknown one gives `refuse`.
  virtual Ou<Fait> presser(const IdTerminal& id, const std::vector<Touche>& touches) = 0;
  /// Enter, if at that very moment no line of the screen holds any of these texts (else `condition`). Texts,
  /// not patterns. A dialog's words may stand in the conversation above the box too: the caller leaves out
  /// those that the screen it has just judged already shows. At most `saufSiMax` of them.
  static constexpr std::size_t saufSiMax = 32;
  virtual Ou<Fait> valider(const IdTerminal& id, const std::vector<std::string>& saufSi) = 0;

  virtual Ou<Fait> redimensionner(const IdTerminal& id, Taille taille) = 0;

  /// While a terminal is watched, `ecrit` tells of its changes. Counted: watched until let go as often.
  virtual void guetter(const IdTerminal& id) = 0;
  virtual void laisser(const IdTerminal& id) = 0;

  virtual void observer(Observateur* observateur) = 0;
};

}  // namespace tarnavelle::Plateau
