// From a spoken sentence to cockpit commands: the prompt given to a text model, and the reading of its
// answer. Calling the model, and what to do without a verdict, are the cockpit's business. Pure functions, safe
// from any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Socle/JSON.hpp"
#include "Voix/IntentionTarnavelle.hpp"
#include "Voix/MondeVoix.hpp"

namespace tarnavelle {

/// How a sentence reached the engine.
enum class AdresseVoix {
  microOuvert,     ///< the operator may be thinking aloud, or talking to someone else
  pressionTouche,  ///< addressed to the cockpit: key held, call word, or an agent named first
};

/// What a model's answer comes to.
enum class TeneurReponse {
  demande,    ///< at least one command, of a sentence spoken to the cockpit
  rien,       ///< nothing: the sentence was not for the cockpit, or asked for nothing
  illisible,  ///< no verdict, or no command of it that can be read: the sentence is still to be answered
};

struct LectureVerdict {
  std::optional<VerdictIntentions> verdict;
  TeneurReponse teneur = TeneurReponse::illisible;

  bool operator==(const LectureVerdict&) const = default;
};

namespace MoteurIntentions {

/// Longest reason that is kept, in user-perceived characters.
inline constexpr std::size_t raisonMax = 120;

/// The prompt; the sentence itself is sent beside it. Only its last block changes with the address.
std::string prompt(const MondeVoix& monde, const std::vector<std::string>& clis, AdresseVoix adresse);

/// The last block of the prompt.
std::string_view queue(AdresseVoix adresse);

/// The verdict in a model's answer: prose and fences around the object are passed over, absent and
/// mistyped members take their defaults, malformed commands are dropped one by one. Where that gives no
/// verdict: the first object after the model's thoughts that is one, else the commands that stand alone.
LectureVerdict lire(std::string_view reponse);

/// The same, but an object that is read whole is a verdict, though it is a bare command and lists none.
std::optional<VerdictIntentions> decoder(std::string_view reponse);

/// One command; nothing when it asks for nothing or lacks what it needs.
std::optional<IntentionTarnavelle> commande(const Json& objet);

/// The object between the first "{" and the last "}".
std::optional<Json> objetJSON(std::string_view texte);

/// A number, or a text that is wholly a finite decimal number with a point or a comma. Null reads as
/// nothing, and so does anything else.
std::optional<double> nombre(const Json& valeur);

}  // namespace MoteurIntentions
}  // namespace tarnavelle
