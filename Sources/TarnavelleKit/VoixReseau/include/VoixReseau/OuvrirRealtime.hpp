// The opening of a voice session over the network, or in words why there is none. From any thread; never waits.
#pragma once

#include <memory>
#include <string>

#include "Socle/Resultat.hpp"
#include "Voix/RealtimeClient.hpp"

namespace tarnavelle {

struct AccesRealtime {
  std::string model;  ///< empty: the provider's own
  std::string apiKey;
};

/// A session with the provider of `reglages`, which begins to connect at once; or why the voice is unavailable,
/// in French. Never null.
Resultat<std::shared_ptr<RealtimeClient>, std::string> ouvrirRealtime(const AccesRealtime& acces,
                                                                      RealtimeClient::Reglages reglages);

}  // namespace tarnavelle
