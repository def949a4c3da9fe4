// The board's memory, on a file: what a start waits for, what every change costs, and what a search among as
// many notes as there may be.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "Registre/Registre.hpp"

using namespace tarnavelle;
using namespace tarnavelle::Plateau;

namespace {

std::filesystem::path chemin() {
  return std::filesystem::temp_directory_path() / ("bancs-registre-" + std::to_string(::getpid())) /
         "plateau.db";
}

/// Twenty agents and a thousand notes, removed in the end.
struct Rempli {
  Rempli() {
    if (!registre) std::abort();
    constexpr const char* sujets[] = {"port", "serveur", "migration", "facture", "cache", "route", "tests"};
    for (int i = 0; i < 20; ++i) {
      const std::string numero = std::to_string(i);
      registre->garderAgent({.id = numero, .nom = "Agent " + numero, .mots = {"claude", "--settings", "x"}});
    }
    for (std::size_t i = 0; registre->noter({.texte = std::string("Le ") + sujets[i % 7] + " et la " +
                                                      sujets[i / 7 % 7] + std::string(200, 'x')});
         ++i) {
    }
  }
  ~Rempli() {
    registre = Sinon{Avarie{}};
    std::filesystem::remove_all(chemin().parent_path());
  }

  Rempli(const Rempli&) = delete;
  Rempli& operator=(const Rempli&) = delete;

  Garde<Registre> registre = Registre::ouvrir({.chemin = chemin()});
};

void registreOuvrir(benchmark::State& etat) {
  Rempli rempli;
  for (auto _ : etat) {
    rempli.registre = Sinon{Avarie{}};
    rempli.registre = Registre::ouvrir({.chemin = chemin()});
    if (!rempli.registre) etat.SkipWithError(rempli.registre.raison().phrase.c_str());
  }
}
BENCHMARK(registreOuvrir);

void registreNoterUnEtat(benchmark::State& etat) {
  Rempli rempli;
  std::int64_t quand = 0;
  for (auto _ : etat)
    benchmark::DoNotOptimize(
        rempli.registre->noterEtat("7", "travaille", Date::Instant(std::chrono::milliseconds(++quand))));
}
BENCHMARK(registreNoterUnEtat);

void registreLireVingtAgents(benchmark::State& etat) {
  Rempli rempli;
  for (auto _ : etat) benchmark::DoNotOptimize(rempli.registre->agents());
}
BENCHMARK(registreLireVingtAgents);

void registreRappelerUnMot(benchmark::State& etat) {
  Rempli rempli;
  for (auto _ : etat) benchmark::DoNotOptimize(rempli.registre->rappeler({.requete = "migration"}));
}
BENCHMARK(registreRappelerUnMot);

void registreRappelerUnePhrase(benchmark::State& etat) {
  Rempli rempli;
  for (auto _ : etat)
    benchmark::DoNotOptimize(
        rempli.registre->rappeler({.requete = "qu'est-ce que je sais sur la route des factures ?"}));
}
BENCHMARK(registreRappelerUnePhrase);

}  // namespace
