// The duplex text channel under a voice session. TransportWebSocketRealtime is the real one.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace tarnavelle {

/// What a channel tells, one call at a time, on a thread of its own.
struct RappelsTransportRealtime {
  std::function<void(std::string_view)> surTexte;   ///< a text frame; the view lasts for the call
  std::function<void(std::string)> surErreurEnvoi;  ///< a send failed, with its description; the channel stays
  /// The service declined to open it, with that HTTP status and body; `surChute` follows. May be left empty.
  std::function<void(int, std::string_view)> surRefus{};
  std::function<void(std::string)> surChute;  ///< the channel is lost, with its description; the last call
};

/// Every function may be called from any thread, from inside a callback too, and none blocks.
class TransportRealtime {
 public:
  virtual ~TransportRealtime() = default;

  virtual void demarrer(RappelsTransportRealtime rappels) = 0;  ///< once
  virtual void envoyer(std::string texte) = 0;                  ///< one text frame; none leaves after `fermer`
  virtual void fermer() = 0;
};

}  // namespace tarnavelle
