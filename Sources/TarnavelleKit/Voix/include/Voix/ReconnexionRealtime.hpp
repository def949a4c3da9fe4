// What a voice session does when its connection closes, when nobody has spoken for long, and when an
// agent's long work ends. Timers, the count of attempts and carrying the decision out are their owner's
// business. Pure functions, safe from any thread.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "Voix/RefusRealtime.hpp"

namespace tarnavelle {

namespace ReconnexionRealtime {

struct Decision {
  struct reconnecter {
    std::chrono::seconds delai{};  ///< to wait first
    std::int64_t tentative = 1;
    bool operator==(const reconnecter&) const = default;
  };
  struct abandonner {
    std::string message;  ///< shown and spoken to the user
    bool operator==(const abandonner&) const = default;
  };
  struct rien {
    bool operator==(const rien&) const = default;
  };

  std::variant<reconnecter, abandonner, rien> cas;

  bool operator==(const Decision&) const = default;
};

inline constexpr std::chrono::seconds delaiMaxSecondes{10};

/// Codes of the services after which a new connection would be refused too.
inline constexpr std::array<std::string_view, 4> codesIrrecuperables{
    "insufficient_quota", "invalid_api_key", "account_deactivated", "billing_hard_limit_reached"};

/// One second per attempt, from one second to `delaiMaxSecondes`.
std::chrono::seconds delai(std::int64_t tentative);

/// The code among `codesIrrecuperables` that the message contains.
std::optional<std::string_view> code(std::optional<std::string_view> message);
bool estIrrecuperable(std::optional<std::string_view> message);

/// Why another session would be refused too.
enum class Motif {
  credit,   ///< the account is empty
  cle,      ///< the key is refused
  session,  ///< the service says no otherwise
};
/// What the user is told of it.
std::string_view phrase(Motif motif);
/// By the code that the message contains, else by the refusal, as `explicationRefus` judges it.
std::optional<Motif> motif(std::optional<std::string_view> message, const std::optional<RefusRealtime>& refus);

/// What the user is told of the code that the message contains.
std::optional<std::string> explication(std::optional<std::string_view> message);

/// What the user is told of a refusal that would be met again, which ends the session, whether the connection
/// still stands or not; nothing of any other. Its code and kind are compared whole with
/// `codesIrrecuperables`; a declined connection is judged by its HTTP status and, for want of a code that
/// tells, its words.
std::optional<std::string> explicationRefus(const RefusRealtime& refus);

struct Fermeture {
  bool fermetureVoulue = false;     ///< by the user or the program
  bool superviseurEnCours = false;  ///< another reconnection is already under way
  std::optional<std::string_view> message{};
  std::int64_t tentative = 1;            ///< from 1
  std::optional<RefusRealtime> refus{};  ///< the last that ends the session, else the last told
};
Decision decision(const Fermeture& fermeture);

}  // namespace ReconnexionRealtime

namespace InactiviteConversation {

enum class Geste {
  rien,
  viderHistorique,  ///< delete the conversation's items, to start afresh
  raccrocher,       ///< say `phraseRaccroche`, then close
};

inline constexpr std::chrono::seconds videHistoriqueApres{300};
inline constexpr std::chrono::seconds raccrocheApres{900};
inline constexpr std::string_view phraseRaccroche =
    "Personne depuis un quart d'heure — je raccroche. Rappelle-moi quand tu veux.";

struct Etat {
  std::chrono::duration<double> silenceDepuis{};
  bool historiqueVide = false;
  bool reponseActive = false;  ///< a response is being produced
  bool appelEnCours = false;   ///< a tool call is in progress
};
Geste geste(const Etat& etat);

}  // namespace InactiviteConversation

namespace FinDActiviteDurable {

inline constexpr std::chrono::seconds minimumTravail{20};

struct Travail {
  bool travaillaitAvant = false;
  bool travailleMaintenant = false;
  std::chrono::duration<double> travailDepuis{};
};
/// Whether the end of an agent's work is worth announcing.
bool merite(const Travail& travail);

}  // namespace FinDActiviteDurable

}  // namespace tarnavelle
