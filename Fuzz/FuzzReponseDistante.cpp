// What a remote shell prints: the endpoint file, or a reply of the remote door.
#include <nlohmann/json.hpp>

#include "Cible.hpp"
#include "Porte/PorteDistante.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/Texte.hpp"

using namespace tarnavelle;

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  const auto texte = vue(octets, taille);
  if (const auto endpoint = PorteDistante::analyserEndpoint(texte)) {
    exiger(Texte::rognerBlancs(endpoint->host) == endpoint->host && !endpoint->host.empty());
    exiger(endpoint->port >= 1 && endpoint->port <= 65535);
    exiger(!Texte::rognerBlancs(endpoint->token).empty());
    exiger(PorteDistante::analyserEndpoint(EcritureJSON::compacte(endpoint->json()).value()) == endpoint);
  }
  const auto reponse = PorteDistante::analyserReponse(texte);
  const auto plateau = reponse ? PorteDistante::plateau(*reponse) : std::nullopt;
  if (plateau) {
    exiger(reponse->ok && !plateau->recit().empty());
    exiger(plateau->ancrages.size() == plateau->agents.size());
    for (std::size_t i = 0; i < plateau->agents.size(); ++i)
      exiger(!plateau->agents[i].nom.empty() && plateau->ancrages[i].nom == plateau->agents[i].nom);
  }
  return 0;
}
