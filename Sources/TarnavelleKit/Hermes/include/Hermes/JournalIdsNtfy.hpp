// Which notices were shown already: a bounded memory of their identifiers, so that one delivered live and
// again by a catch-up is shown once. Forgets in the order of first arrival. A plain value, for one
// thread at a time.
#pragma once

#include <cstddef>
#include <deque>
#include <set>
#include <string>

namespace tarnavelle {

class JournalIdsNtfy {
 public:
  /// Remembers that many identifiers, one at least.
  explicit JournalIdsNtfy(int capacite);

  /// Whether this identifier is seen for the first time, as far as memory goes; an empty one never is.
  bool neuf(const std::string& id);

  std::size_t compte() const { return ordre_.size(); }
  const std::deque<std::string>& ids() const { return ordre_; }  ///< oldest first

  bool operator==(const JournalIdsNtfy&) const = default;

 private:
  std::size_t capacite_;
  std::deque<std::string> ordre_;  ///< oldest first
  std::set<std::string> vus_;      ///< the same
};

}  // namespace tarnavelle
