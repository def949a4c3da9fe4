// A transport that goes nowhere, and handlers of a voice session: both write down what they are told.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Voix/RealtimeClient.hpp"

namespace tarnavelle::essai {

using Lignes = std::vector<std::string>;

struct TransportFactice : TransportRealtime {
  void demarrer(RappelsTransportRealtime r) override { rappels = std::move(r); }
  void envoyer(std::string texte) override { envoyes.push_back(std::move(texte)); }
  void fermer() override { ++fermetures; }

  RappelsTransportRealtime rappels;
  Lignes envoyes;
  int fermetures = 0;
};

/// A line for each call.
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
