// The notices that Hermès publishes, out of the payloads of the topic's stream. Never fails: a payload that
// tells nothing usable is `rien`. Safe from any thread.
// Protocol: ntfy, "Subscribe via API", JSON message format.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "Socle/Date.hpp"

namespace tarnavelle {

struct LectureNtfy;

struct MessageNtfy {
  std::string id;  ///< never empty
  Date::Instant date;
  std::string topic;                 ///< may be empty
  std::optional<std::string> titre;  ///< not empty
  std::string texte;                 ///< the title when the notice has no text of its own

  bool operator==(const MessageNtfy&) const = default;

  /// Reads one payload. Whatever names another topic than `topicAttendu`, when there is one, is `rien`.
  static LectureNtfy lire(std::string_view ligne, std::optional<std::string_view> topicAttendu);

  /// When the server sent it, for a payload of any kind; nothing when it does not say.
  static std::optional<Date::Instant> heure(std::string_view ligne);
};

struct LectureNtfy {
  struct message {
    MessageNtfy message;
    bool operator==(const struct message&) const = default;
  };
  /// A sign of life.
  struct vivant {
    bool operator==(const vivant&) const = default;
  };
  struct rien {
    bool operator==(const rien&) const = default;
  };

  std::variant<message, vivant, rien> cas;

  bool operator==(const LectureNtfy&) const = default;
};

}  // namespace tarnavelle
