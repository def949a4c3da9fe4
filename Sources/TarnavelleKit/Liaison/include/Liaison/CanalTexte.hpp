// A duplex channel of text messages, as those who converse over it see it: begin, send, close. What a message
// says is their business; how it travels is that of whoever brings one (WebSocket, or a test's world).
//
// Every function may be called from any thread, from inside a callback too, and none blocks. Callbacks come
// one at a time on a thread of the channel's own (on the caller's of `demarrer` when there is no thread to be
// had); what they capture must outlive it, for `fermer` does not wait for one that runs.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace tarnavelle {

struct RappelsCanal {
  /// A message. The view lasts for the call.
  std::function<void(std::string_view)> surTexte{};
  /// A message was refused, with the reason; the channel stays open. Told once until there is room.
  std::function<void(std::string)> surErreurEnvoi{};
  /// The peer declined to open, with that HTTP status and body; `surChute` follows. May be left empty.
  std::function<void(int, std::string_view)> surRefus{};
  /// The channel could not be opened or was lost, with the reason. Told once, and nothing after it.
  std::function<void(std::string)> surChute{};
};

class CanalTexte {
 public:
  virtual ~CanalTexte() = default;

  /// Begins to connect, once.
  virtual void demarrer(RappelsCanal rappels) = 0;

  /// Sends a message of UTF-8 text; before the channel is open it waits. Messages leave in order.
  virtual void envoyer(std::string texte) = 0;

  /// Ends the channel. What has not left yet is dropped, and no callback begins any more.
  virtual void fermer() = 0;
};

}  // namespace tarnavelle
