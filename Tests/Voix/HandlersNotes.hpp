// Handlers of a voice session that write down what they are told, a line for each call.
#pragma once

#include <functional>
#include <string>

#include "Voix/RealtimeClient.hpp"

namespace tarnavelle::essai {

inline RealtimeClient::Handlers handlersVers(const std::function<void(const std::string&)>& noter) {
  return {
      .onReady = [=] { noter("pret"); },
      .onToolCall = [=](const auto& a) { noter("appel " + a.name + a.argsJSON + a.callID); },
      .onAudioDelta = [=](const Octets& son) { noter("son " + std::to_string(son.size())); },
      .onDone = [=] { noter("fini"); },
      .onError = [=](const std::string& texte) { noter("erreur " + texte); },
      .onUsage = [=](const auto& tour) { noter("usage " + std::to_string(tour.entreeCachee)); },
      .onItemCree = [=](const std::string& id) { noter("item " + id); },
      .onFermeture = [=](const auto& raison) { noter("fermeture " + raison.value_or("")); },
      .onTranscriptionEntree = [=](const std::string& texte) { noter("dit " + texte); },
      .onEcouteEntree = [=](bool parle) { noter(parle ? "parle" : "se tait"); },
      .onTrame = [=](std::string_view) { noter("trame"); },
      .onRefus =
          [=](const RefusRealtime& r) {
            noter("refus " + std::to_string(r.http) + "," + r.code + "," + r.genre + "," + r.message);
          },
  };
}

}  // namespace tarnavelle::essai
