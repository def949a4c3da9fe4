// A board's door over HTTP/1.1: loopback only, POST /action with a bearer token, one ReponsePorte per request.
// A page of a browser is no caller: the Host must be one of ours (DNS rebinding), and no Origin is accepted. It
// checks and hands over; what a call does is the caller's. Connections are kept alive, each has its
// thread, their number, their patience and the size of a request are bounded.
// The server may be used from any thread; the handler is called from several at once.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Accueil/Jeton.hpp"
#include "Porte/ReponsePorte.hpp"
#include "Socle/LectureJSON.hpp"
#include "Verbes/Appelant.hpp"

namespace tarnavelle::Plateau {

/// Faults on request, for those who test a caller of the door. They strike the calls that the door
/// accepts, after the verb is carried out; refusals (401, 404, 400…) stay as they are.
struct Pannes {
  std::chrono::milliseconds retard{0};  ///< wait before the answer
  bool couper = false;                  ///< announce the whole body, send half of it, close
  std::optional<unsigned> statut;       ///< instead of 200
  std::optional<std::string> corps;     ///< instead of the reply, as it is
};

struct ReglagesServeur {
  std::uint16_t port = 0;  ///< 0 for any free one
  Pannes pannes;
  std::size_t corpsMax = 1024 * 1024;          ///< bytes of a request's body
  std::size_t connexionsMax = 128;             ///< further ones wait to be accepted
  std::chrono::milliseconds patience{30'000};  ///< for a request's head, for its body, for the peer to read
  /// Whether that port of another machine's loopback leads to this one, by a way that the board made itself:
  /// its callers name it. Asked on any thread.
  std::function<bool(std::uint16_t port)> renvoie = [](std::uint16_t) { return false; };
  /// Told, on any thread, once a call that the door accepted has been answered, or could not be.
  std::function<void()> repondu = [] {};
};

class ServeurHTTP {
 public:
  using Traitement = std::function<ReponsePorte(const Json& corps, const Appelant&)>;

  /// A server that listens, and answers once `servir` is called; nothing when the port cannot be had.
  static std::unique_ptr<ServeurHTTP> ouvrir(ReglagesServeur reglages, Trousseau trousseau,
                                             Traitement traitement);

  /// Closes every connection, then waits for the handlers under way.
  ~ServeurHTTP();
  ServeurHTTP(const ServeurHTTP&) = delete;
  ServeurHTTP& operator=(const ServeurHTTP&) = delete;

  /// Once.
  void servir();
  std::uint16_t port() const;

 private:
  class Accueil;
  explicit ServeurHTTP(std::unique_ptr<Accueil> accueil);
  std::unique_ptr<Accueil> accueil_;
};

}  // namespace tarnavelle::Plateau
