// The events that a voice session sends: how it is configured, in the dialect of its service, and what
// it says during a conversation. The client sends them and decides when. Pure functions, safe from any thread.
// Protocol: OpenAI Realtime API, client events.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Socle/JSON.hpp"
#include "Voix/ContratVoix.hpp"
#include "Voix/ProfilEcouteVoix.hpp"
#include "Voix/RealtimeProvider.hpp"

namespace tarnavelle::RealtimeRequest {

/// Transcribes the operator's speech in the sessions of the `openai` dialect.
inline constexpr std::string_view modeleTranscriptionEntree = "gpt-4o-mini-transcribe";
inline constexpr int maxTokensSortieConversation = 2400;
/// The part of a conversation that is kept when it is cut short.
inline constexpr double ratioRetentionConversation = 0.8;

/// The session of push-to-talk commands: no turn detection, the client commits the audio. `effort`, a
/// level of reasoning, exists in the `xai` dialect only.
Json sessionUpdate(std::string_view voice, DialecteRealtime dialecte, const ContratVoix& contrat,
                   const std::optional<std::string>& effort = {});

/// The session of a hands-free conversation.
Json sessionUpdateConversation(std::string_view voice, DialecteRealtime dialecte, const ContratVoix& contrat,
                               const ProfilEcouteVoix& profil, const std::optional<std::string>& effort = {});

/// Changes nothing but how the session listens.
Json majDetectionDeTour(const ProfilEcouteVoix& profil, DialecteRealtime dialecte);

/// Changes nothing but the instructions.
Json majInstructions(std::string_view instructions, DialecteRealtime dialecte);

/// The sentence of the instructions that tells how agents are named; repeated names count once.
std::string phraseDeNommage(const std::vector<std::string>& sessions);

/// A chunk of 24 kHz PCM, already in base64. Taken by value: moved in, the text is not copied.
Json audioAppend(std::string base64);
Json audioCommit();
Json responseCreate();
Json annulerReponse();

struct SortieAppel {
  std::string_view callID;
  std::string_view output;
};
Json functionCallOutput(const SortieAppel& sortie);

/// A note to the model that is not the operator's.
Json annonceSysteme(std::string_view texte);

Json supprimerItem(std::string_view id);

/// Of what the model has said in that item, the operator has heard so much.
Json tronquerItem(std::string_view id, std::chrono::milliseconds entendu);

/// Forgets the sound that no `audioCommit` has ended.
Json viderEntree();

/// The text to send: one compact line. Each byte of a text that is not well-formed UTF-8 leaves as U+FFFD: a
/// terminal's screen, quoted in instructions or a tool's output, may hold any. Nothing when a key is not
/// well-formed, or a number not finite.
std::optional<std::string> encoded(const Json& objet);

}  // namespace tarnavelle::RealtimeRequest
