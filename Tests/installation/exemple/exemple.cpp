// A word with each family of the kit: what it prints takes the archives, the networking library included.
#include <iostream>
#include <nlohmann/json.hpp>

#include "Agents/AgentCLI.hpp"
#include "Appel/AppelPorte.hpp"
#include "HermesReseau/EcouteNtfy.hpp"
#include "Porte/PorteMCP.hpp"
#include "Socle/Texte.hpp"
#include "VoixReseau/TransportWebSocketRealtime.hpp"

namespace T = tarnavelle;

int main() {
  T::AppelPorte appel;
  const T::Coffre coffre =
      appel.posterPorte({{"action", "etat"}}, {.url = "https://127.0.0.1:1/action", .jeton = ""});
  T::EcouteNtfy oreille({});
  const bool fermee =
      oreille.ecouter({}, {.headless = true}) == T::OreilleNtfy::Fin{T::OreilleNtfy::Fin::fermee{}};
  std::cout << VERSION_TROUVEE << ' ' << T::versionTarnavelle << '\n'
            << T::Texte::minuscules("ÉTAT") << ' '
            << T::PorteMCP::outils().front().at("name").get<std::string>() << '\n'
            << T::AgentCLI::depuisPhrase("ouvre claude ici")->titre << ' ' << coffre.statut << '\n'
            << fermee << ' ' << (T::TransportWebSocketRealtime::creer("wss://un hôte/", "clé") == nullptr)
            << '\n';
}
