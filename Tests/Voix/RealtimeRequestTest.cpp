#include "Voix/RealtimeRequest.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace tarnavelle {
namespace {

namespace R = RealtimeRequest;
using enum DialecteRealtime;

// An open conversation is push-to-talk and more.
TEST(RealtimeRequest, SessionsEntieres) {
  const ContratVoix vide, contrat{.instructions = "Dis « oui ».",
                                  .outils = {{.nom = "essai",
                                              .description = "Un essai.",
                                              .parametres = {{"a", ParamVoix::Genre::booleen, "Oui ?", true},
                                                             {"b", ParamVoix::Genre::texte, "Un mot"}}}}};
  Json attendue = Json::parse(R"({"type": "session.update", "session": {
      "type": "realtime", "instructions": "Dis « oui ».", "tool_choice": "auto", "output_modalities": ["audio"],
      "tools": [{"type": "function", "name": "essai", "description": "Un essai.", "parameters": {
        "type": "object", "required": ["a"], "properties": {
          "a": {"type": "boolean", "description": "Oui ?"}, "b": {"type": "string", "description": "Un mot"}}}}],
      "audio": {"input": {"format": {"type": "audio/pcm", "rate": 24000}, "turn_detection": null},
                "output": {"format": {"type": "audio/pcm", "rate": 24000}, "voice": "marin"}}}})");
  EXPECT_EQ(R::sessionUpdate("marin", openai, contrat, "high"), attendue);
  attendue.merge_patch(Json::parse(R"({"session": {"max_output_tokens": 2400,
      "truncation": {"type": "retention_ratio", "retention_ratio": 0.8},
      "audio": {"input": {"transcription": {"model": "gpt-4o-mini-transcribe"},
        "turn_detection": {"type": "server_vad", "threshold": 0.55, "prefix_padding_ms": 300,
          "silence_duration_ms": 900, "create_response": true, "interrupt_response": true}}}}})"));
  EXPECT_EQ(R::sessionUpdateConversation("marin", openai, contrat, ProfilEcouteVoix::pour(true), "low"),
            attendue);

  attendue = Json::parse(R"({"type": "session.update", "session": {
      "instructions": "", "tools": [], "tool_choice": "auto", "voice": "eve", "turn_detection": null,
      "audio": {"input": {"format": {"type": "audio/pcm", "rate": 24000}},
                "output": {"format": {"type": "audio/pcm", "rate": 24000}}}}})");
  EXPECT_EQ(R::sessionUpdate("eve", xai, vide), attendue);
  attendue.merge_patch(Json::parse(R"({"session": {"max_output_tokens": 2400, "reasoning": {"effort": "low"},
      "turn_detection": {"type": "server_vad", "threshold": 0.65, "prefix_padding_ms": 300,
        "silence_duration_ms": 1400, "create_response": true, "interrupt_response": false}}})"));
  EXPECT_EQ(R::sessionUpdateConversation("eve", xai, vide, ProfilEcouteVoix::pour(false), "low"), attendue);
}

TEST(RealtimeRequest, EvenementsEcrits) {
  const ProfilEcouteVoix profil{35, 700, true, "essai"};  // 35 * 0.01 is not 0.35
  const std::string detection =
      R"("turn_detection":{"create_response":true,"interrupt_response":false,"prefix_padding_ms":300,)"
      R"("silence_duration_ms":700,"threshold":0.35,"type":"server_vad"})";
  const std::pair<Json, std::optional<std::string>> cas[] = {
      {R::majDetectionDeTour(profil, openai),
       R"({"session":{"audio":{"input":{)" + detection + R"(}},"type":"realtime"},"type":"session.update"})"},
      {R::majDetectionDeTour(profil, xai), R"({"session":{)" + detection + R"(},"type":"session.update"})"},
      {R::majInstructions("é\n", openai),
       R"({"session":{"instructions":"é\n","type":"realtime"},"type":"session.update"})"},
      {R::annulerReponse(), R"({"type":"response.cancel"})"},
      {R::annonceSysteme("Merlin a fini."),
       R"({"item":{"content":[{"text":"Merlin a fini.","type":"input_text"}],"role":"system","type":"message"},)"
       R"("type":"conversation.item.create"})"},
      {R::supprimerItem("i1"), R"({"item_id":"i1","type":"conversation.item.delete"})"},
      {{{"l", {1, true, nullptr, "\xC3("}}, {"t", "é\xFF"}}, R"({"l":[1,true,null,"�("],"t":"é�"})"},
      {{{"\xFF", 1}}, {}},
  };
  for (const auto& [objet, texte] : cas) EXPECT_EQ(R::encoded(objet), texte);
  EXPECT_EQ((ProfilEcouteVoix{-5, 0, false, ""}.seuil()), 0);
}

}  // namespace
}  // namespace tarnavelle
