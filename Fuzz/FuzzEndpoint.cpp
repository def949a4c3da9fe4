// The endpoint file that the cockpit writes.
#include <nlohmann/json.hpp>

#include "Cible.hpp"
#include "Porte/PorteControle.hpp"
#include "Socle/EcritureJSON.hpp"

using namespace tarnavelle;

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  const auto endpoint = EndpointPorte::lire(vue(octets, taille));
  if (endpoint) exiger(EndpointPorte::lire(EcritureJSON::compacte(endpoint->json()).value()) == endpoint);
  return 0;
}
