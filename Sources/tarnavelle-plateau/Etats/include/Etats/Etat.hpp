// What an agent is doing, and what it was read from. Plain values.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace tarnavelle::Plateau {

/// What its own clock reads: never set back, for intervals only.
using Instant = std::chrono::steady_clock::time_point;

enum class Etat {
  travaille,  ///< a turn is under way
  besoin,     ///< it waits for an answer: a dialog, or a blockage that it declared
  repos,      ///< its turn is over, its box takes text
  fini,       ///< at rest, and it declared that its work is done
  sorti,      ///< its program has ended
  rompue,     ///< the link to its machine is cut: what it does is not known
  inconnu,    ///< nothing proves anything: not idle
};

/// "travaille", "besoin"…
std::string_view nom(Etat etat);

/// Where a state was read.
enum class Source { aucune, crochet, ecran, titre, processus, porte, lien };

/// "crochet", "écran"…; empty for `aucune`.
std::string_view nom(Source source);
/// In French, with its article: "un crochet", "l'écran"…
std::string_view description(Source source);

/// Why the state is what it is, for `etat --pourquoi`.
struct Preuve {
  Source source = Source::aucune;
  std::string element = {};    ///< the hook's name, the screen's line, the title, the exit status, the verb
  std::string regle = {};      ///< the rule of the screen that spoke; empty for other sources
  std::string programme = {};  ///< the program and its version, as far as they are known
  bool operator==(const Preuve&) const = default;
};

struct Situation {
  Etat etat = Etat::inconnu;
  /// The same without what the agent declared of itself: never `fini`. What may be typed depends on this one.
  Etat activite = Etat::inconnu;
  Instant depuis{};  ///< when `etat` became what it is
  Preuve preuve;
  bool operator==(const Situation&) const = default;
};

}  // namespace tarnavelle::Plateau
