#include "Voix/RealtimeClient.hpp"

#include <nlohmann/json.hpp>
#include <utility>
#include <variant>

#include "Socle/Inoffensif.hpp"
#include "Socle/Selon.hpp"
#include "Socle/Texte.hpp"
#include "Voix/RealtimeFrame.hpp"

namespace tarnavelle {
namespace {

/// "90", or "1,5" when it is not whole.
std::string secondes(std::chrono::milliseconds duree) {
  std::string texte = std::to_string(duree.count() / 1000);
  if (const auto reste = duree.count() % 1000; reste > 0) {
    texte += "," + std::to_string(1000 + reste).substr(1);
    texte.erase(texte.find_last_not_of('0') + 1);
  }
  return texte;
}

constexpr std::string_view gardes = "\n\t";  ///< what the service's texts may hold beside characters

}  // namespace

std::shared_ptr<RealtimeClient> RealtimeClient::creer(std::shared_ptr<TransportRealtime> transport,
                                                      Reglages reglages, const Minuterie& minuterie) {
  const std::shared_ptr<RealtimeClient> client(new RealtimeClient(std::move(transport), std::move(reglages)));
  client->borner(minuterie);
  client->brancher();
  return client;
}

RealtimeClient::RealtimeClient(std::shared_ptr<TransportRealtime> transport, Reglages reglages)
    : transport_(std::move(transport)), reglages_(std::move(reglages)) {}

RealtimeClient::~RealtimeClient() { close(); }

std::string RealtimeClient::lisible(std::string_view texte) const {
  return Inoffensif::montrable(Texte::sansSecret(texte, reglages_.secret), gardes);
}

RefusRealtime RealtimeClient::lisible(const RefusRealtime& refus) const {
  return {.http = refus.http,
          .code = lisible(refus.code),
          .genre = lisible(refus.genre),
          .message = lisible(refus.message)};
}

void RealtimeClient::brancher() {
  // A client that its owner has let go is not to be kept, nor touched.
  const auto siVivant = [faible = weak_from_this()](auto action) {
    return [faible, action](auto... arguments) {
      if (const auto client = faible.lock()) action(*client, arguments...);
    };
  };
  transport_->demarrer({
      .surTexte = siVivant([](RealtimeClient& client, std::string_view texte) { client.recevoir(texte); }),
      .surErreurEnvoi = siVivant([](RealtimeClient& client, const std::string& description) {
        client.appeler(client.reglages_.handlers.onError, client.lisible(description));
      }),
      .surRefus = siVivant([](RealtimeClient& client, int statut, std::string_view corps) {
        client.appeler(client.reglages_.handlers.onRefus,
                       client.lisible(RefusRealtime::deConnexion(statut, corps)));
      }),
      .surChute = siVivant([](RealtimeClient& client, const std::string& description) {
        client.appeler(client.reglages_.handlers.onError, client.lisible(description));
        client.appeler(client.reglages_.handlers.onFermeture, client.lisible(description));
      }),
  });
}

void RealtimeClient::borner(const Minuterie& minuterie) {
  if (!reglages_.cap) return;
  auto annuler = minuterie(*reglages_.cap, [faible = weak_from_this()] {
    if (const auto client = faible.lock()) client->plafonner();
  });
  if (!annuler) {
    appeler(reglages_.handlers.onError, "la durée de la session ne peut pas être bornée");
    return close();
  }
  std::unique_lock garde(verrou_);
  if (!fermee_) {
    annulerCap_ = std::move(annuler);
    return;
  }
  garde.unlock();
  annuler();
}

void RealtimeClient::plafonner() {
  appeler(reglages_.handlers.onError, "plafond de session (" + secondes(*reglages_.cap) + " s) atteint");
  appeler(reglages_.handlers.onPlafond);
  close();
}

bool RealtimeClient::fermee() const {
  const std::lock_guard garde(verrou_);
  return fermee_;
}

template <class Handler, class... Arguments>
void RealtimeClient::appeler(const Handler& handler, Arguments&&... arguments) const {
  if (handler && !fermee()) handler(std::forward<Arguments>(arguments)...);
}

void RealtimeClient::recevoir(std::string_view texte) {
  if (fermee()) return;
  const Handlers& h = reglages_.handlers;
  LectureTrame lue = LectureTrame::lire(texte, reglages_.provider.dialecte);
  if (lue.itemCree) appeler(h.onItemCree, std::move(*lue.itemCree));
  if (lue.transcription && !lue.transcriptionEnCours)
    appeler(h.onTranscriptionEntree, Inoffensif::epurer(*lue.transcription, gardes));
  if (lue.ecoute) appeler(h.onEcouteEntree, *lue.ecoute);
  if (!texte.empty()) appeler(h.onTrame, texte);
  if (lue.reponseCommence) appeler(h.onReponse);
  if (lue.parole) appeler(h.onParole, Inoffensif::epurer(*lue.parole, gardes));
  if (lue.refus) appeler(h.onRefus, lisible(*lue.refus));
  std::visit(Selon{
                 [&](RealtimeFrame::sessionCreated&) { configurer(); },
                 [&](RealtimeFrame::sessionUpdated&) { preparer(); },
                 [&](RealtimeFrame::audioDelta& son) {
                   appeler(h.onSonDe, std::move(lue.itemSon));
                   appeler(h.onAudioDelta, std::move(son.octets));
                 },
                 [&](RealtimeFrame::toolCall& appel) { appeler(h.onToolCall, std::move(appel)); },
                 [&](RealtimeFrame::error& erreur) { appeler(h.onError, lisible(erreur.texte)); },
                 [&](RealtimeFrame::responseDone&) {
                   if (lue.usage) appeler(h.onUsage, *lue.usage);
                   appeler(h.onDone);
                 },
                 [](RealtimeFrame::message&) {},
                 [](RealtimeFrame::other&) {},
             },
             lue.trame.cas);
}

void RealtimeClient::configurer() {
  const Reglages& r = reglages_;
  const DialecteRealtime dialecte = r.provider.dialecte;
  envoyer(r.profil
              ? RealtimeRequest::sessionUpdateConversation(r.voice, dialecte, r.contrat, *r.profil, r.effort)
              : RealtimeRequest::sessionUpdate(r.voice, dialecte, r.contrat, r.effort));
}

void RealtimeClient::preparer() {
  {
    const std::lock_guard garde(verrou_);
    prete_ = true;
  }
  appeler(reglages_.handlers.onReady);
}

void RealtimeClient::appendAudio(std::string base64) {
  if (estPrete()) envoyer(RealtimeRequest::audioAppend(std::move(base64)));
}

void RealtimeClient::commit() {
  envoyer(RealtimeRequest::audioCommit());
  demanderReponse();
}

void RealtimeClient::demanderReponse() { envoyer(RealtimeRequest::responseCreate()); }

void RealtimeClient::sendToolOutput(const RealtimeRequest::SortieAppel& sortie) {
  envoyer(RealtimeRequest::functionCallOutput(sortie));
}

void RealtimeClient::sendToolResult(const RealtimeRequest::SortieAppel& sortie) {
  sendToolOutput(sortie);
  demanderReponse();
}

void RealtimeClient::envoyer(const Json& objet) {
  if (fermee()) return;
  if (auto texte = RealtimeRequest::encoded(objet)) transport_->envoyer(std::move(*texte));
}

bool RealtimeClient::estPrete() const {
  const std::lock_guard garde(verrou_);
  return prete_ && !fermee_;
}

void RealtimeClient::close() {
  std::function<void()> annulerCap;
  {
    const std::lock_guard garde(verrou_);
    if (std::exchange(fermee_, true)) return;
    annulerCap = std::move(annulerCap_);
  }
  if (annulerCap) annulerCap();
  transport_->fermer();
}

}  // namespace tarnavelle
