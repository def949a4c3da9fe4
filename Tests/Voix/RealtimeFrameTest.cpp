#include "Voix/RealtimeFrame.hpp"

#include <gtest/gtest.h>

namespace tarnavelle {
namespace {

using F = RealtimeFrame;
using enum DialecteRealtime;

F autre(const char* type) { return {F::other{type}}; }
const F illisible{F::error{"trame illisible"}};

// The plain cases are tried with the handlers they call, in RealtimeClient's test.
TEST(RealtimeFrame, LesCasDeBord) {
  const std::pair<std::string, F> cas[] = {
      {R"({"type":"conversation.created"})", {F::sessionCreated{}}},
      {R"({"type":"response.output_audio.delta","delta":"AAA="})", {F::audioDelta{{0, 0}}}},
      {R"({"delta":"\u0041AE\/","type":"response.audio.delta"})", {F::audioDelta{{0, 1, 63}}}},
      {R"({"type":"response.audio.delta","delta":"AAA"})", autre("response.audio.delta")},
      {R"({"type":"response.audio.delta","delta":["AAA="]})", autre("response.audio.delta")},
      {R"({"type":"response.output_item.done","item":"message"})", autre("response.output_item.done")},
      {R"({"type":"response.output_item.done","item":{"type":"message","content":[
         {"type":"audio","transcript":"Bon"},{"text":"jour","transcript":"non"},"x",{},null,
         {"text":null,"transcript":" à tous"}]}})",
       {F::message{"Bonjour à tous"}}},
      {R"({"type":"error","error":"plein"})", {F::error{"plein"}}},
      {R"({"type":"error","error":{"message":7},"message":"x"})", {F::error{"erreur Realtime"}}},
      {R"({"type":7})", illisible},
      {"{\"type\":\"session.created\",\"x\":\"\xFF\"}", illisible},
      {std::string(1 << 20, '['), illisible},
  };
  for (const auto& [texte, attendue] : cas)
    for (const auto dialecte : {openai, xai})
      EXPECT_EQ(F::decode(texte, dialecte), attendue) << texte.substr(0, 200);
}

TEST(RealtimeFrame, ChaqueDialecteAUneSourceDAppels) {
  const std::pair<std::string, F> cas[] = {
      {R"(,"name":"shell","arguments":"{\"a\":1}","call_id":"c1")", {F::toolCall{"shell", R"({"a":1})", "c1"}}},
      {R"(,"name":["shell"],"arguments":{},"call_id":1)", {F::toolCall{"", "{}", ""}}},
  };
  for (const auto& [champs, attendu] : cas) {
    const auto element =
        R"({"type":"response.output_item.done","item":{"type":"function_call")" + champs + "}}";
    const auto evenement = R"({"type":"response.function_call_arguments.done")" + champs + "}";
    EXPECT_EQ(F::decode(element, openai), attendu) << champs;
    EXPECT_EQ(F::decode(evenement, openai), autre("response.function_call_arguments.done"));
    EXPECT_EQ(F::decode(evenement, xai), attendu) << champs;
    EXPECT_EQ(F::decode(element, xai), autre("response.output_item.done"));
  }
}

TEST(LectureTrame, RelevesAnnexes) {
  std::pair<std::string, LectureTrame> cas[] = {
      {R"({"type":"conversation.item.created","item":{"id":"i1"},"item_id":"i2"})", {{}, "i1"}},
      {R"({"type":"conversation.item.added","item":{"id":""},"item_id":"i2"})", {{}, "i2"}},
      {R"({"type":"conversation.item.added","item":{"id":1}})", {}},
      {R"({"type":"x","transcript":"conversation.item.input_audio_transcription.completed"})", {}},
      {R"({"type" : "input_audio_buffer.speech_stopped"})", {{}, {}, {}, {}, false}},
      {R"(["input_audio_buffer.speech_stopped","input_audio_buffer.speech_started"])", {{}, {}, {}, {}, true}},
  };
  for (auto& [texte, attendue] : cas) {
    attendue.trame = F::decode(texte, openai);  // tried above
    EXPECT_EQ(LectureTrame::lire(texte, openai), attendue) << texte;
  }
}

TEST(RealtimeFrame, LitLesArguments) {
  EXPECT_EQ(F::commandText(R"({"text":" ouvre ","texte":"non"})"), " ouvre ");
  for (const char* oui : {R"({"verdict":true})", R"({"approuve":true})", "c'est true, je crois"})
    EXPECT_TRUE(F::verdict(oui)) << oui;
  for (const char* non : {R"({"verdict":false,"x":"true"})", R"({"verdict":1})", R"({"verdict":"True"})"})
    EXPECT_FALSE(F::verdict(non)) << non;
}

}  // namespace
}  // namespace tarnavelle
