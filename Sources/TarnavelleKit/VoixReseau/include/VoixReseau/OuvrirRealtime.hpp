// The opening of a voice session over the network, or in words why there is none. From any thread; never waits.
#pragma once

#include <memory>
#include <string>

#include "Voix/RealtimeClient.hpp"

namespace tarnavelle {

struct AccesRealtime {
  std::string model;  ///< empty: the provider's own
  std::string apiKey;
};

struct OuvertureRealtime {
  std::shared_ptr<RealtimeClient> client;
  std::string refus;  ///< when there is no client: why the voice is unavailable, in French
};

/// A session with the provider of `reglages`, which begins to connect at once.
OuvertureRealtime ouvrirRealtime(const AccesRealtime& acces, RealtimeClient::Reglages reglages);

}  // namespace tarnavelle
