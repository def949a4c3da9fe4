// The policy of the subscription to Hermès's topic: whether to subscribe, with which request, how far to
// catch up after a cut, how long to wait, when to give up. OreilleNtfy carries it out. Safe from any thread.
// Protocol: ntfy, "Subscribe via API".
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "Hermes/ReglageNtfy.hpp"
#include "Liaison/ErreurReseau.hpp"
#include "Liaison/RequeteHTTP.hpp"

namespace tarnavelle {

/// Why a stream broke.
struct EchecNtfy {
  /// The server answered with a status that is no success.
  struct http {
    int statut = 0;
    bool operator==(const http&) const = default;
  };
  /// The connection failed.
  struct transport {
    std::string phrase;  ///< as `AbonnementNtfy::phrase` says it
    bool operator==(const transport&) const = default;
  };
  /// The connection held, but what came over it is of no use or came to its end.
  struct flotEnLoques {
    bool operator==(const flotEnLoques&) const = default;
  };

  std::variant<http, transport, flotEnLoques> cas;

  bool operator==(const EchecNtfy&) const = default;
};

namespace AbonnementNtfy {

using Secondes = std::chrono::duration<double>;

inline constexpr Secondes reculMax{60};          ///< longest wait between two attempts
inline constexpr Secondes silenceTolere{120};    ///< of an open stream
inline constexpr Secondes rotationSocket{3600};  ///< age at which an open stream is opened afresh
inline constexpr Secondes rattrapageMax{1800};   ///< longest catch-up

/// What to do after a failure.
struct Verdict {
  struct reprendre {
    Secondes recul{0};
    bool avecRattrapage = false;
    bool operator==(const reprendre&) const = default;
  };
  struct abandonner {
    std::string message;  ///< in French, for the operator
    bool operator==(const abandonner&) const = default;
  };

  std::variant<reprendre, abandonner> cas;

  bool operator==(const Verdict&) const = default;
};

/// A cockpit without a screen, or in demonstration, never listens.
bool doitSAbonner(const ReglageNtfy& reglage, bool headless, bool demo);

/// The request that opens the stream; nothing when the setting is refused. `depuis` asks for what was
/// published since. A token that holds a control character is left out.
std::optional<RequeteHTTP> requete(const ReglageNtfy& reglage, const std::optional<std::string>& depuis);

/// The catch-up to ask for; nothing when there was no sign of life to count from.
std::optional<std::string> depuis(std::optional<Secondes> secondesDepuisDernierSigne);

/// The wait before that attempt.
Secondes recul(int tentative);

/// `dejaRepris`: the request that failed was itself the plain retry of a refused one.
Verdict verdict(const EchecNtfy& echec, int tentative, bool dejaRepris);

/// In French, for the operator.
std::string_view phrase(ErreurReseau code);

}  // namespace AbonnementNtfy
}  // namespace tarnavelle
