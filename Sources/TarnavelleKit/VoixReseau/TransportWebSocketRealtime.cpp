#include "VoixReseau/TransportWebSocketRealtime.hpp"

#include <utility>

namespace tarnavelle {

std::shared_ptr<TransportWebSocketRealtime> TransportWebSocketRealtime::creer(std::string url,
                                                                              const std::string& apiKey) {
  if (apiKey.empty()) return nullptr;
  auto etat =
      preparer({.url = std::move(url), .entetes = {{"Authorization", "Bearer " + apiKey}}, .secret = apiKey});
  if (!etat) return nullptr;
  return std::shared_ptr<TransportWebSocketRealtime>(new TransportWebSocketRealtime(std::move(etat)));
}

}  // namespace tarnavelle
