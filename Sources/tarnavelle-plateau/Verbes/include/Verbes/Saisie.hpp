// How a text is typed into an agent's box and submitted, so that nothing is reported that was not seen. Pure:
// it says what to do next and is told what came of it. Looks at the box before the paste (a dialog, what a
// person is typing), waits until the box shows the text, has Enter pressed, and waits for the proof. One thread
// at a time.
#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <variant>

#include "Etats/Etat.hpp"
#include "Etats/Regles.hpp"
#include "Terminaux/Terminaux.hpp"

namespace tarnavelle::Plateau {

/// What became of a text.
struct Livraison {
  enum class Sort {
    soumis,   ///< seen to be submitted
    pose,     ///< in the box, not submitted
    refuse,   ///< nothing was typed
    inconnu,  ///< typed; what became of it was not seen
  };
  enum class Raison {
    aucune,
    dialogue,
    brouillon,
    dejaPose,
    mort,
    sansBoite,
    pasMontre,
    autrement,
    mele,
    panne,
    occupe,
    porteFermee,
    lienRompu,
    lienCoupe
  };
  Sort sort = Sort::inconnu;
  Raison raison = Raison::aucune;
  Panne panne = Panne::inconnu;  ///< for `Raison::panne`
  bool operator==(const Livraison&) const = default;
};

/// "soumis", "pose", "refuse", "inconnu".
std::string_view nom(Livraison::Sort sort);
/// In French, a lower-case clause: "un dialogue attend une réponse". Empty for `aucune`.
std::string_view description(const Livraison& livraison);

struct ReglageSaisie {
  std::chrono::milliseconds collageMin{150};   ///< from the paste to Enter, whatever the box shows
  std::chrono::milliseconds entreRegards{30};  ///< when no event tells that the screen has changed
  std::chrono::milliseconds confirmation{
      200};  ///< between the two looks that make a refusal, or an empty box a proof
  std::chrono::milliseconds boiteMax{3000};   ///< for the box to show
  std::chrono::milliseconds montreMax{6000};  ///< for the box to show the text
  std::chrono::milliseconds preuveMax{4000};  ///< from Enter to the proof
  std::chrono::milliseconds repriseMin{
      700};  ///< from Enter to a second one, while the text is still in the box
  int reprisesMax = 2;
};

class Saisie {
 public:
  struct Consigne {
    std::string texte;
    bool valider = true;
    std::string dejaPose{};  ///< what the door laid in the box
    bool suite = false;      ///< goes on with `dejaPose`, which is a draft like any other to the rest
    std::string vue{};       ///< what the box showed of either: a large paste is but a mark there
    std::string derniere{};  ///< what it last put into it to be submitted: it may be there still, or again,
                             ///< when the program refused it or when the turn was cut short early
    bool lisible = true;     ///< screens of that program can be read: else nothing is proven
    bool commande = false;   ///< the program takes it for a command of its own
    /// Only to be submitted: a door that died left the whole of it in the box, or nothing is done.
    bool reprise = false;
  };
  /// What one look shows.
  struct Regard {
    LectureEcran lecture;
    bool mort = false;
    bool besoin = false;   ///< a dialog is known to open, drawn or not
    bool soumise = false;  ///< its hook came, or it was seen at work, since Enter
  };

  struct Regarder {
    Instant auPlusTard;  ///< or as soon as the screen has changed
  };
  struct Effacer {
    std::size_t lignes;  ///< that the box shows
  };
  struct Coller {};
  struct Valider {};
  using Suite = std::variant<Regarder, Effacer, Coller, Valider, Livraison>;

  Saisie(Consigne consigne, ReglageSaisie reglage, Instant maintenant);

  Suite regard(const Regard& regard, Instant maintenant);
  Suite efface(const Ou<Fait>& fait, Instant maintenant);
  Suite colle(const Ou<Fait>& fait, Instant maintenant);
  Suite valide(const Ou<Fait>& fait, Instant maintenant);

  /// What is submitted: the text, after what was laid in the box and is still there.
  std::string tout() const { return (consigne_.suite ? consigne_.dejaPose : "") + consigne_.texte; }
  /// What the box last showed of the text (`trame`); empty when it was never seen there.
  const std::string& vue() const { return vue_; }

 private:
  enum class Phase { avant, colle, entree };
  Suite avant(const Regard& regard, Instant maintenant);
  Suite montre(const Regard& regard, Instant maintenant);
  Suite preuve(const Regard& regard, Instant maintenant);
  Suite revoir(Instant maintenant, std::chrono::milliseconds delai) const;
  void passer(Phase phase, Instant maintenant);

  Consigne consigne_;
  ReglageSaisie reglage_;
  std::string attendu_;  ///< what the box should hold (`trame`)
  Phase phase_ = Phase::avant;
  Instant debut_;  ///< of the phase
  int collagesAvant_ = 0;
  bool vide_ = false;  ///< so was the box before the paste
  int reprises_ = 0;
  bool effacee_ = false;
  Instant dernierEnter_{};
  std::optional<Livraison::Raison> soupcon_;  ///< a reason to refuse, seen once
  Instant depuisSoupcon_{};
  std::optional<Instant> videDepuis_;
  bool montree_ = false;  ///< the box showed the whole of it
  std::string vue_;
  std::string derniereBoite_;
  Instant boiteDepuis_{};
};

}  // namespace tarnavelle::Plateau
