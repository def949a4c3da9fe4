// The hooks by which agent programs tell what they do: what is added to a launch so that they fire, and the log
// that `tarnavellectl crochet` appends to, one JSON object per line. Pure functions, but for `JournalCrochets`.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Socle/JSON.hpp"

namespace tarnavelle::Plateau {

/// One hook that fired.
struct Crochet {
  enum class Genre {
    demarre,     ///< the program is up
    consigne,    ///< an instruction was submitted, or queued while a turn is under way
    outil,       ///< a tool is about to run
    outilFini,   ///< a tool has run
    permission,  ///< it asks for leave
    attention,   ///< it asks for attention: late, and not always for an answer
    fini,        ///< a turn is over
    echec,       ///< a turn is over, by an error
    interrompu,  ///< a turn was cut short
    sorti,       ///< the conversation is over
    rompu,       ///< the link to its machine is cut
    renoue,      ///< it is there again
    perdu,       ///< nobody reads any more what its hooks say over there
    autre,
  };
  Genre genre = Genre::autre;
  std::string nom = {};           ///< the program's own name of it: "Stop"
  std::string conversation = {};  ///< the program's id of it: what resumes it
  std::string tour = {};          ///< the turn's own id; empty where the program gives none
  std::string texte = {};         ///< the instruction, the tool, the message; clipped
  std::string transcript = {};    ///< path of the program's own record; may be empty
  std::string reponse = {};       ///< of a turn that is over: its last reply; may be empty

  bool operator==(const Crochet&) const = default;
};

namespace Crochets {

/// The events of a line of the log; none when it holds none.
std::vector<Crochet> decoder(std::string_view ligne);

/// What makes a program's hooks fire.
struct Branchement {
  std::vector<std::string> mots;  ///< to append to its launch
  std::map<std::string, std::string> environnement;
  /// Files to write first, private (0600), in folders of 0700 that are to be made.
  std::vector<std::pair<std::filesystem::path, std::string>> fichiers;
  bool operator==(const Branchement&) const = default;
};
struct Lieux {
  std::string ctl;                ///< absolute path of tarnavellectl
  std::filesystem::path dossier;  ///< private to this agent, absolute
  std::filesystem::path journal;  ///< its log, absolute
};
/// Nothing for a program whose hooks are not known: its screen alone tells. `autres`: what else the settings
/// say that this board gives it, for a program that takes them in one piece (gemini, opencode).
std::optional<Branchement> branchement(std::string_view programme, const Lieux& lieux, const Json& autres);

}  // namespace Crochets

/// Reads a log from where the last reading stopped. A log that is shorter than that is a new one. One that has
/// grown long makes place for another and stays beside it, under the name of `ancien`, until the next one does:
/// a hook that had opened it still finds its reader. One thread at a time.
class JournalCrochets {
 public:
  static constexpr std::int64_t longueurMax = std::int64_t{1} << 20;  ///< bytes, beyond which it makes place

  explicit JournalCrochets(std::filesystem::path fichier) : fichier_(std::move(fichier)) {}

  /// An empty log in place of whatever stands there, private (0600), in a folder that is there.
  static bool commencer(const std::filesystem::path& fichier);
  static void retirer(const std::filesystem::path& fichier);

  /// What was appended since, whole lines only; empty when there is nothing or no file.
  std::vector<Crochet> lire();

  const std::filesystem::path& fichier() const { return fichier_; }
  static std::filesystem::path ancien(std::filesystem::path fichier) { return fichier += ".1"; }

 private:
  static constexpr std::size_t tailleTranche = std::size_t{1} << 20;  ///< a longer line is passed over

  std::filesystem::path fichier_;
  std::int64_t curseur_ = 0;
  std::int64_t curseurAncien_ = 0;
};

}  // namespace tarnavelle::Plateau
