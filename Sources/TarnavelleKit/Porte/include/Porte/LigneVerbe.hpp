// A row of the table of verbs: all there is to know of one. Plain values, for any thread while none changes
// them.
#pragma once

#include <chrono>
#include <optional>
#include <string_view>
#include <vector>

#include "Porte/CommandeControle.hpp"
#include "Porte/OutilVoix.hpp"

namespace tarnavelle {

/// What the text of a parameter stands for, when it is more than a text.
enum class Designe {
  agent,        ///< an agent, or a window of the board, by its name
  chemin,       ///< a path, for the machine where the door is
  cheminOuNom,  ///< a path when it is written as one, else a name, an address, words
  machine,      ///< another machine by its name: the paths beside it are that machine's
};

/// What carrying out a verb does to the board and to the machine, for whoever decides what may run unasked.
struct EffetsVerbe {
  bool lectureSeule = false;  ///< it only looks: nothing is written, typed, shown, started or sent
  bool destructif = false;    ///< it may end, take away or undo something, or have somebody do it
  bool repetable = false;     ///< done again with the same arguments, it changes nothing more
  bool ouvert = false;  ///< it reaches beyond the board: commands, agents that act, the web, other machines
};

/// A member of what a reply has as data. No reply has to have all of them.
struct Donnee {
  enum Genre { texte, nombre, booleen, liste, lignes /**< a screen: a text of many lines */ };
  std::string_view nom;
  Genre genre;
};

struct LigneVerbe {
  struct Parametre {
    std::string_view nom;
    Designe designe;
  };

  int rang;  ///< its place in every list of the verbs, from 1
  OutilVoix outil;
  std::string_view bref;                               ///< the verb in one line of a list, for the operator
  std::string_view anglais;                            ///< the English words by which it is looked for, a line
  std::vector<std::string_view> alias;                 ///< English names, normalised
  CommandeControle (*decoder)(const Json& arguments);  ///< never fails; reads through `Champ`
  std::vector<Parametre> parametres = {};              ///< those that designate something, "agent" aside
  EffetsVerbe effets = {};
  std::vector<Donnee> donnees = {};  ///< those that are known; none for a verb whose data may be anything
  /// The parameter that says, in seconds, how long the reply may take, if any.
  std::string_view delai = {};

  /// The row of exactly that verb, or null.
  static const LigneVerbe* de(std::string_view verbe);

  /// How long the reply to that call may take: 60 s when it does not say, at most 300. Nothing for a verb that
  /// answers at once.
  std::optional<std::chrono::seconds> delaiDe(const Json& arguments) const;

  /// What one of the verb's parameters designates; nothing for a mere text. One called "agent" names an agent.
  std::optional<Designe> designe(std::string_view parametre) const;
};

}  // namespace tarnavelle
