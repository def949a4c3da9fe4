// What the verbs ask of whoever follows the agents: what each is doing, how its screen reads, and what must be
// told of what was done to it. An agent is known here by its key, the board's own id of it.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Etats/Etat.hpp"
#include "Etats/Regles.hpp"
#include "Terminaux/Terminaux.hpp"

namespace tarnavelle::Plateau {

/// What is known of an agent at one moment.
struct Constat {
  bool suivie = false;  ///< the key is known
  Situation situation;
  bool repose = false;         ///< at rest, and the turn that the last instruction began is over
  bool soumise = false;        ///< the last instruction was seen to be submitted
  std::uint64_t ruptures = 0;  ///< how often the link to its machine was seen to break
  bool repondu = false;        ///< its dialog was given keys, and what came of them is not known yet
  std::string conversation;
  bool entamee = false;  ///< its hooks told of an instruction in that conversation
  std::string transcript;
  std::string reponse{};  ///< to the last instruction, as its hooks told; empty when they did not
};

/// Safe from any thread. An unknown key reads as an agent of which nothing is known.
class Veille {
 public:
  virtual ~Veille() = default;

  virtual void suivre(const std::string& cle, const std::string& programme, const IdTerminal& terminal) = 0;
  virtual void oublier(const std::string& cle) = 0;
  /// Its program has ended.
  virtual void termine(const std::string& cle, std::optional<int> statut) = 0;

  virtual Constat constat(const std::string& cle) = 0;
  /// How the agent's screen reads now.
  virtual LectureEcran lire(const std::string& cle, const Ecran& ecran) = 0;
  /// Whether the screens of that program can be read at all: nothing is proven by them otherwise.
  virtual bool saitLire(const std::string& cle) = 0;
  /// What stands on its screen only while a dialog is open.
  virtual std::vector<std::string> gardes(const std::string& cle) = 0;
  virtual Signes signes(const std::string&) { return {}; }
  /// What came since the last instruction, without its frame.
  virtual std::vector<std::string> depuisConsigne(const std::string& cle,
                                                  const std::vector<std::string>& lignes) = 0;

  // What was done to it through the door.
  virtual void consigne(const std::string& cle, std::string_view texte) = 0;  ///< submitted, at this moment
  virtual void partie(const std::string&, bool /*commande*/) {}               ///< and seen to leave the box
  virtual void touches(const std::string& cle, const std::vector<Touche>& touches) = 0;
  virtual void declarerFini(const std::string& cle) = 0;
  virtual void declarerBloque(const std::string& cle, std::string_view raison) = 0;

  /// Between the two somebody waits for a change of that agent: it may be looked at. Counted.
  virtual void guetter(const std::string& cle) = 0;
  virtual void laisser(const std::string& cle) = 0;

  /// Looks at what is due, and when something will be.
  virtual void actualiser(Instant maintenant) = 0;
  virtual std::optional<Instant> prochainRegard() = 0;

  /// Told of the key of an agent whose state has changed, on any thread, with no lock held.
  virtual void observer(std::function<void(const std::string& cle)> change) = 0;
};

}  // namespace tarnavelle::Plateau
