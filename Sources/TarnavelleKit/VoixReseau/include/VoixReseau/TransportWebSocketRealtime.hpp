// The voice session's channel over a WebSocket, and the opening of a session over it. Waits a minute for
// the connection; the key travels in the "Authorization" header and appears nowhere else.
#pragma once

#include <memory>
#include <string>

#include "Reseau/WebSocket.hpp"
#include "Voix/RealtimeClient.hpp"
#include "Voix/TransportRealtime.hpp"

namespace tarnavelle {

class TransportWebSocketRealtime : public TransportRealtime {
 public:
  /// Null when the address is malformed, or the key empty or not fit for a header: nothing is sent then.
  /// `bornes` gives the delays; its address, headers and secret are not read.
  static std::shared_ptr<TransportWebSocketRealtime> creer(std::string url, const std::string& apiKey,
                                                           ReglageWebSocket bornes = {});

  void demarrer(RappelsTransportRealtime rappels) override;
  void envoyer(std::string texte) override;
  void fermer() override;

 private:
  explicit TransportWebSocketRealtime(std::unique_ptr<WebSocket> socket);

  const std::unique_ptr<WebSocket> socket_;
};

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
