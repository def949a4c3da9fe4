// The steps of one request in the bridge, the door's own time apart.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>

#include "LecteurLignes.hpp"
#include "Porte/CommandeControle.hpp"
#include "Porte/PorteMCP.hpp"
#include "Repartiteur.hpp"
#include "Socle/LectureJSON.hpp"

namespace tarnavelle {
namespace {

constexpr std::string_view ping = R"({"jsonrpc":"2.0","id":7,"method":"ping"})";
constexpr std::string_view appel =
    R"({"jsonrpc":"2.0","id":7,"method":"tools/call","params":{"name":"trv_dicter",)"
    R"("arguments":{"agent":"Merlin","texte":"lance les tests","valider":true}}})";
constexpr std::string_view arguments = R"({"agent":"Merlin","texte":"lance les tests","valider":"oui"})";

/// A file of lines of that length, read through the descriptor the loop would have.
void lireLignes(benchmark::State& etat) {
  constexpr std::size_t total = 8 * 1024 * 1024;
  const auto longueur = static_cast<std::size_t>(etat.range(0));
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> fichier(std::tmpfile(), std::fclose);
  std::string ligne(longueur - 1, 'x');
  ligne += '\n';
  std::size_t ecrites = 0;
  while (fichier && ecrites * longueur < total)
    ecrites += std::fwrite(ligne.data(), longueur, 1, fichier.get());
  if (!fichier || std::fflush(fichier.get()) != 0) return etat.SkipWithError("pas de fichier temporaire");
  const int fd = ::fileno(fichier.get());
  for (auto _ : etat) {
    ::lseek(fd, 0, SEEK_SET);
    LecteurLignes lecteur(fd);
    std::size_t lues = 0;
    while (const auto lue = lecteur.suivante()) lues += lue->texte.size() == longueur - 1;
    if (lues != ecrites) return etat.SkipWithError("lignes mal lues");
  }
  etat.SetItemsProcessed(etat.iterations() * static_cast<std::int64_t>(ecrites));
  etat.SetBytesProcessed(etat.iterations() * static_cast<std::int64_t>(ecrites * longueur));
}
BENCHMARK(lireLignes)->Arg(64)->Arg(1024)->Arg(1024 * 1024)->Unit(benchmark::kMillisecond);

void analyser(benchmark::State& etat, std::string_view ligne) {
  for (auto _ : etat) benchmark::DoNotOptimize(LectureJSON::objet(ligne));
}
BENCHMARK_CAPTURE(analyser, ping, ping);
BENCHMARK_CAPTURE(analyser, appel, appel);

void ecrireReponse(benchmark::State& etat) {
  for (auto _ : etat)
    benchmark::DoNotOptimize(PorteMCP::ligneAppel(
        7, {.corpsJSON = R"({"ok":true,"spoken_text":"Merlin est au centre."})", .ok = true}));
}
BENCHMARK(ecrireReponse);

/// A whole request that needs no door, from its text to its reply line.
void servir(benchmark::State& etat, std::string_view ligne) {
  Repartiteur repartiteur({.environnement = [] { return Variables({}); }, .binaireMCP = "mcp"});
  for (auto _ : etat) benchmark::DoNotOptimize(repartiteur.repondre({ligne}));
}
BENCHMARK_CAPTURE(servir, ping, ping);
BENCHMARK_CAPTURE(servir, liste, R"({"id":7,"method":"tools/list"})");
BENCHMARK_CAPTURE(servir, guide, R"({"id":7,"method":"tools/call","params":{"name":"trv_guide"}})");

void decoderVerbe(benchmark::State& etat) {
  for (auto _ : etat) benchmark::DoNotOptimize(CommandeControle::decoder("Dicter", arguments));
}
BENCHMARK(decoderVerbe);

}  // namespace
}  // namespace tarnavelle
