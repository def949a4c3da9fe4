// What a stream of Hermès's costs, from the bytes that arrive to the events that come out of them.
#include <benchmark/benchmark.h>

#include <string>

#include "Hermes/EvenementGateway.hpp"
#include "Hermes/FluxSSE.hpp"
#include "Hermes/MessageNtfy.hpp"
#include "Liaison/LecteurLignesFlux.hpp"

namespace tarnavelle {
namespace {

constexpr std::size_t piece = 64 * 1024;  // bytes, as the network client reads them
constexpr std::size_t pieces = 64;

constexpr std::string_view morceau =
    R"(data: {"id":"chatcmpl-C9aJ4vQ2tYkZ1Lr8","object":"chat.completion.chunk","created":1764296393,)"
    R"("model":"hermes-4-405b","service_tier":"default","system_fingerprint":"fp_e8236260a9","choices":[{"index":0,)"
    R"("delta":{"content":" l'été"},"logprobs":null,"finish_reason":null}],"usage":null,"obfuscation":"mdZ3Wq"})"
    "\n\n";
constexpr std::string_view appel =
    R"(data: {"id":"chatcmpl-C9aJ4vQ2tYkZ1Lr8","object":"chat.completion.chunk","created":1764296393,)"
    R"("model":"hermes-4-405b","choices":[{"index":0,"delta":{"role":"assistant","content":null,"tool_calls":[{)"
    R"("index":0,"id":"call_4wXq","type":"function","function":{"name":"lire","arguments":"{\"path\":\"/a/b.cpp\"}"}}]},)"
    R"("logprobs":null,"finish_reason":null}],"usage":null})"
    "\n\n";
constexpr std::string_view avis =
    R"(data: {"id":"sPs71M8A2T","time":1643935928,"expires":1643936928,"event":"message","topic":"mytopic",)"
    R"("priority":5,"tags":["warning","skull"],"click":"https://exemple.fr/incident/1234","title":"Accès refusé",)"
    R"("message":"Quelque chose a bougé dans la cour."})"
    "\n\n";

std::size_t livreMorceau(std::string_view charge) {
  return std::holds_alternative<EvenementGateway::texte>(EvenementGateway::lire(charge).cas);
}
std::size_t livreAppel(std::string_view charge) {
  return std::holds_alternative<EvenementGateway::outil>(EvenementGateway::lire(charge).cas);
}
std::size_t livreAvis(std::string_view charge) {
  return std::holds_alternative<LectureNtfy::message>(MessageNtfy::lire(charge, "mytopic").cas);
}

template <const std::string_view& evenement, std::size_t (*livre)(std::string_view)>
void lireFlux(benchmark::State& etat) {
  std::string flux;
  std::size_t attendus = 0;
  for (; flux.size() < pieces * piece; ++attendus) flux += evenement;
  for (auto _ : etat) {
    LecteurLignesFlux lecteur;
    std::size_t livres = 0;
    for (std::size_t i = 0; i < flux.size(); i += piece) {
      lecteur.ajouter(std::string_view(flux).substr(i, piece));
      while (const auto ligne = lecteur.suivante()) {
        const auto lue = FluxSSE::lire(*ligne);
        if (const auto* charge = std::get_if<FluxSSE::Ligne::charge>(&lue.cas)) livres += livre(charge->texte);
      }
    }
    if (livres != attendus) return etat.SkipWithError("flux mal lu");
  }
  etat.SetItemsProcessed(etat.iterations() * static_cast<std::int64_t>(attendus));
  etat.SetBytesProcessed(etat.iterations() * static_cast<std::int64_t>(flux.size()));
}
BENCHMARK(lireFlux<morceau, livreMorceau>)->Unit(benchmark::kMillisecond);
BENCHMARK(lireFlux<appel, livreAppel>)->Unit(benchmark::kMillisecond);
BENCHMARK(lireFlux<avis, livreAvis>)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tarnavelle
