// Many HTTP/1.1 requests at once, carried by one thread, which begins with the first: for a caller that has
// other things to do than wait. What is sent, kept and retried is as of ClientHTTP. From any thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "Liaison/RequeteHTTP.hpp"
#include "Reseau/ClientHTTP.hpp"

namespace tarnavelle {

class FaisceauHTTP {
 public:
  using Rendu = Resultat<ReponseHTTP, EchecHTTP>;
  using Fini = std::function<void(Rendu)>;
  using Numero = std::uint64_t;

  /// `battement` is called every `cadence`, from the thread, as long as a request is under way.
  explicit FaisceauHTTP(std::chrono::milliseconds cadence = {}, std::function<void()> battement = {});
  /// What is under way ends unheard.
  ~FaisceauHTTP();
  FaisceauHTTP(const FaisceauHTTP&) = delete;
  FaisceauHTTP& operator=(const FaisceauHTTP&) = delete;

  /// Sends, on the caller's thread when a kept connection leads there. `fini` is called once, from the bundle's
  /// thread, which it holds up (from the caller's when no thread is to be had). Past `bornes.attente` the
  /// request is lost to its caller, and goes on unread until `bornes.vie`.
  /// With `reveil`, a descriptor, the caller itself waits for the reply until there is something to be read
  /// there: the thread is then spared two wakings, and `fini` may come before this returns.
  Numero lancer(RequeteHTTP requete, const BornesHTTP& bornes, Fini fini, std::optional<int> reveil = {});

  /// Closes the request's connection, for the peer to see. `fini` is not called any more, unless it was about
  /// to be.
  void abandonner(Numero numero);

 private:
  class Moteur;
  std::unique_ptr<Moteur> moteur_;
};

}  // namespace tarnavelle
