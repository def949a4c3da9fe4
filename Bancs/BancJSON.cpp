// What a large reply of the door costs: writing it as a text within a line, and reading its "ok".
#include <benchmark/benchmark.h>

#include <string>

#include "Porte/PorteMCP.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/LectureJSON.hpp"

namespace tarnavelle {
namespace {

constexpr std::size_t grand = 8 * 1024 * 1024;  // bytes

/// A board's state: short members, one character in about ten to be escaped.
std::string documentDense() {
  std::string texte = R"({"data":[)";
  while (texte.size() < grand)
    texte += R"({"agent":"Merlin","etat":"en attente","chemin":"/tmp/projet","cpu":0.65,"pid":4242},)";
  texte.back() = ']';
  return texte + R"(,"ok":true})";
}

/// A screenshot: one text that takes nearly all the place.
std::string documentDUnSeulTexte() {
  return R"({"data":{"image":")" + std::string(grand, 'A') + R"("},"ok":true})";
}

void octets(benchmark::State& etat, const std::string& texte) {
  etat.SetBytesProcessed(etat.iterations() * static_cast<std::int64_t>(texte.size()));
}

template <std::string (*document)()>
void echapperGrandeReponse(benchmark::State& etat) {
  const std::string corps = document();
  const Json contenu = PorteMCP::contenuAppel(corps, true);
  for (auto _ : etat) benchmark::DoNotOptimize(EcritureJSON::compacte(contenu));
  octets(etat, corps);
}
BENCHMARK(echapperGrandeReponse<documentDense>)->Unit(benchmark::kMillisecond);
BENCHMARK(echapperGrandeReponse<documentDUnSeulTexte>)->Unit(benchmark::kMillisecond);

template <std::string (*document)()>
void lireOkDUneGrandeReponse(benchmark::State& etat) {
  const std::string corps = document();
  for (auto _ : etat) {
    const auto lu = LectureJSON::booleenDeTete(corps, "ok");
    if (lu.valeur != true) return etat.SkipWithError("réponse mal lue");
  }
  octets(etat, corps);
}
BENCHMARK(lireOkDUneGrandeReponse<documentDense>)->Unit(benchmark::kMillisecond);
BENCHMARK(lireOkDUneGrandeReponse<documentDUnSeulTexte>)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tarnavelle
