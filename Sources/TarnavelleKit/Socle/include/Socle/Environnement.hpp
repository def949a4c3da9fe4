// Environment variables: a table of them, and where a reader finds them. A table is a plain value: one thread
// at a time. The process's own are read safely as long as no thread changes them.
#pragma once

#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <utility>

namespace tarnavelle {

/// Variable names and values.
using Environnement = std::map<std::string, std::string, std::less<>>;

/// The variables that a function may read: a table, or the process's own as they are at each reading.
class Variables {
 public:
  Variables(Environnement table) : table_(std::move(table)) {}
  Variables(std::initializer_list<Environnement::value_type> table) : table_(table) {}
  static Variables duProcessus() { return Variables(std::nullopt); }

  /// The bytes of the value, as they are; nothing when the variable is unset.
  std::optional<std::string> octets(const char* nom) const;

  /// The value as text: invalid bytes replaced by U+FFFD, white space and newlines trimmed. Nothing when
  /// the variable is unset or nothing remains.
  std::optional<std::string> texte(const char* nom) const;

 private:
  explicit Variables(std::nullopt_t) {}

  std::optional<Environnement> table_;  ///< absent: the process's own
};

}  // namespace tarnavelle
