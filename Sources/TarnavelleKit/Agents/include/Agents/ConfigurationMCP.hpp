// The bridge declared to an agent's program by whoever configures it by hand: the text in the program's own
// form, the shell lines that put it to use, and what must be known of the program. The text lasts: it holds
// neither the door's address nor its token, for the bridge looks for the door at each call. What the cockpit
// adds to a launch of its own is InjectionPorte's business. Safe from any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Socle/Environnement.hpp"

namespace tarnavelle::ConfigurationMCP {

/// The calls that a program makes without asking its user.
enum class Approbation {
  aucune,
  lecture,  ///< of the tools that change nothing
  tout,     ///< of every tool, those that run commands included
};

struct Demande {
  std::string pont;           ///< the bridge's absolute path
  Environnement variables{};  ///< given to the bridge with these values; a token makes the text a secret
  bool porteHeritee = false;  ///< the door is to be found in the agent's environment alone
  Approbation approbation = Approbation::aucune;
  std::vector<std::string> lecture{};  ///< the names of the tools that change nothing
};

/// Whether the text holds the door's token.
bool secrete(const Demande& demande);

/// One form of configuration.
struct Forme {
  std::string_view nom;                  ///< its option, without dashes
  std::string_view objet;                ///< what is written, in French
  std::string (*texte)(const Demande&);  ///< ends with a line feed; "{}" when JSON cannot hold a value

  /// The shell lines to paste, `fichier` being the absolute path where the text was written, or empty. None
  /// when a line would show the token: in the history, to whoever lists processes.
  std::vector<std::string> (*lignes)(const Demande&, std::string_view fichier);

  /// What approves the calls when the text has no room for it: words for the launch, behind a space. Null when
  /// the text says it.
  std::string (*approbationAuLancement)(const Demande&);

  // In French, for the operator; no full stop but in the last.
  std::string_view lieu;               ///< where the text goes to stay
  std::string_view sansApprobation;    ///< what the program does of calls that are not approved
  std::string_view approbationTotale;  ///< what approves them all, in the program's own terms
  std::string_view remarque = {};      ///< what else must be known

  bool jetonEnArgument =
      false;  ///< the program is given a secret text in its arguments, for whoever lists them
};

/// The known forms; the first is the usual one.
const std::vector<Forme>& formes();

}  // namespace tarnavelle::ConfigurationMCP
