// Following a claude agent that runs in tmux on another machine: the shell lines that install its hooks,
// start it and read back the log that the hooks append to, and the decoding of what they print. The
// agent's replies are in TranscriptClaude; running the lines (over SSH) and keeping the cursors is the
// caller's business. A new tmux session empties its log, so cursors start again at 0 with it.
// Pure functions, safe from any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Agents/AgentCLI.hpp"
#include "Socle/LectureJSON.hpp"

namespace tarnavelle {

/// One event of the flight. Texts are trimmed and clipped.
struct EvenementVol {
  /// The user's prompt, never empty.
  struct consigne {
    std::string texte;
    bool operator==(const consigne&) const = default;
  };
  /// A tool about to run.
  struct outil {
    std::string nom;
    std::string resume;  ///< what it works on; may be empty
    bool operator==(const outil&) const = default;
  };
  /// The agent asks for attention.
  struct besoin {
    std::string message;  ///< may be empty
    bool operator==(const besoin&) const = default;
  };
  /// The agent's reply, out of its transcript.
  struct reponse {
    std::string texte;
    bool operator==(const reponse&) const = default;
  };
  struct demarre {
    bool operator==(const demarre&) const = default;
  };
  struct fini {
    bool operator==(const fini&) const = default;
  };
  /// Any other hook.
  struct inconnu {
    bool operator==(const inconnu&) const = default;
  };

  std::variant<consigne, outil, besoin, reponse, demarre, fini, inconnu> cas;

  bool operator==(const EvenementVol&) const = default;
};

namespace CarnetDeVol {

/// The hooks installed.
inline constexpr std::array<std::string_view, 6> evenements = {
    "SessionStart", "UserPromptSubmit", "PreToolUse", "Notification", "Stop", "SessionEnd"};

inline constexpr std::string_view dossierDistant = ".tarnavelle/vol";  ///< from the remote home
inline constexpr std::int64_t lectureMax = 262144;                     ///< bytes that one read prints
inline constexpr std::size_t bulleMax = 500;                           ///< characters kept of a text

/// claude's hooks settings file.
struct Reglages {
  struct Commande {
    std::string type;
    std::string command;
    std::optional<std::int64_t> timeout;  ///< seconds
    bool operator==(const Commande&) const = default;
  };
  struct Entree {
    std::optional<std::string> matcher;
    std::vector<Commande> hooks;
    bool operator==(const Entree&) const = default;
  };

  std::map<std::string, std::vector<Entree>> hooks;  ///< by event

  bool operator==(const Reglages&) const = default;

  /// Nothing when a member is mistyped, or missing where it is not optional; others are ignored.
  static std::optional<Reglages> lire(std::string_view texte);
  Json json() const;
};

/// The session's name as a file name: its letters and numbers, ".", "-" and "_"; "session" when nothing
/// remains. Holds no character that a shell knows.
std::string nomSur(std::string_view nom);

/// Paths of a session's log and hooks settings, from the remote home.
std::string journalDistant(std::string_view session);
std::string reglagesDistant(std::string_view session);

/// The hook: appends its standard input to the log as one line. The shell that runs it expands "$HOME"
/// and any other "$" of the path; a single quote in the path would end the command's own quotes, so the
/// path must hold none, as those of `journalDistant` never do.
std::string commandeHook(std::string_view journal);

Reglages reglages(std::string_view journal);

/// Their text; nothing when the path is not well-formed UTF-8.
std::optional<std::string> json(std::string_view journal);

/// Starts the agent in the tmux session of that name, or attaches the terminal to the session when it
/// lives already. claude gets its hooks and, with a new session, an empty log; other agents get neither.
/// `extra` are words for the agent, after its own arguments.
std::string commandeLancement(const AgentCLI& cli, std::string_view tmux,
                              const std::vector<std::string>& extra);

/// Prints at most `lectureMax` bytes of the log from byte `curseur`; nothing when there is no log.
std::string commandeLecture(std::string_view session, std::int64_t curseur);

/// The part of such a line that prints a file. `chemin` stands between double quotes within single ones:
/// a variable, or a path that holds no character that a shell knows.
std::string impressionDepuis(std::string_view chemin, std::int64_t curseur);

/// Prints "<marque><session's safe name>:<title>" for each log whose transcript, in its last `queue`
/// bytes, tells the conversation's title. The title is the JSON text's own, escapes included.
std::string commandeTitres(std::string_view marque, std::int64_t queue);

struct ObjetDecode {
  EvenementVol evenement;
  std::optional<std::string> transcript;  ///< path of the agent's transcript
};

/// One line of the log: what each hook's object says. A hook writes its object and its line feed apart, so
/// those that fire at once may share a line, cut one another, and leave empty lines.
std::vector<ObjetDecode> decoder(std::string_view ligne);

/// The event of a hook's name and fields.
EvenementVol evenement(std::string_view nom, const Json& d);

struct Lecture {
  std::vector<EvenementVol> evenements;   ///< without `inconnu`
  std::size_t consommes = 0;              ///< bytes by which the cursor moves on
  std::optional<std::string> transcript;  ///< the last path that the slice tells
};

/// Decodes a slice of the log. Only complete lines are decoded; what is unreadable in them is consumed.
Lecture lire(std::string_view data);

/// Where to read next after a slice of `octets` bytes, here as in a transcript: `consommes` further on. A
/// full slice that holds no whole line is within one that no read can complete: it is passed over, and
/// what remains of that line is consumed as an unreadable one.
std::int64_t curseurSuivant(std::int64_t curseur, std::size_t octets, std::size_t consommes);

struct SansEcho {
  std::vector<EvenementVol> evenements;
  bool echoConsomme = false;
};

/// Removes the first prompt that equals `echo`, which the cockpit typed itself.
SansEcho sansEcho(std::vector<EvenementVol> recus, const std::optional<std::string>& echo);

}  // namespace CarnetDeVol
}  // namespace tarnavelle
