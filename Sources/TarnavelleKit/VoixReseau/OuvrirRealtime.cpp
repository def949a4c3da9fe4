#include "VoixReseau/OuvrirRealtime.hpp"

#include <utility>

#include "Socle/Texte.hpp"
#include "VoixReseau/TransportWebSocketRealtime.hpp"

namespace tarnavelle {

Resultat<std::shared_ptr<RealtimeClient>, std::string> ouvrirRealtime(const AccesRealtime& acces,
                                                                      RealtimeClient::Reglages reglages) {
  if (acces.apiKey.empty()) return Sinon{"la clé du fournisseur manque"};
  if (Texte::porteControle(acces.apiKey))
    return Sinon{"la clé du fournisseur contient un caractère de contrôle : elle n'est pas envoyée"};
  const RealtimeProvider& provider = reglages.provider;
  const auto url = provider.url(acces.model.empty() ? provider.modeleParDefaut : acces.model);
  auto transport = url ? TransportWebSocketRealtime::creer(*url, acces.apiKey) : nullptr;
  if (!transport) return Sinon{"l'adresse du service vocal est illisible"};
  reglages.secret = acces.apiKey;
  return RealtimeClient::creer(std::move(transport), std::move(reglages));
}

}  // namespace tarnavelle
