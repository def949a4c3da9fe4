// One voice session with a realtime service: configures it when the service announces it, sends the
// operator's sound, turns the service's events into calls of its owner's handlers, and ends with `close`
// or at its cap. Whether to begin another is ReconnexionRealtime's decision; tool calls are kept in order
// by a FileAppelsRealtime that the owner holds.
//
// Every function may be called from any thread, from inside a handler too, and none blocks. Handlers come
// one at a time on the transport's thread (the cap's message on the timer's); none begins once `close` has
// returned, but one that runs meanwhile is not waited for: what handlers capture, they keep alive.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "Socle/JSON.hpp"
#include "Socle/Octets.hpp"
#include "Voix/ContratVoix.hpp"
#include "Voix/FileAppelsRealtime.hpp"
#include "Voix/Minuterie.hpp"
#include "Voix/ProfilEcouteVoix.hpp"
#include "Voix/RealtimeProvider.hpp"
#include "Voix/RealtimeRequest.hpp"
#include "Voix/RefusRealtime.hpp"
#include "Voix/TransportRealtime.hpp"
#include "Voix/UsageRealtime.hpp"

namespace tarnavelle {

class RealtimeClient : public std::enable_shared_from_this<RealtimeClient> {
 public:
  static constexpr std::chrono::seconds capSeconds{90};  ///< the usual cap of a session

  /// Each may be left empty. In the texts for the operator (transcripts, errors, refusals), control characters
  /// other than line feed and tab, and invisible formatting, are written out.
  struct Handlers {
    std::function<void()> onReady{};  ///< the session is configured; again after each partial update
    std::function<void(FileAppelsRealtime::Appel)> onToolCall{};
    std::function<void(Octets)> onAudioDelta{};     ///< a chunk of the model's voice, 24 kHz PCM16
    std::function<void()> onDone{};                 ///< a response is finished
    std::function<void(std::string)> onError{};     ///< told by the service, the transport or the cap
    std::function<void(TourRealtime)> onUsage{};    ///< what a finished response consumed, before its `onDone`
    std::function<void(std::string)> onItemCree{};  ///< id of a conversation item
    std::function<void(std::optional<std::string>)> onFermeture{};  ///< the connection dropped, and why
    std::function<void(std::string)> onTranscriptionEntree{};       ///< what the operator said, once and whole
    std::function<void(bool)> onEcouteEntree{};                     ///< the operator is heard to start or stop
    /// Every frame as the service wrote it, nothing written out; the view lasts for the call.
    std::function<void(std::string_view)> onTrame{};
    /// What a refusal says beside its message, just before the `onError` that tells that; or why a response
    /// failed, before its `onDone`. ReconnexionRealtime::explicationRefus says whether it ends the session.
    std::function<void(RefusRealtime)> onRefus{};
    std::function<void()> onReponse{};  ///< a response begins
    std::function<void(std::string)>
        onSonDe{};  ///< id of the item whose voice the `onAudioDelta` that follows brings
    std::function<void(std::string)> onParole{};  ///< what the model said, once and whole
    std::function<void()> onPlafond{};            ///< after the cap's message; the session closes
  };

  struct Reglages {
    RealtimeProvider provider{};
    std::string voice{};
    ContratVoix contrat{};
    Handlers handlers{};
    std::optional<std::chrono::milliseconds> cap{};  ///< longest session; absent: none
    std::optional<ProfilEcouteVoix> profil{};        ///< a hands-free conversation; absent: push-to-talk
    std::optional<std::string> effort{};             ///< of reasoning
    std::string secret{};                            ///< struck out of the service's words
  };

  /// A session that begins at once; handlers may be called before this returns.
  static std::shared_ptr<RealtimeClient> creer(std::shared_ptr<TransportRealtime> transport, Reglages reglages,
                                               const Minuterie& minuterie = minuterieReelle);

  /// Closes.
  ~RealtimeClient();
  RealtimeClient(const RealtimeClient&) = delete;
  RealtimeClient& operator=(const RealtimeClient&) = delete;

  /// A chunk of the operator's sound, in base64. Dropped before the session is ready.
  void appendAudio(std::string base64);
  /// The end of the operator's turn, in push-to-talk.
  void commit();
  void demanderReponse();
  /// What a tool returned, while other calls of the same turn still wait.
  void sendToolOutput(const RealtimeRequest::SortieAppel& sortie);
  /// What the last tool of a turn returned; the model is asked to go on.
  void sendToolResult(const RealtimeRequest::SortieAppel& sortie);
  /// Any client event, as RealtimeRequest::encoded writes it; dropped when it cannot be written.
  void envoyer(const Json& objet);

  /// Configured, and not closed.
  bool estPrete() const;

  /// Ends the session; nothing is sent any more.
  void close();

 private:
  RealtimeClient(std::shared_ptr<TransportRealtime> transport, Reglages reglages);
  void brancher();
  void borner(const Minuterie& minuterie);
  void recevoir(std::string_view texte);
  /// The service's words, as the operator may read them on a terminal.
  std::string lisible(std::string_view texte) const;
  RefusRealtime lisible(const RefusRealtime& refus) const;
  void configurer();
  void preparer();
  void plafonner();
  bool fermee() const;
  template <class Handler, class... Arguments>
  void appeler(const Handler& handler, Arguments&&... arguments) const;

  const std::shared_ptr<TransportRealtime> transport_;
  const Reglages reglages_;
  mutable std::mutex verrou_;  ///< never held across a send or a handler
  bool prete_ = false;
  bool fermee_ = false;
  std::function<void()> annulerCap_;
};

}  // namespace tarnavelle
