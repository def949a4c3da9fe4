#include "Voix/RealtimeRequest.hpp"

#include <nlohmann/json.hpp>
#include <set>
#include <utility>

#include "Socle/EcritureJSON.hpp"
#include "Socle/Texte.hpp"
#include "Voix/RealtimeAudio.hpp"

namespace tarnavelle::RealtimeRequest {
namespace {

Json formatAudio() { return {{"type", "audio/pcm"}, {"rate", RealtimeAudio::sampleRate}}; }

Json enveloppe(Json session) { return {{"type", "session.update"}, {"session", std::move(session)}}; }

/// A partial update: one dialect wants the session's type in each of them.
Json miseAJour(Json session, DialecteRealtime dialecte) {
  switch (dialecte) {
    case DialecteRealtime::openai: session["type"] = "realtime"; break;
    case DialecteRealtime::xai: break;
  }
  return enveloppe(std::move(session));
}

/// Both kinds of session; one without a profile is push-to-talk.
Json session(std::string_view voice, DialecteRealtime dialecte, const ContratVoix& contrat,
             const ProfilEcouteVoix* profil, const std::optional<std::string>& effort) {
  const Json detection = profil ? profil->detectionDeTourJSON() : Json();
  Json s = {{"instructions", contrat.instructions}, {"tools", contrat.outilsJSON()}, {"tool_choice", "auto"}};
  if (profil) s["max_output_tokens"] = maxTokensSortieConversation;
  switch (dialecte) {
    case DialecteRealtime::openai: {
      Json entree = {{"format", formatAudio()}, {"turn_detection", detection}};
      if (profil) {
        entree["transcription"] = {{"model", modeleTranscriptionEntree}};
        s["truncation"] = {{"type", "retention_ratio"}, {"retention_ratio", ratioRetentionConversation}};
      }
      s["type"] = "realtime";
      s["output_modalities"] = Json::array({"audio"});
      s["audio"] = {{"input", std::move(entree)}, {"output", {{"format", formatAudio()}, {"voice", voice}}}};
      break;
    }
    case DialecteRealtime::xai:
      s["voice"] = voice;
      s["turn_detection"] = detection;
      if (effort) s["reasoning"] = {{"effort", *effort}};
      s["audio"] = {{"input", {{"format", formatAudio()}}}, {"output", {{"format", formatAudio()}}}};
      break;
  }
  return enveloppe(std::move(s));
}

void reparer(Json& valeur) {
  if (auto* texte = valeur.get_ptr<std::string*>())
    *texte = Texte::reparer(*texte);
  else if (valeur.is_structured())
    for (Json& element : valeur) reparer(element);
}

}  // namespace

Json sessionUpdate(std::string_view voice, DialecteRealtime dialecte, const ContratVoix& contrat,
                   const std::optional<std::string>& effort) {
  return session(voice, dialecte, contrat, nullptr, effort);
}

Json sessionUpdateConversation(std::string_view voice, DialecteRealtime dialecte, const ContratVoix& contrat,
                               const ProfilEcouteVoix& profil, const std::optional<std::string>& effort) {
  return session(voice, dialecte, contrat, &profil, effort);
}

Json majDetectionDeTour(const ProfilEcouteVoix& profil, DialecteRealtime dialecte) {
  Json detection = {{"turn_detection", profil.detectionDeTourJSON()}};
  switch (dialecte) {
    case DialecteRealtime::openai: return miseAJour({{"audio", {{"input", std::move(detection)}}}}, dialecte);
    case DialecteRealtime::xai: return miseAJour(std::move(detection), dialecte);
  }
  return {};
}

Json majInstructions(std::string_view instructions, DialecteRealtime dialecte) {
  return miseAJour({{"instructions", instructions}}, dialecte);
}

std::string phraseDeNommage(const std::vector<std::string>& sessions) {
  std::set<std::string_view> vus;
  std::vector<std::string_view> noms;
  for (const std::string& nom : sessions)
    if (vus.insert(nom).second) noms.push_back(nom);
  if (noms.empty())
    return "Les agents ouverts portent des noms PROPRES (Merlin, Milan, Harfang…) : nomme-les toujours par ce "
           "nom-là, JAMAIS par le nom du CLI (« claude », « codex », « grok »).";
  return "Les agents ouverts s'appellent " + Texte::joindre(noms, ", ") +
         ". Nomme-les TOUJOURS par ces noms-là, JAMAIS par le nom du CLI (« claude », « codex », « grok ») "
         "ni par un numéro.";
}

Json audioAppend(std::string base64) {
  return {{"type", "input_audio_buffer.append"}, {"audio", std::move(base64)}};
}

Json audioCommit() { return {{"type", "input_audio_buffer.commit"}}; }

Json responseCreate() { return {{"type", "response.create"}}; }

Json annulerReponse() { return {{"type", "response.cancel"}}; }

Json functionCallOutput(const SortieAppel& sortie) {
  return {{"type", "conversation.item.create"},
          {"item", {{"type", "function_call_output"}, {"call_id", sortie.callID}, {"output", sortie.output}}}};
}

Json annonceSysteme(std::string_view texte) {
  return {{"type", "conversation.item.create"},
          {"item",
           {{"type", "message"},
            {"role", "system"},
            {"content", Json::array({{{"type", "input_text"}, {"text", texte}}})}}}};
}

Json supprimerItem(std::string_view id) { return {{"type", "conversation.item.delete"}, {"item_id", id}}; }

Json tronquerItem(std::string_view id, std::chrono::milliseconds entendu) {
  return {{"type", "conversation.item.truncate"},
          {"item_id", id},
          {"content_index", 0},
          {"audio_end_ms", entendu.count()}};
}

Json viderEntree() { return {{"type", "input_audio_buffer.clear"}}; }

std::optional<std::string> encoded(const Json& objet) {
  if (auto texte = EcritureJSON::compacte(objet)) return texte;
  Json reparee = objet;
  reparer(reparee);
  return EcritureJSON::compacte(reparee);
}

}  // namespace tarnavelle::RealtimeRequest
