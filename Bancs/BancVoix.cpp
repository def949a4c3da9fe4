// What a voice session costs its thread: a second of the microphone to the wire, a second of the
// model's voice from it, and the small events in between.
#include <benchmark/benchmark.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Socle/Base64.hpp"
#include "Voix/RealtimeAudio.hpp"
#include "Voix/RealtimeClient.hpp"
#include "Voix/RealtimeFrame.hpp"
#include "Voix/RealtimeRequest.hpp"

namespace tarnavelle {
namespace {

/// One second of two notes at that rate.
std::vector<float> uneSeconde(int frequence) {
  std::vector<float> son(static_cast<std::size_t>(frequence));
  for (std::size_t i = 0; i < son.size(); ++i) {
    const float t = static_cast<float>(i) / static_cast<float>(frequence);
    son[i] = 0.6f * std::sin(2765 * t) + 0.4f * std::sin(4147 * t);
  }
  return son;
}

Octets uneSecondePCM() { return RealtimeAudio::encode(uneSeconde(48000), 48000); }

void capturer(benchmark::State& etat) {
  const auto capture = uneSeconde(48000);
  for (auto _ : etat) {
    auto son = Base64::coder(RealtimeAudio::encode(capture, 48000));
    const auto texte = RealtimeRequest::encoded(RealtimeRequest::audioAppend(std::move(son)));
    if (!texte || texte->size() < 64000) return etat.SkipWithError("capture mal codée");
  }
}
BENCHMARK(capturer)->Unit(benchmark::kMicrosecond);

void debit(benchmark::State& etat, std::size_t octets) {
  etat.SetBytesProcessed(etat.iterations() * static_cast<std::int64_t>(octets));
}

void recevoirDuSon(benchmark::State& etat) {
  const auto pcm = uneSecondePCM();
  const std::string trame =
      R"({"type":"response.output_audio.delta","event_id":"event_E6U11oE4PwyJSvJ9e3mzM","response_id":)"
      R"("resp_E6U11oof93olA0JOwdA0H","item_id":"item_E6U11NhYQw9EqLY0RTEwG","output_index":0,)"
      R"("content_index":0,"delta":")" +
      Base64::coder(pcm) + R"("})";
  for (auto _ : etat) {
    const auto lue = LectureTrame::lire(trame, DialecteRealtime::openai);
    const auto* son = std::get_if<RealtimeFrame::audioDelta>(&lue.trame.cas);
    if (!son || son->octets.size() != pcm.size()) return etat.SkipWithError("trame mal lue");
  }
  debit(etat, trame.size());
}
BENCHMARK(recevoirDuSon)->Unit(benchmark::kMicrosecond);

void lirePetitEvenement(benchmark::State& etat) {
  const std::string trame =
      R"({"type":"response.output_audio_transcript.delta","event_id":"event_E6U12ETfJ0Pfe9BnrwQAf",)"
      R"("response_id":"resp_E6U11zrzQPfORkorcByyP","item_id":"item_E6U11NhYQw9EqLY0RTEwG","output_index":0,)"
      R"("content_index":0,"delta":" degrés","obfuscation":"WQLdlZk4"})";
  for (auto _ : etat) benchmark::DoNotOptimize(LectureTrame::lire(trame, DialecteRealtime::openai));
}
BENCHMARK(lirePetitEvenement)->Unit(benchmark::kNanosecond);

/// Keeps what the client listens with, and lets its sends fall.
struct TransportMuet : TransportRealtime {
  void demarrer(RappelsTransportRealtime r) override { rappels = std::move(r); }
  void envoyer(std::string) override {}
  void fermer() override {}
  RappelsTransportRealtime rappels;
};

/// From a frame's text to its handlers' calls.
void aiguiller(benchmark::State& etat, const std::string& trame, std::int64_t appelsParTrame) {
  const auto transport = std::make_shared<TransportMuet>();
  std::int64_t appels = 0;
  const auto client = RealtimeClient::creer(
      transport, {.provider = RealtimeProvider::openai(),
                  .handlers = {.onToolCall = [&](const FileAppelsRealtime::Appel&) { ++appels; },
                               .onDone = [&] { ++appels; },
                               .onUsage = [&](const TourRealtime&) { ++appels; },
                               .onEcouteEntree = [&](bool) { ++appels; },
                               .onTrame = [&](std::string_view) { ++appels; }}});
  for (auto _ : etat) transport->rappels.surTexte(trame);
  if (appels != etat.iterations() * appelsParTrame) etat.SkipWithError("handlers mal appelés");
}
BENCHMARK_CAPTURE(aiguiller, parole,
                  R"({"type":"input_audio_buffer.speech_started","event_id":"event_E6U11qP3QYFZ4qUgYVjdN",)"
                  R"("audio_start_ms":1236,"item_id":"item_E6U11NhYQw9EqLY0RTEwG"})",
                  2)
    ->Unit(benchmark::kNanosecond);
BENCHMARK_CAPTURE(aiguiller, appel,
                  R"({"type":"response.output_item.done","event_id":"event_E6U12ETfJ0Pfe9BnrwQAf",)"
                  R"("response_id":"resp_E6U11zrzQPfORkorcByyP","output_index":0,"item":{"id":"item_E6U11N",)"
                  R"("type":"function_call","status":"completed","name":"focus","call_id":"call_oUuvBl",)"
                  R"("arguments":"{\"cible\":\"Merlin\"}"}})",
                  2)
    ->Unit(benchmark::kNanosecond);
BENCHMARK_CAPTURE(aiguiller, fini,
                  R"({"type":"response.done","event_id":"event_E6U12ETfJ0Pfe9BnrwQAf","response":{"usage":)"
                  R"({"total_tokens":253,"input_tokens":132,"output_tokens":121,"input_token_details":)"
                  R"({"text_tokens":119,"audio_tokens":13,"cached_tokens":64,"cached_tokens_details":)"
                  R"({"text_tokens":64,"audio_tokens":0}},"output_token_details":{"text_tokens":30}}}})",
                  3)
    ->Unit(benchmark::kNanosecond);

void coderBase64(benchmark::State& etat) {
  const auto pcm = uneSecondePCM();
  for (auto _ : etat) benchmark::DoNotOptimize(Base64::coder(pcm));
  debit(etat, pcm.size());
}
BENCHMARK(coderBase64)->Unit(benchmark::kMicrosecond);

void decoderBase64(benchmark::State& etat) {
  const auto texte = Base64::coder(uneSecondePCM());
  for (auto _ : etat) benchmark::DoNotOptimize(Base64::decoder(texte));
  debit(etat, texte.size());
}
BENCHMARK(decoderBase64)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace tarnavelle
