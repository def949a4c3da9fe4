// Follows one agent: what its hooks, its screen, its title, its process and our own keystrokes prove of what it
// is doing. Pure: time comes in with each call and never goes back. One thread at a time.
//
// Hooks rule where they fire: turns are told apart by their own ids, since a text that is submitted during a
// turn belongs to it, and the end of an older turn ends nothing. The screen rules elsewhere, and wherever hooks
// are known to be silent (Esc, a refused permission): `travaille` as soon as it shows, anything else only while
// nothing has moved for `calme`, and idle only when two looks agree. A title can prove `travaille` only.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Etats/Crochets.hpp"
#include "Etats/Etat.hpp"
#include "Etats/Regles.hpp"

namespace tarnavelle::Plateau {

class Suivi {
 public:
  static constexpr std::chrono::milliseconds calme{200};         ///< without a move, before the screen counts
  static constexpr std::chrono::milliseconds entreRegards{300};  ///< between the two looks that make an idle
  static constexpr std::chrono::milliseconds attendu{500};       ///< between looks while someone waits
  static constexpr std::chrono::seconds ordinaire{2};            ///< between looks at a program without hooks
  static constexpr std::chrono::seconds espace{10};              ///< the same, once it has long been so
  static constexpr std::chrono::seconds contredit{2};    ///< of calm, for the screen to outweigh the hooks
  static constexpr std::chrono::seconds apresTouche{3};  ///< how long our own keys keep us looking
  static constexpr std::chrono::seconds sansTour{
      3};  ///< of rest after an instruction that no turn was seen to follow
  static constexpr std::chrono::seconds tourTardif{
      20};  ///< the same, when its hook must come: under load, late
  static constexpr std::chrono::seconds dessinDialogue{
      1};  ///< from the hook of a dialog to the dialog, from keys to its end, at most
  static constexpr std::chrono::seconds silence{10};  ///< of hooks, before the screen is asked again

  /// `programme`: its name, for the evidence; its version joins it once a screen tells it.
  Suivi(Regles regles, std::string programme, Instant maintenant);

  void crochet(const Crochet& crochet, Instant maintenant);
  void ecran(const Ecran& ecran, Instant maintenant);
  /// The screen was wanted and could not be had: whoever follows tries again later.
  void sansEcran(Instant maintenant);
  /// The screen is to be looked at anew, whatever the hooks say.
  void revoir(Instant maintenant) { douter(maintenant); }
  void termine(std::optional<int> statut, Instant maintenant);

  /// An instruction is about to be submitted through the door (before Enter: its hook may be quick). From here
  /// on only a turn that begins later counts, and of the hooks that tell a text, one that tells this one.
  void consigne(std::string_view texte, Instant maintenant);
  /// It was seen to leave the box: until its turn shows, the agent works on it. A program's own command may
  /// have none.
  void partie(bool commande, Instant maintenant);
  /// Keys pressed through the door: Esc and ctrl+c may end a turn without a hook, any key may answer a dialog.
  void touches(const std::vector<Touche>& touches, Instant maintenant);
  /// The agent declared its end, or its blockage, by the verbs of that name. Holds until its next instruction.
  void declarerFini(Instant maintenant);
  void declarerBloque(std::string_view raison, Instant maintenant);

  const Situation& situation() const { return situation_; }
  /// At rest, and the turn that the last instruction began is over; without any instruction, at rest.
  bool repose() const { return situation_.activite == Etat::repos && (!consigne_ || tourVu_); }
  /// The last instruction was submitted: its hook came, it waits in the program's queue, or the agent, idle
  /// before, was seen at work.
  bool soumise() const { return consigne_ && soumise_; }
  /// Keys went to the dialog that it waits in, and nobody knows yet what came of them.
  bool repondu() const { return repondu_; }
  /// How often the link to its machine was seen to break.
  std::uint64_t ruptures() const { return ruptures_; }
  /// What the last screen showed; nothing before the first.
  const std::optional<LectureEcran>& lecture() const { return lecture_; }
  /// Changes with whatever `situation`, `repose` and `soumise` tell.
  std::uint64_t revision() const { return revision_; }
  /// The conversation's id and record, once a hook told them.
  const std::string& conversation() const { return conversation_; }
  /// A hook told of an instruction in that conversation: it can be resumed.
  bool entamee() const { return entamee_; }
  const std::string& transcript() const { return transcript_; }

  /// The last instruction, or the beginning of a very long one.
  const std::string& texteConsigne() const { return texteConsigne_; }

  /// What it said at the end of the turn that the last instruction began, as a hook told; empty when none did.
  const std::string& reponse() const { return reponse_; }

  /// When it wants to be shown the screen; nothing while its hooks tell all. `quelquUnAttend`: somebody awaits
  /// a change, so a program without hooks is looked at more often.
  std::optional<Instant> prochainRegard(bool quelquUnAttend) const;

 private:
  struct Declaration {
    Etat etat;
    Instant quand;
    Preuve preuve;
  };

  void passer(Etat activite, Preuve preuve, Instant maintenant);
  void publier(Instant maintenant);
  void tourCommence();
  void travailVu();
  void douter(Instant maintenant) { doute_ = maintenant; }
  void soumission(const Crochet& crochet, Instant maintenant);
  void finDeTour(const Crochet& crochet, Instant maintenant);
  void attendreCrochet(std::string_view texte);
  bool duLien(const Crochet& crochet, Instant maintenant);
  void oublierTour();
  bool ancien(const std::string& tour) const;
  bool laNotre(const Crochet& crochet);
  void reposVu(const LectureEcran& lecture, Instant maintenant);
  bool crochetsContredits(const LectureEcran& lecture, Instant maintenant) const;
  Preuve preuve(Source source, std::string element, std::string regle = {}) const;

  Regles regles_;
  std::string programme_;
  bool versionLue_ = false;
  Situation situation_;
  Preuve preuveActivite_;
  std::optional<Declaration> declaration_;
  std::uint64_t revision_ = 0;
  std::string conversation_;
  bool entamee_ = false;
  std::string transcript_;
  std::string reponse_;

  // The turn, as hooks tell it.
  bool crochetsVus_ = false;
  bool enTour_ = false;
  std::string tour_;                     ///< its id; empty when it is not known
  std::deque<std::string> anciens_;      ///< the last turns that are over
  int enFile_ = 0;                       ///< texts submitted during the turn, as hooks told
  bool tourAttendu_ = false;             ///< a queued text has begun a turn whose id is still unknown
  std::optional<Instant> permission_;    ///< when a hook last said that a dialog opens
  std::deque<std::string> sansCrochet_;  ///< how our own instructions begin whose hook has not come

  // The link to its machine, when it lives elsewhere.
  bool rompue_ = false;
  std::uint64_t ruptures_ = 0;
  Etat derriere_ = Etat::inconnu;  ///< what it does behind a link that is cut, as far as its hooks tell
  Preuve preuveDerriere_;

  // Our instructions.
  std::optional<Instant> consigne_;
  std::string texteConsigne_;
  bool tourVu_ = false;     ///< a turn was seen since
  bool soumise_ = false;    ///< it was seen to be submitted
  bool partie_ = false;     ///< it left the box, and no turn was seen yet
  bool tourDu_ = false;     ///< and its hook must come
  bool ailleurs_ = false;   ///< work that shows may still be that of the turn before
  bool enFileVue_ = false;  ///< the last screen showed texts that wait

  // The screen.
  std::optional<LectureEcran> lecture_;
  std::size_t empreinte_ = 0;
  Instant bouge_{};                      ///< when the screen last differed from the look before
  std::optional<Instant> premierRepos_;  ///< the first of the looks that agree on idle
  Instant regard_{};                     ///< the last look
  Instant nouvelle_{};                   ///< the last hook or look
  std::optional<Instant> doute_;         ///< since when something is to be found out by looking
  std::optional<Instant> touche_;        ///< our last keys that matter
  bool repondu_ = false;                 ///< they went to a dialog
};

}  // namespace tarnavelle::Plateau
