// The contract of a voice session: the instructions given to the model, in French, and the tools offered
// to it. Each text stands once, as a whole: the instructions in ContratVoix.cpp, the tools in
// ContratVoixOutils.cpp. How a session carries them is RealtimeRequest's business. Pure functions, safe from
// any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Porte/OutilVoix.hpp"
#include "Voix/MondeVoix.hpp"
#include "Voix/TonVoix.hpp"

namespace tarnavelle {

struct ContratVoix {
  std::string instructions;
  std::vector<OutilVoix> outils;

  bool operator==(const ContratVoix&) const = default;

  /// The function tools, in order; an empty list when there are none.
  Json outilsJSON() const;

  /// The contract of a conversation. `micOuvert`: the microphone stays open, else a key is held to speak.
  static ContratVoix tarnavelleConversation(const MondeVoix& monde, const TonVoix& ton, bool micOuvert);

  /// Instructions that begin with `prefixeStableTarnavelle` and end with the board, so that the service
  /// may keep what it has read of them from one session to the next.
  static std::string instructionsConversation(const MondeVoix& monde, const TonVoix& ton, bool micOuvert);

  /// Instructions that tell the board in their midst.
  static std::string instructionsTarnavelleV2(const MondeVoix& monde, const TonVoix& ton, bool micOuvert);

  /// The same bytes for the same tone and microphone, whatever the board.
  static std::string prefixeStableTarnavelle(const TonVoix& ton = {}, bool micOuvert = false);

  static std::string_view regleMicroOuvert();
  static std::string_view reglePressionTouche();

  /// The tools of a conversation.
  static const std::vector<OutilVoix>& outilsTarnavelleV2();
  /// The tools of the perch, the board of the agents on other machines.
  static const std::vector<OutilVoix>& outilsPerchoir();
  /// The tools by which another Mac's board is steered: verbs that its door takes from afar.
  static const std::vector<OutilVoix>& outilsPlateauMac();
};

}  // namespace tarnavelle
