#include "Voix/RealtimeRequest.hpp"

#include <gtest/gtest.h>

namespace tarnavelle {
namespace {

namespace R = RealtimeRequest;
using enum DialecteRealtime;

const ContratVoix contrat{.instructions = "Dis « oui ».",
                          .outils = {{.nom = "essai",
                                      .description = "Un essai.",
                                      .parametres = {{"a", ParamVoix::Genre::booleen, "Oui ou non", true},
                                                     {"b", ParamVoix::Genre::texte, "Un mot", false}}}}};

Json lire(const char* texte) {
  const auto document = LectureJSON::valeur(texte);
  EXPECT_TRUE(document) << texte;
  return document.value_or(Json());
}

/// The session in its envelope.
Json session(const char* texte) { return {{"type", "session.update"}, {"session", lire(texte)}}; }

TEST(RealtimeRequest, SessionsEntieres) {
  EXPECT_EQ(R::sessionUpdate("marin", openai, contrat, "high"), session(R"({
      "type": "realtime", "instructions": "Dis « oui ».", "tool_choice": "auto", "output_modalities": ["audio"],
      "tools": [{"type": "function", "name": "essai", "description": "Un essai.", "parameters": {
        "type": "object", "required": ["a"], "properties": {
          "a": {"type": "boolean", "description": "Oui ou non"}, "b": {"type": "string", "description": "Un mot"}}}}],
      "audio": {"input": {"format": {"type": "audio/pcm", "rate": 24000}, "turn_detection": null},
                "output": {"format": {"type": "audio/pcm", "rate": 24000}, "voice": "marin"}}})"));
  EXPECT_EQ(R::sessionUpdate("eve", xai, {.instructions = "", .outils = {}}), session(R"({
      "instructions": "", "tools": [], "tool_choice": "auto", "voice": "eve", "turn_detection": null,
      "audio": {"input": {"format": {"type": "audio/pcm", "rate": 24000}},
                "output": {"format": {"type": "audio/pcm", "rate": 24000}}}})"));
  EXPECT_EQ(R::sessionUpdateConversation("marin", openai, {.instructions = "", .outils = {}},
                                         ProfilEcouteVoix::pour(true), "low"),
            session(R"({
      "type": "realtime", "instructions": "", "tools": [], "tool_choice": "auto", "max_output_tokens": 2400,
      "output_modalities": ["audio"], "truncation": {"type": "retention_ratio", "retention_ratio": 0.8},
      "audio": {"input": {"format": {"type": "audio/pcm", "rate": 24000},
                          "transcription": {"model": "gpt-4o-mini-transcribe"},
                          "turn_detection": {"type": "server_vad", "threshold": 0.55, "prefix_padding_ms": 300,
                            "silence_duration_ms": 900, "create_response": true, "interrupt_response": true}},
                "output": {"format": {"type": "audio/pcm", "rate": 24000}, "voice": "marin"}}})"));
  EXPECT_EQ(R::sessionUpdateConversation("eve", xai, {.instructions = "", .outils = {}},
                                         ProfilEcouteVoix::pour(false), "low"),
            session(R"({
      "instructions": "", "tools": [], "tool_choice": "auto", "max_output_tokens": 2400, "voice": "eve",
      "reasoning": {"effort": "low"},
      "turn_detection": {"type": "server_vad", "threshold": 0.65, "prefix_padding_ms": 300,
        "silence_duration_ms": 1400, "create_response": true, "interrupt_response": false},
      "audio": {"input": {"format": {"type": "audio/pcm", "rate": 24000}},
                "output": {"format": {"type": "audio/pcm", "rate": 24000}}}})"));
}

TEST(RealtimeRequest, EvenementsEcrits) {
  const ProfilEcouteVoix profil{29, 700, true, "essai"};
  const std::string detection =
      R"("turn_detection":{"create_response":true,"interrupt_response":false,"prefix_padding_ms":300,)"
      R"("silence_duration_ms":700,"threshold":0.29,"type":"server_vad"})";
  const struct {
    Json objet;
    std::optional<std::string> texte;
  } cas[] = {
      {R::majDetectionDeTour(profil, openai),
       R"({"session":{"audio":{"input":{)" + detection + R"(}},"type":"realtime"},"type":"session.update"})"},
      {R::majDetectionDeTour(profil, xai), R"({"session":{)" + detection + R"(},"type":"session.update"})"},
      {R::majInstructions("é\n", openai),
       R"({"session":{"instructions":"é\n","type":"realtime"},"type":"session.update"})"},
      {R::majInstructions("", xai), R"({"session":{"instructions":""},"type":"session.update"})"},
      {R::audioAppend("QUI/+w=="), R"({"audio":"QUI/+w==","type":"input_audio_buffer.append"})"},
      {R::audioCommit(), R"({"type":"input_audio_buffer.commit"})"},
      {R::responseCreate(), R"({"type":"response.create"})"},
      {R::annulerReponse(), R"({"type":"response.cancel"})"},
      {R::functionCallOutput({.callID = "c1", .output = R"({"ok":true})"}),
       R"({"item":{"call_id":"c1","output":"{\"ok\":true}","type":"function_call_output"},)"
       R"("type":"conversation.item.create"})"},
      {R::annonceSysteme("Merlin a fini."),
       R"({"item":{"content":[{"text":"Merlin a fini.","type":"input_text"}],"role":"system","type":"message"},)"
       R"("type":"conversation.item.create"})"},
      {R::supprimerItem("i1"), R"({"item_id":"i1","type":"conversation.item.delete"})"},
      {R::annonceSysteme("\xFF"), {}},
  };
  for (const auto& c : cas) EXPECT_EQ(R::encoded(c.objet), c.texte);
}

TEST(RealtimeRequest, SeuilsExacts) {
  for (int centiemes = -5; centiemes <= 100; ++centiemes) {
    auto attendu = std::to_string(std::max(centiemes, 0) + 1000);  // "1029" for 29
    attendu = attendu.substr(1, 1) + "." + attendu.substr(2);
    if (centiemes == 100) attendu = "1.00";
    if (attendu.ends_with('0')) attendu.pop_back();
    const ProfilEcouteVoix profil{centiemes, 0, false, ""};
    EXPECT_EQ(R::encoded(profil.detectionDeTourJSON()["threshold"]), attendu) << centiemes;
  }
}

TEST(RealtimeRequest, PhraseDeNommage) {
  const std::string finale = ", JAMAIS par le nom du CLI (« claude », « codex », « grok »)";
  EXPECT_EQ(R::phraseDeNommage({}),
            "Les agents ouverts portent des noms PROPRES (Merlin, Milan, Harfang…) : nomme-les toujours par ce "
            "nom-là" +
                finale + ".");
  EXPECT_EQ(R::phraseDeNommage({"Merlin", "Milan", "Merlin"}),
            "Les agents ouverts s'appellent Merlin, Milan. Nomme-les TOUJOURS par ces noms-là" + finale +
                " ni par un numéro.");
}

}  // namespace
}  // namespace tarnavelle
