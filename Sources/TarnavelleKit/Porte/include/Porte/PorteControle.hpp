// Where the control door listens: the endpoint file that the cockpit writes, and the choice between
// it and the environment. Every call looks again, so a cockpit that restarts on another port is found at
// once; all that a thread remembers is the last address that proved complete. The door's server and its
// calls are elsewhere. Safe from any thread.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "Socle/Environnement.hpp"
#include "Socle/JSON.hpp"

namespace tarnavelle {

/// The record of the endpoint file. All four keys are required in the file.
struct EndpointPorte {
  std::string host;       ///< name or address the door listens on
  std::int64_t pid = 0;   ///< process of the cockpit, for diagnosis only
  std::int64_t port = 0;  ///< TCP port, as read: its range is not checked here
  std::string token;      ///< bearer token

  bool operator==(const EndpointPorte&) const = default;

  /// Nothing when a key is missing or mistyped, or the text is unreadable; other keys are ignored.
  static std::optional<EndpointPorte> lire(std::string_view texte);
  Json json() const;

  /// The door's action endpoint, always plain http.
  std::string url() const;
};

/// What the caller of a door that cannot be found is told.
inline constexpr std::string_view porteIntrouvable =
    "Porte introuvable : l'app Tarnavelle tourne-t-elle, la porte de commande est-elle ouverte ?";

/// The header by which a caller may say how many seconds it can wait for the reply.
inline constexpr const char* entetePatience = "X-Tarnavelle-Patience";

/// A door that can be called. The token may be empty.
struct PorteResolue {
  std::string url;  ///< absolute URL of the door's action endpoint
  std::string jeton;
  bool operator==(const PorteResolue&) const = default;
};

/// How the door was looked for, for whoever says why it is this one, or why there is none.
struct RecherchePorte {
  std::optional<PorteResolue> porte;
  std::optional<std::string> variable;    ///< TARNAVELLE_CONTROL_URL, when it is set
  std::optional<EndpointPorte> endpoint;  ///< the endpoint file's record, when it was read

  /// Whether the variable decides: the endpoint file is then not read.
  bool parVariable() const { return porte && !endpoint; }
};

namespace PorteControle {

/// The door's base URL: without the "/action" that may end it.
std::string_view urlBase(std::string_view url);

/// The user's Application Support sub-folder "Tarnavelle"; located, never created. `environnement`
/// gives HOME where the platform has no such folder of its own.
std::filesystem::path dossierSupport(const Variables& environnement);

/// The endpoint file in that folder.
std::filesystem::path cheminEndpoint(const Variables& environnement);

/// The same from a home folder, for another machine or for a reader.
std::string cheminEndpointUsuel();

/// The file's record; nothing when it is missing, unreadable or larger than any real one.
std::optional<EndpointPorte> lireEndpoint(const std::filesystem::path& chemin);

/// TARNAVELLE_CONTROL_URL and TARNAVELLE_CONTROL_TOKEN when the first is a complete URL, else the
/// endpoint file, else no door.
RecherchePorte chercherPorte(const Variables& environnement);

/// The door alone.
std::optional<PorteResolue> resoudrePorte(const Variables& environnement);

}  // namespace PorteControle
}  // namespace tarnavelle
