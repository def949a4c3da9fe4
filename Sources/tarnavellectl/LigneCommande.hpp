// The command line, split: VERB [words…] [--option value] [--flag]. Plain values, for any thread while none
// changes them.
//
// Options are those with two dashes, dashed or underscored, before or after the words; "--option=value"
// too; "--" ends them. After the verb, a word with one dash is a word ("-3"), but for "-h"; one that names an
// option, and any before the verb, is told. A value never starts with two dashes unless "=" gives it, so a
// forgotten value is told rather than guessed. A boolean takes no value but with "=": a word beside it that
// reads as one is told too, for it would silently be something else.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Catalogue.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Resultat.hpp"

namespace tarnavelle {

/// Why a command line cannot be carried out, and of which command it tells the usage (null: none).
struct FauteLigne {
  std::string message;
  const OutilVoix* outil = nullptr;
};

struct LigneCommande {
  std::string mot;  ///< the verb as typed, empty when there is none
  CommandeNommee commande;
  /// What the words make, unless help is asked for: the body to post for a verb, be it known or not; for a
  /// command of the client's own, its arguments.
  Json charge = Json::object();
  std::vector<std::string> laisses;  ///< surplus words, and the options of an unknown verb
  bool json = false;
  bool donnees = false;
  bool aide = false;
  bool version = false;

  /// Splits the words that follow the program's name.
  static Resultat<LigneCommande, FauteLigne> lire(const std::vector<std::string>& arguments);
};

/// An option that goes with every command, unless a command has a parameter of that name.
struct OptionCommune {
  ParamVoix parametre;
  bool LigneCommande::*champ;
};
const std::vector<OptionCommune>& optionsCommunes();

/// The common options of a command, null for the client's own: those that it has no parameter for.
std::vector<ParamVoix> parametresCommuns(const OutilVoix* outil);

}  // namespace tarnavelle
