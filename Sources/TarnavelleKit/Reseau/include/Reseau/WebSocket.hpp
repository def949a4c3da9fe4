// A WebSocket client (RFC 6455) for text messages, over ws or wss with the server's certificate verified.
// What the messages mean is its user's business. Nothing is compressed, no redirect is followed, no proxy
// of the environment is used.
//
// Every function may be called from any thread, from inside a callback too, and none blocks. Callbacks
// come one at a time on a thread of the connection's own; what they capture must outlive it, for `fermer`
// does not wait for one that runs.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Liaison/RequeteHTTP.hpp"

namespace tarnavelle {

struct ReglageWebSocket {
  std::string url;                    ///< ws or wss
  std::vector<EnteteHTTP> entetes{};  ///< beside those of the protocol
  std::string secret{};               ///< struck out of the server's words when they are quoted
  std::chrono::milliseconds ouverture = std::chrono::seconds(60);  ///< from name look-up to handshake
  /// Silence after which the server is lost. A server that has nothing to say is asked halfway.
  std::chrono::milliseconds silence = std::chrono::seconds(60);
  std::chrono::milliseconds adieu = std::chrono::seconds(2);  ///< longest wait for the server's side of a close
};

struct RappelsWebSocket {
  /// A message, text or UTF-8 binary; any other binary is dropped. The view lasts for the call.
  std::function<void(std::string_view)> surTexte{};
  /// A message was refused, with the reason; the connection stays open. Told once until there is room.
  std::function<void(std::string)> surErreurEnvoi{};
  /// The server declined to open, with that HTTP status; the body is as much of it as came, a few kilobytes
  /// at most, the secret struck out. `surChute` follows.
  std::function<void(int, std::string_view)> surRefus{};
  /// The connection could not be made or was lost, with the reason. Told once, and nothing after it.
  std::function<void(std::string)> surChute{};
};

class WebSocket {
 public:
  static constexpr std::size_t messageMax = 16 << 20;    ///< bytes of a message; a longer one is a drop
  static constexpr std::size_t enAttenteMax = 16 << 20;  ///< bytes not yet handed to the network

  /// Null for a malformed URL, another scheme, or a header value that holds a control character.
  static std::unique_ptr<WebSocket> creer(ReglageWebSocket reglage);

  /// Closes.
  ~WebSocket();
  WebSocket(const WebSocket&) = delete;
  WebSocket& operator=(const WebSocket&) = delete;

  /// Begins to connect, once.
  void demarrer(RappelsWebSocket rappels);

  /// Sends a message of UTF-8 text; before the connection is open it waits. Messages leave in order.
  void envoyer(std::string texte);

  /// Ends the connection with code 1001 and no reason. What has not left yet is dropped, and no callback
  /// begins any more.
  void fermer();

 private:
  struct Etat;
  explicit WebSocket(std::shared_ptr<Etat> etat);
  std::shared_ptr<Etat> etat_;
};

}  // namespace tarnavelle
