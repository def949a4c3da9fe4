#include "Voix/FileAppelsRealtime.hpp"

#include <utility>

namespace tarnavelle {

std::optional<FileAppelsRealtime::Appel> FileAppelsRealtime::enfiler(Appel appel) {
  if (courant) {
    attente.push_back(std::move(appel));
    return std::nullopt;
  }
  courant = std::move(appel);
  return courant;
}

std::optional<FileAppelsRealtime::Appel> FileAppelsRealtime::terminer() {
  if (!courant) return std::nullopt;
  courant.reset();
  ++executes;
  if (attente.empty()) return std::nullopt;
  courant = std::move(attente.front());
  attente.pop_front();
  return courant;
}

void FileAppelsRealtime::vider() {
  courant.reset();
  attente.clear();
}

std::vector<std::string> FileAppelsRealtime::callIDsEnVol() const {
  std::vector<std::string> ids;
  if (courant) ids.push_back(courant->callID);
  for (const Appel& appel : attente) ids.push_back(appel.callID);
  return ids;
}

}  // namespace tarnavelle
