// One call of the control door: the body posted with the bearer token, what came back. What the reply
// says is read elsewhere. Serves one thread at a time.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Porte/PorteControle.hpp"
#include "Reseau/ClientHTTP.hpp"
#include "Socle/JSON.hpp"

namespace tarnavelle {

/// What came back from the door: the body, absent when there was no complete HTTP response, and the
/// status, -1 then.
struct Coffre {
  std::optional<std::string> data;
  int statut = -1;
};

class AppelPorte {
 public:
  /// The agent waits at most 30 s; the request itself may live 60 s. Replies up to 256 MiB.
  static constexpr BornesHTTP bornes{
      .attente = std::chrono::seconds(30), .vie = std::chrono::seconds(60), .corpsMax = 256 * 1024 * 1024};

  explicit AppelPorte(BornesHTTP bornesAppel = bornes) : bornes_(bornesAppel) {}

  /// The request that a call is, for who sends it otherwise.
  static RequeteHTTP requete(std::string corps, const PorteResolue& porte,
                             const std::vector<EnteteHTTP>& aussi = {});

  /// Posts a body once, with those headers beside its own. Without a complete response the door may have acted
  /// all the same: `echec` tells whether any of the request had left, and a call given up after its wait is
  /// carried on without the caller.
  Coffre posterPorte(const Json& corps, const PorteResolue& porte, const std::vector<EnteteHTTP>& aussi = {});

  /// Why the last call has no body; absent when it has one.
  const std::optional<EchecHTTP>& echec() const { return echec_; }

 private:
  ClientHTTP client_;
  BornesHTTP bornes_;
  std::optional<EchecHTTP> echec_;
};

}  // namespace tarnavelle
