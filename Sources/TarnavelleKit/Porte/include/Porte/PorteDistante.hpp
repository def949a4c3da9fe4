// The control door of another Mac, reached through a shell on that Mac: the two command lines that the
// shell runs, which commands may be relayed, and what comes back. How a line gets there and its output
// returns, and how long an endpoint stays fresh, are the cockpit's business. Safe from any thread.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Porte/CommandeControle.hpp"
#include "Porte/PorteControle.hpp"
#include "Porte/ReponsePorte.hpp"

namespace tarnavelle {

namespace ComptesRendusVoix {
/// An agent as the voice speaks of it.
struct EtatAgent {
  std::string nom;
  std::string etat;
  bool operator==(const EtatAgent&) const = default;
};
}  // namespace ComptesRendusVoix

/// The remote cockpit's stage as last reported.
struct PlateauMac {
  /// Where an agent lives. All but the name may be empty.
  struct AncrageAgent {
    std::string nom;
    std::string scene;
    std::string tmux;  ///< session name
    std::string hote;
    bool operator==(const AncrageAgent&) const = default;
  };

  std::string scene;  ///< the visible one, empty when unknown
  std::vector<std::string> autresScenes;
  std::vector<ComptesRendusVoix::EtatAgent> agents;  ///< open over there, then elsewhere
  std::vector<std::string> crew;                     ///< the cockpit's windows
  std::vector<AncrageAgent> ancrages;
  std::string dossier;  ///< the working folder

  bool operator==(const PlateauMac&) const = default;

  /// The stage in a few French sentences, for the voice's instructions; empty when there is nothing to tell.
  std::string recit() const;
};

namespace PorteDistante {

/// Prints the remote endpoint file; nothing when it is missing.
const std::string& commandeLecture();

/// The endpoint in what `commandeLecture` printed: port in range, token not blank, a blank host being
/// "127.0.0.1". Nothing otherwise.
std::optional<EndpointPorte> analyserEndpoint(std::string_view texte);

/// The body to post for a command that may be relayed; nothing for any other, or when a text is not
/// well-formed UTF-8.
std::optional<std::string> corpsAction(const CommandeControle& commande);

/// Posts a body to the remote door and prints its reply; nothing after five seconds. The line holds the token,
/// and so do the arguments of curl and of what carries the line: both machines' process lists show it.
std::string commandeAction(const EndpointPorte& endpoint, std::string_view corps);

/// The reply in what `commandeAction` printed.
std::optional<ReponsePorte> analyserReponse(std::string_view texte);

/// The stage in a reply to "etat"; nothing when it is a refusal or has nothing to tell.
std::optional<PlateauMac> plateau(const ReponsePorte& depuisReponse);

/// Whether the endpoint must be read (again). An unknown age asks for it, an age equal to the bound does
/// not; a command that failed must, for the remote cockpit may have restarted elsewhere.
bool doitDecouvrir(const std::optional<EndpointPorte>& cache,
                   std::optional<std::chrono::duration<double>> ageSecondes, bool apresEchec,
                   std::chrono::duration<double> fraicheurMax);

}  // namespace PorteDistante
}  // namespace tarnavelle
