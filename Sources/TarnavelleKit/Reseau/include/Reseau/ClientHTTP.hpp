// An HTTP/1.1 client for one caller that waits on each reply: http and https, connections kept between
// calls while the address stays the same, every wait bounded. Redirects are not followed, proxies of
// the environment are not used, nothing is retried once it may have been received.
// One client serves one thread at a time.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "Liaison/ErreurReseau.hpp"
#include "Liaison/RequeteHTTP.hpp"
#include "Socle/Resultat.hpp"

namespace tarnavelle {

struct ReponseHTTP {
  int statut = 0;
  std::string corps;  ///< complete: a body cut short is no reply
};

struct BornesHTTP {
  std::chrono::milliseconds attente;  ///< how long the caller waits, whatever the peer does
  std::chrono::milliseconds vie;      ///< how long the request itself may live
  std::size_t corpsMax;               ///< bytes of body; a larger one is no reply
};

/// Why there is no reply.
struct EchecHTTP {
  /// What is no network's doing.
  enum class Faute {
    url,      ///< unusable: malformed, another scheme, a port that is none
    entete,   ///< a value that holds a control character
    reponse,  ///< not HTTP, or larger than allowed
  };
  std::variant<Faute, ErreurReseau> cause;
  bool partie = true;  ///< the peer may have received the request, or may yet

  bool operator==(const EchecHTTP&) const = default;
};

class ClientHTTP {
 public:
  ClientHTTP();
  ~ClientHTTP();
  ClientHTTP(const ClientHTTP&) = delete;
  ClientHTTP& operator=(const ClientHTTP&) = delete;

  /// The reply, or why there is none: unusable URL, a header value that holds a control character (nothing is
  /// sent then), no connection, certificate refused, reply malformed, cut or too large, time out.
  /// A request that times out is not cancelled: it goes on alone until `vie` is over or the process exits, its
  /// reply unread.
  Resultat<ReponseHTTP, EchecHTTP> envoyer(const RequeteHTTP& requete, const BornesHTTP& bornes);

 private:
  class Garde;
  std::unique_ptr<Garde> garde_;
};

}  // namespace tarnavelle
