// A WebSocket client (RFC 6455) for text messages, over ws or wss with the server's certificate verified.
// What the messages mean is its user's business. Nothing is compressed, no redirect is followed, no proxy
// of the environment is used. The thread rule is the channel's.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "Liaison/CanalTexte.hpp"
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

/// Messages come as text or as binary that is UTF-8; any other binary is dropped. Of a refusal, the body is as
/// much of it as came, a few kilobytes at most, the secret struck out.
class WebSocket : public CanalTexte {
 public:
  static constexpr std::size_t messageMax = 16 << 20;    ///< bytes of a message; a longer one is a drop
  static constexpr std::size_t enAttenteMax = 16 << 20;  ///< bytes not yet handed to the network

  /// Null for a malformed URL, another scheme, or a header value that holds a control character.
  static std::unique_ptr<WebSocket> creer(ReglageWebSocket reglage);

  /// Closes.
  ~WebSocket() override;
  WebSocket(const WebSocket&) = delete;
  WebSocket& operator=(const WebSocket&) = delete;

  void demarrer(RappelsCanal rappels) override;
  void envoyer(std::string texte) override;

  /// With code 1001 and no reason.
  void fermer() override;

 protected:
  struct Etat;
  /// Null as `creer`.
  static std::shared_ptr<Etat> preparer(ReglageWebSocket reglage);
  explicit WebSocket(std::shared_ptr<Etat> etat);

 private:
  const std::shared_ptr<Etat> etat_;
};

}  // namespace tarnavelle
