#include "Voix/RealtimeFrame.hpp"

#include <gtest/gtest.h>

#include <string>

#include "Socle/LectureJSON.hpp"

namespace tarnavelle {
namespace {

using F = RealtimeFrame;
constexpr auto openai = DialecteRealtime::openai;
constexpr auto xai = DialecteRealtime::xai;

F autre(const char* type) { return {F::other{type}}; }
F appel(const char* name, const char* argsJSON, const char* callID) {
  return {F::toolCall{.name = name, .argsJSON = argsJSON, .callID = callID}};
}
const F illisible{F::error{"trame illisible"}};

TEST(RealtimeFrame, ChaqueEvenementEstUnCas) {
  struct {
    std::string texte;
    F attendue;
  } const cas[] = {
      {R"({"type":"session.created"})", {F::sessionCreated{}}},
      {R"({"type":"conversation.created"})", {F::sessionCreated{}}},
      {R"({"type":"session.updated","session":3})", {F::sessionUpdated{}}},
      {R"({"type":"response.output_audio.delta","delta":"AAA="})", {F::audioDelta{{0, 0}}}},
      {R"({"delta":"\u0041AE\/","type":"response.audio.delta"})", {F::audioDelta{{0, 1, 63}}}},
      {R"({"type":"response.audio.delta","delta":""})", {F::audioDelta{}}},
      {R"({"type":"response.audio.delta","delta":"AAA"})", autre("response.audio.delta")},
      {R"({"type":"response.audio.delta","delta":"AAA=\n"})", autre("response.audio.delta")},
      {R"({"type":"response.audio.delta","delta":"-_-_"})", autre("response.audio.delta")},
      {R"({"type":"response.audio.delta","delta":["AAA="]})", autre("response.audio.delta")},
      {R"({"type":"response.output_audio.delta"})", autre("response.output_audio.delta")},
      {R"({"type":"response.output_item.done"})", autre("response.output_item.done")},
      {R"({"type":"response.output_item.done","item":"message"})", autre("response.output_item.done")},
      {R"({"type":"response.output_item.done","item":{"type":"reasoning"}})",
       autre("response.output_item.done")},
      {R"({"type":"response.output_item.done","item":{"type":"message"}})", {F::message{}}},
      {R"({"type":"response.output_item.done","item":{"type":"message","content":[
         {"type":"audio","transcript":"Bon"},{"text":"jour","transcript":"non"},"x",{},null,
         {"text":null,"transcript":" à tous"}]}})",
       {F::message{"Bonjour à tous"}}},
      {R"({"type":"response.done"})", {F::responseDone{}}},
      {R"({"type":"error","error":{"message":"Clé refusée","code":"invalid_api_key"}})",
       {F::error{"Clé refusée"}}},
      {R"({"type":"error","error":"plein"})", {F::error{"plein"}}},
      {R"({"type":"error","error":{"message":7}})", {F::error{"erreur Realtime"}}},
      {R"({"type":"error","message":"ailleurs"})", {F::error{"erreur Realtime"}}},
      {R"({"type":"ping","timestamp":1})", autre("ping")},
      {R"({"type":"Session.Created"})", autre("Session.Created")},
      {R"({"type":""})", autre("")},
      {R"({"type":7})", illisible},
      {R"({"event":"session.created"})", illisible},
      {R"([{"type":"session.created"}])", illisible},
      {R"({"type":"session.created",})", illisible},
      {R"({"type":"session.created"} {})", illisible},
      {"{\"type\":\"session.created\",\"x\":\"\xFF\"}", illisible},
      {R"({"type":"session.created","x":"\ud800"})", illisible},
      {R"({"type":"session.created","x":)" + std::string(600, '[') + std::string(600, ']') + "}", illisible},
      {std::string(1 << 20, '['), illisible},
      {"", illisible},
  };
  for (const auto& c : cas)
    for (const auto dialecte : {openai, xai})
      EXPECT_EQ(F::decode(c.texte, dialecte), c.attendue) << c.texte.substr(0, 200);
}

TEST(RealtimeFrame, ChaqueDialecteAUneSourceDAppels) {
  const auto element = [](const std::string& appel) {
    return R"({"type":"response.output_item.done","item":{"type":"function_call")" + appel + "}}";
  };
  const auto evenement = [](const std::string& appel) {
    return R"({"type":"response.function_call_arguments.done")" + appel + "}";
  };
  struct {
    std::string appel;
    F attendu;
  } const cas[] = {
      {R"(,"name":"shell","arguments":"{\"a\":1}","call_id":"c1")", appel("shell", R"({"a":1})", "c1")},
      {"", appel("", "{}", "")},
      {R"(,"name":["shell"],"arguments":{},"call_id":1)", appel("", "{}", "")},
      {R"(,"name":"etat","arguments":"","call_id":"c2")", appel("etat", "", "c2")},
  };
  for (const auto& c : cas) {
    EXPECT_EQ(F::decode(element(c.appel), openai), c.attendu) << c.appel;
    EXPECT_EQ(F::decode(evenement(c.appel), openai), autre("response.function_call_arguments.done"));
    EXPECT_EQ(F::decode(evenement(c.appel), xai), c.attendu) << c.appel;
    EXPECT_EQ(F::decode(element(c.appel), xai), autre("response.output_item.done"));
  }
}

TEST(LectureTrame, RelevesAnnexes) {
  struct {
    std::string texte;
    LectureTrame attendue;
  } const cas[] = {
      {R"({"type":"conversation.item.created","item":{"id":"i1"},"item_id":"i2"})",
       {.trame = autre("conversation.item.created"), .itemCree = "i1"}},
      {R"({"type":"conversation.item.added","item":{"id":""},"item_id":"i2"})",
       {.trame = autre("conversation.item.added"), .itemCree = "i2"}},
      {R"({"type":"conversation.item.added","item":{"id":1}})", {.trame = autre("conversation.item.added")}},
      {R"({"type":"conversation.item.done","item":{"id":"i1"}})", {.trame = autre("conversation.item.done")}},
      {R"({"type":"conversation.item.input_audio_transcription.completed","item_id":"i","transcript":"Salut"})",
       {.trame = autre("conversation.item.input_audio_transcription.completed"), .transcription = "Salut"}},
      {R"({"type":"conversation.item.input_audio_transcription.completed"})",
       {.trame = autre("conversation.item.input_audio_transcription.completed")}},
      {R"({"type":"x","transcript":"conversation.item.input_audio_transcription.completed"})",
       {.trame = autre("x")}},
      {R"({"type":"input_audio_buffer.speech_started"})",
       {.trame = autre("input_audio_buffer.speech_started"), .ecoute = true}},
      {R"({"type" : "input_audio_buffer.speech_stopped"})",
       {.trame = autre("input_audio_buffer.speech_stopped"), .ecoute = false}},
      {R"(["input_audio_buffer.speech_stopped","input_audio_buffer.speech_started"])",
       {.trame = illisible, .ecoute = true}},
      {R"({"type":"x","y":"\"input_audio_buffer.speech_started\""})", {.trame = autre("x")}},
      {R"({"type":"response.done","response":{"usage":{"output_token_details":{"audio_tokens":7}}}})",
       {.trame = {F::responseDone{}}, .usage = TourRealtime{.audioSortie = 7}}},
      {R"({"type":"response.done","response":{"usage":{}}})",
       {.trame = {F::responseDone{}}, .usage = TourRealtime{}}},
      {R"({"type":"response.done","response":{"usage":null}})", {.trame = {F::responseDone{}}}},
      {R"({"type":"response.created","response":{"usage":{}}})", {.trame = autre("response.created")}},
  };
  for (const auto& c : cas) {
    EXPECT_EQ(LectureTrame::lire(c.texte, openai), c.attendue) << c.texte;
    EXPECT_EQ(F::idItemCree(c.texte), c.attendue.itemCree) << c.texte;
    EXPECT_EQ(F::transcriptionEntree(c.texte), c.attendue.transcription) << c.texte;
    EXPECT_EQ(F::ecouteEntree(c.texte), c.attendue.ecoute) << c.texte;
  }
}

TEST(RealtimeFrame, LitLesArguments) {
  EXPECT_EQ(F::texte("agent", R"({"agent":"Merlin"})"), "Merlin");
  EXPECT_EQ(F::commandText(R"({"text":" ouvre ","texte":"non"})"), " ouvre ");
  EXPECT_EQ(F::commandText("illisible"), "");
  EXPECT_FALSE(F::booleen("b", R"({"b":"\tNon "})", true));
  EXPECT_TRUE(F::booleen("b", R"({"b":"peut-être"})", true));
  struct {
    const char* arguments;
    bool attendu;
  } const verdicts[] = {
      {R"({"verdict":true})", true},    {R"({"verdict":false,"x":"true"})", false},
      {R"({"verdict":"true"})", true},  {R"({"verdict":1})", false},
      {R"({"approuve":true})", true},   {R"({"approuve":"oui"})", false},
      {"c'est true, je crois", true},   {R"({"verdict":false)", false},
      {R"({"verdict":"True"})", false}, {"", false},
  };
  for (const auto& c : verdicts) EXPECT_EQ(F::verdict(c.arguments), c.attendu) << c.arguments;
}

}  // namespace
}  // namespace tarnavelle
