#include "Agents/AgentCLI.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <span>
#include <string>
#include <vector>

namespace tarnavelle {
namespace {

using namespace std::chrono_literals;

TEST(AgentCLI, TrouveParIdentifiant) {
  for (const AgentCLI& cli : AgentCLI::allCases()) EXPECT_EQ(AgentCLI::parId(cli.id), &cli) << cli.id;
  for (const char* autre : {"", "Claude"}) EXPECT_EQ(AgentCLI::parId(autre), nullptr) << autre;
  EXPECT_EQ(AgentCLI::claude().sousTitrePalette(), "Terminal · Anthropic");
}

TEST(AgentCLI, DesigneDansUnePhrase) {
  struct {
    std::string phrase, plie, id = "aucun";
  } const cas[] = {
      {" ?!.,;:«»\" \t", ""},
      {"  L’Épée d'Œuvre--«\u00A0ÇA\u00A0»;\n\"va_là\" ?", "l epee d œuvre ca va la"},
      {"‘a‐b…", "‘a‐b…"},  // other quotes and dashes are not ours to read
      {"« Ouvre un Claude-Code\u00A0! »", "ouvre un claude code", "claude"},
      {"He\u0301 ! l'HERME\u0300S", "he l hermes", "hermes"},
      // The longest alias, wherever it stands; the catalogue decides between equal ones.
      {"claude puis open ai", "claude puis open ai", "codex"},
      {"claude code, ou hermes agent", "claude code ou hermes agent", "hermes"},
      {"gemini et claude", "gemini et claude", "claude"},
      // Whole words only
      {"groker, agrok", "groker agrok"},
      {"grok:cli", "grokcli"},
      // Signs that folding leaves count only where nothing is found without them.
      {"ouvre “claude”", "ouvre “claude”", "claude"},
      {"(Codex…)", "(codex…)", "codex"},
      {"`grok`–vite", "`grok`–vite", "grok"},
      {"un claude (code) ou codex", "un claude (code) ou codex", "claude"},
  };
  for (const auto& c : cas) {
    EXPECT_EQ(AgentCLI::plier(c.phrase), c.plie);
    const AgentCLI* cli = AgentCLI::depuisPhrase(c.phrase);
    EXPECT_EQ(cli ? cli->id : "aucun", c.id) << c.phrase;
  }
}

TEST(AgentCLI, ChercheDansLOrdre) {
  AgentCLI cli;
  EXPECT_FALSE(cli.binaire());
  cli.cheminsBinaires = {"/opt/~/x", "~x", "~/x", "./~"};
  const std::vector<std::string> ordre = {"/opt/~/x", "/maisonx", "/maison/x", "./~"};
  for (std::size_t installe = 0; installe <= ordre.size(); ++installe) {
    std::vector<std::string> vus;
    const auto binaire = cli.binaire({"/maison", [&](const std::filesystem::path& chemin) {
                                        vus.push_back(chemin.string());
                                        return vus.size() > installe;
                                      }});
    EXPECT_EQ(binaire ? binaire->string() : "", installe < 4 ? ordre[installe] : "");
    EXPECT_TRUE(std::ranges::equal(vus, std::span(ordre).first(vus.size())));
  }
}

TEST(AgentCLI, SeCondenseAvecTousSesChamps) {
  AgentCLI cli = AgentCLI::claude();
  EXPECT_EQ(std::hash<AgentCLI>{}(cli), std::hash<AgentCLI>{}(AgentCLI::claude()));
  cli.alias.emplace_back();
  EXPECT_NE(std::hash<AgentCLI>{}(cli), std::hash<AgentCLI>{}(AgentCLI::claude()));
}

TEST(CacheDisponibiliteCLI, OublieAuBoutDeCinqSecondesOuSurDemande) {
  CacheDisponibiliteCLI::Instant maintenant{};
  bool installe = false;
  CacheDisponibiliteCLI cache([&](const AgentCLI&) { return installe; }, [&] { return maintenant; });
  EXPECT_FALSE(cache.valeur(AgentCLI::claude()));
  installe = true;
  maintenant += 5s - 1ns;
  EXPECT_FALSE(cache.valeur(AgentCLI::claude()));
  EXPECT_TRUE(cache.valeur(AgentCLI::codex()));  // each program has its own age
  maintenant += 1ns;
  EXPECT_TRUE(cache.valeur(AgentCLI::claude()));
  installe = false;
  cache.oublier(AgentCLI::claude());
  EXPECT_FALSE(cache.valeur(AgentCLI::claude()));
  EXPECT_TRUE(cache.valeur(AgentCLI::codex()));
  cache.oublier();
  EXPECT_FALSE(cache.valeur(AgentCLI::codex()));
}

// A probe that comes back to the cache would stand still for ever if the lock were held around it.
TEST(CacheDisponibiliteCLI, SondeSansTenirLeVerrou) {
  CacheDisponibiliteCLI::Instant maintenant{};
  CacheDisponibiliteCLI* soi = nullptr;
  int sondages = 0;
  CacheDisponibiliteCLI cache(
      [&](const AgentCLI& cli) {
        ++sondages;
        if (cli.id == "codex") return true;
        soi->oublier();
        maintenant += 3s;  // a slow disk
        return soi->valeur(AgentCLI::codex());
      },
      [&] { return maintenant; });
  soi = &cache;
  EXPECT_TRUE(cache.valeur(AgentCLI::claude()));
  maintenant += 5s - 1ns;  // an answer is as old as the end of its probe
  EXPECT_TRUE(cache.valeur(AgentCLI::claude()));
  EXPECT_EQ(sondages, 2);
}

TEST(CacheDisponibiliteCLI, SertDePlusieursFils) {
  std::atomic<int> tics = 0;
  std::atomic<int> faux = 0;
  CacheDisponibiliteCLI cache([](const AgentCLI& cli) { return cli.id == "grok"; },
                              [&] { return CacheDisponibiliteCLI::Instant(++tics * 50ms); });
  std::vector<std::future<void>> fils;
  while (fils.size() < 8)
    fils.push_back(std::async(std::launch::async, [&] {
      for (int tour = 0; tour < 2000; ++tour)
        for (const AgentCLI& cli : AgentCLI::tous()) {
          if (cache.valeur(cli) != (cli.id == "grok")) ++faux;
          if (tour % 50 == 0) cache.oublier(cli);
        }
    }));
  fils.clear();
  EXPECT_EQ(faux, 0);
}

}  // namespace
}  // namespace tarnavelle
