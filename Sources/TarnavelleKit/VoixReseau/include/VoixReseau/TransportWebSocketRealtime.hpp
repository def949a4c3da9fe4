// The WebSocket that a voice session travels on. Waits a minute for the connection; the key travels in the
// "Authorization" header and appears nowhere else. The thread rule is the channel's.
#pragma once

#include <memory>
#include <string>

#include "Reseau/WebSocket.hpp"

namespace tarnavelle {

class TransportWebSocketRealtime final : public WebSocket {
 public:
  /// Null when the address is malformed, or the key empty or not fit for a header: nothing is sent then.
  static std::shared_ptr<TransportWebSocketRealtime> creer(std::string url, const std::string& apiKey);

 private:
  using WebSocket::WebSocket;
};

}  // namespace tarnavelle
