// How the screen of one program is read: a small text file of rules, embedded in the binary, that an operator
// may replace (`CatalogueRegles`). Its format is described in regles/LISEZMOI.md. What the reading means for
// the agent's state over time is `Suivi`'s business. Rules are immutable, copies are cheap: safe from any
// thread.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Etats/Etat.hpp"
#include "Socle/Resultat.hpp"
#include "Terminaux/Terminaux.hpp"

namespace tarnavelle::Plateau {

/// What one screen shows.
struct LectureEcran {
  /// `travaille`, `besoin` or `repos`; `inconnu` when no rule speaks.
  Etat etat = Etat::inconnu;
  std::string regle;  ///< that spoke
  std::string ligne;  ///< on which it spoke, its blanks folded

  bool boite = false;        ///< the input box is shown: the program takes text
  std::string texteBoite;    ///< what the box holds, lines joined by LF, without placeholder text
  int collages = 0;          ///< large pastes that the box shows as a mark ("[Pasted…]")
  std::string horsCollages;  ///< what the box holds beside these marks
  bool enFile = false;       ///< texts wait for the turn's end
  bool interrompu = false;   ///< the last turn was cut short

  /// A dialog waits for a choice: nothing may be typed.
  bool dialogue() const { return etat == Etat::besoin; }
  /// The box holds something that was typed.
  bool brouillon() const { return boite && !texteBoite.empty(); }
  bool operator==(const LectureEcran&) const = default;
};

/// The characters that mean something to a program where a word begins.
struct Signes {
  std::string commandes = "/!";  ///< first of all: the text is a command of its own
  std::string menus{};           ///< of the last word: a menu of names opens, and takes Enter
  std::string coupures{};        ///< last of all: Enter takes it away and breaks the line
  bool commande(std::string_view texte) const {
    return !texte.empty() && commandes.find(texte.front()) != std::string::npos;
  }
  /// What is pasted: a blank after a name that ends it and that opens a menu, where Enter would take what the
  /// menu offers (gemini ran /clear for an unknown command), or after a mark that makes Enter break the line.
  std::string aPoser(const std::string& texte) const;
};

class Regles {
 public:
  struct Corps;  ///< what a file of rules holds

  /// The rules of a file's text, or what is wrong with it: "ligne 12 : …", in French.
  static Resultat<Regles, std::string> lire(std::string_view texte);

  LectureEcran lire(const Ecran& ecran) const;

  /// Whether there is anything that they could prove.
  bool saitLire() const;

  /// The program's version, where the screen tells it, as most do when they start.
  std::optional<std::string> version(const std::vector<std::string>& lignes) const;

  /// What the title proves: `travaille`, or nothing.
  std::optional<std::string> titreTravaille(std::string_view titre) const;

  /// What came since an instruction that the lines show (a screen, or a history and a screen): the last one, or
  /// the last that begins as `consigne` where it is known. Frame, box, footers and the instruction itself are
  /// removed, and the blank lines around it.
  std::vector<std::string> depuisConsigne(const std::vector<std::string>& lignes,
                                          std::string_view consigne = {}) const;

  const Signes& signes() const;

  /// The same for two screens that differ, if at all, in what is drawn for its own sake.
  std::size_t empreinte(const std::vector<std::string>& lignes) const;

  /// Plain texts that only stand on the screen while a dialog is open: for the last look before Enter
  /// (`Terminaux::valider`).
  const std::vector<std::string>& gardes() const;

 private:
  explicit Regles(std::shared_ptr<const Corps> corps) : corps_(std::move(corps)) {}
  std::shared_ptr<const Corps> corps_;
};

/// The rules of every program.
class CatalogueRegles {
 public:
  /// The embedded ones, each replaced by `<dossier>/<programme>.regles` where that file stands. One that is
  /// wrong is left aside, and told.
  explicit CatalogueRegles(const std::string& dossier);

  /// Those of a program (`AgentCLI::id`), else those that know no program: nothing is ever proven by them.
  const Regles& de(std::string_view programme) const;

  /// What was wrong in the operator's files: a French sentence for each, which names file and line.
  const std::vector<std::string>& plaintes() const { return plaintes_; }

 private:
  std::vector<std::pair<std::string, Regles>> regles_;
  std::vector<std::string> plaintes_;
};

}  // namespace tarnavelle::Plateau
