#include "Hermes/JournalIdsNtfy.hpp"

#include <algorithm>

namespace tarnavelle {

JournalIdsNtfy::JournalIdsNtfy(int capacite) : capacite_(static_cast<std::size_t>(std::max(capacite, 1))) {}

bool JournalIdsNtfy::neuf(const std::string& id) {
  if (id.empty() || !vus_.insert(id).second) return false;
  ordre_.push_back(id);
  if (ordre_.size() > capacite_) {
    vus_.erase(ordre_.front());
    ordre_.pop_front();
  }
  return true;
}

}  // namespace tarnavelle
