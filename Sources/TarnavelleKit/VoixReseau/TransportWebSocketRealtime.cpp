#include "VoixReseau/TransportWebSocketRealtime.hpp"

#include <utility>

#include "Socle/Texte.hpp"

namespace tarnavelle {

std::shared_ptr<TransportWebSocketRealtime> TransportWebSocketRealtime::creer(std::string url,
                                                                              const std::string& apiKey,
                                                                              ReglageWebSocket bornes) {
  if (apiKey.empty()) return nullptr;
  bornes.url = std::move(url);
  bornes.entetes = {{"Authorization", "Bearer " + apiKey}};
  bornes.secret = apiKey;
  auto socket = WebSocket::creer(std::move(bornes));
  if (!socket) return nullptr;
  return std::shared_ptr<TransportWebSocketRealtime>(new TransportWebSocketRealtime(std::move(socket)));
}

TransportWebSocketRealtime::TransportWebSocketRealtime(std::unique_ptr<WebSocket> socket)
    : socket_(std::move(socket)) {}

void TransportWebSocketRealtime::demarrer(RappelsTransportRealtime rappels) {
  socket_->demarrer({.surTexte = std::move(rappels.surTexte),
                     .surErreurEnvoi = std::move(rappels.surErreurEnvoi),
                     .surRefus = std::move(rappels.surRefus),
                     .surChute = std::move(rappels.surChute)});
}

void TransportWebSocketRealtime::envoyer(std::string texte) { socket_->envoyer(std::move(texte)); }

void TransportWebSocketRealtime::fermer() { socket_->fermer(); }

OuvertureRealtime ouvrirRealtime(const AccesRealtime& acces, RealtimeClient::Reglages reglages) {
  if (acces.apiKey.empty()) return {.client = nullptr, .refus = "la clé du fournisseur manque"};
  if (Texte::porteControle(acces.apiKey))
    return {.client = nullptr,
            .refus = "la clé du fournisseur contient un caractère de contrôle : elle n'est pas envoyée"};
  const RealtimeProvider& provider = reglages.provider;
  const auto url = provider.url(acces.model.empty() ? provider.modeleParDefaut : acces.model);
  auto transport = url ? TransportWebSocketRealtime::creer(*url, acces.apiKey) : nullptr;
  if (!transport) return {.client = nullptr, .refus = "l'adresse du service vocal est illisible"};
  reglages.secret = acces.apiKey;
  return {.client = RealtimeClient::creer(std::move(transport), std::move(reglages)), .refus = {}};
}

}  // namespace tarnavelle
