// What the cockpit asks of the remote agent's gateway: a chat turn, and the answer to a request for approval.
// Sending them is TourHermes's business and the cockpit's. Safe from any thread.
#pragma once

#include <array>
#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Hermes/EvenementGateway.hpp"
#include "Liaison/RequeteHTTP.hpp"
#include "Socle/JSON.hpp"

namespace tarnavelle::RequeteGateway {

// Routes are relative to the gateway's base URL.
inline constexpr std::string_view routeChat = "chat/completions";
inline constexpr std::string_view enteteCle = "X-Hermes-Session-Key";
inline constexpr std::string_view enteteSession = "X-Hermes-Session-Id";
inline constexpr std::string_view modeleParDefaut = "hermes";
inline constexpr std::string_view cleModeleLocale = "HERMES_GATEWAY_MODEL";  ///< overrides the announced model
inline constexpr std::string_view typeVerdict = "run_approval_response";
/// Where an approval's answer may go, in the order to try.
inline constexpr std::array<std::string_view, 3> routesVerdict = {"approvals/respond", "approvals",
                                                                  "approval_response"};
/// Longest silence of a stream: an agent at work, or waiting for an approval, has nothing to say.
inline constexpr std::chrono::minutes silenceTolere{15};

struct Corps {
  std::string_view message;
  std::string_view modele;
  bool stream = true;
};
Json corps(const Corps& corps);

/// A key or session that holds a control character is left out.
std::vector<EnteteHTTP> entetes(const std::optional<std::string>& cle,
                                const std::optional<std::string>& sessionId);

struct Modele {
  std::optional<std::string> annonce;    ///< by the gateway
  std::optional<std::string> surcharge;  ///< configured here; wins
};
std::string modele(const Modele& modele);

Json corpsVerdict(std::string_view approvalId, DecisionApprobation decision);

/// One turn of a conversation.
struct Tour {
  std::string base;  ///< the gateway's base URL
  std::string message;
  std::string modele;
  std::optional<std::string> cle = {};
  std::optional<std::string> sessionId = {};
};
RequeteHTTP chat(const Tour& tour);

}  // namespace tarnavelle::RequeteGateway
