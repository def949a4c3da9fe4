// A request as its maker hands it to whoever sends it, and what a status says: for those who know what to ask
// and nothing of the network. `Reseau` holds the clients. Plain values, for any thread while
// none changes them.
#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace tarnavelle {

struct EnteteHTTP {
  std::string nom;
  std::string valeur;  ///< without control characters: clients send nothing otherwise

  bool operator==(const EnteteHTTP&) const = default;
};

/// Whether a status says that the request was carried out.
constexpr bool estUnSucces(int statut) { return statut >= 200 && statut <= 299; }

struct RequeteHTTP {
  std::string methode;
  std::string url;                  ///< absolute
  std::vector<EnteteHTTP> entetes;  ///< beside those that the client writes: Host, Content-Length
  std::string corps;
  /// Longest silence of the peer, for a client that has no bounds of its own.
  std::chrono::milliseconds delai = std::chrono::seconds(60);

  bool operator==(const RequeteHTTP&) const = default;
};

}  // namespace tarnavelle
