// Where the cockpit listens for Hermès: an ntfy server, a topic and a token. Judges the setting and
// derives the stream's address; AbonnementNtfy makes the request. Where the three texts are stored is
// their owner's business. A plain value, for any thread while none changes it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tarnavelle {

struct ReglageNtfy {
  /// Under which names the three texts are stored and exchanged.
  static constexpr std::string_view cleServeur = "HERMES_NTFY_SERVEUR";
  static constexpr std::string_view cleTopic = "HERMES_NTFY_TOPIC";
  static constexpr std::string_view cleJeton = "HERMES_NTFY_JETON";

  static constexpr std::size_t longueurMinimale = 22;  ///< characters of a topic
  static constexpr std::string_view admis = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_";

  std::string serveur = "https://ntfy.sh";
  std::string topic = {};  ///< the channel's secret too: whoever knows it listens and speaks
  std::string jeton = {};  ///< for a server that asks for one; travels in a header only

  bool operator==(const ReglageNtfy&) const = default;

  std::string_view serveurNet() const;  ///< without blanks around it nor trailing "/"
  std::string_view topicNet() const;    ///< without blanks around it

  /// Why the setting cannot be used, in French for the operator; nothing when it can.
  std::optional<std::string> refus() const;
  bool pret() const { return !refus(); }

  /// The topic's stream of server-sent events; nothing when the setting is refused.
  std::optional<std::string> urlFlux() const;

  /// The topic as it may be shown: its first characters, when it is long enough, and its length.
  std::string topicMasque() const;

  /// Whether a URL's host is this very machine, whatever its case. Nothing is not.
  static bool estLoopback(std::optional<std::string_view> hote);
};

}  // namespace tarnavelle
