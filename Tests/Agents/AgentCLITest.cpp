#include "Agents/AgentCLI.hpp"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <set>
#include <string>
#include <thread>
#include <unordered_set>

#include "DossierTemporaire.hpp"
#include "Socle/Fichiers.hpp"

namespace tarnavelle {
namespace {

using namespace std::chrono_literals;

TEST(AgentCLI, TrouveParIdentifiant) {
  EXPECT_TRUE(AgentCLI::tous() == (std::vector{AgentCLI::claude(), AgentCLI::codex(), AgentCLI::grok(),
                                               AgentCLI::gemini(), AgentCLI::hermes()}));
  for (const AgentCLI& cli : AgentCLI::allCases()) EXPECT_EQ(AgentCLI::parId(cli.id), &cli) << cli.id;
  for (const char* autre : {"", "Claude", " claude", "claude ", "claude code"})
    EXPECT_EQ(AgentCLI::parId(autre), nullptr) << autre;
  EXPECT_EQ(AgentCLI::claude().sousTitrePalette(), "Terminal · Anthropic");
}

TEST(AgentCLI, PlieUnePhrase) {
  const struct {
    std::string texte;
    std::string plie;
  } cas[] = {
      {"", ""},
      {" ?!.,;:«»\" \t", ""},
      {"  L’Épée d'Œuvre--«\u00A0ÇA\u00A0»;\n\"va_là\" ?", "l epee d œuvre ca va la"},
      {"E\u0301pe\u0301e", "epee"},
      {"a.b,c", "abc"},
      {"‘a‐b…", "‘a‐b…"},  // other quotes and dashes are not ours to read
      {"A\xFF\xC3 B", "a\xFF\xC3 b"},
  };
  for (const auto& c : cas) EXPECT_EQ(AgentCLI::plier(c.texte), c.plie) << testing::PrintToString(c.texte);
}

TEST(AgentCLI, DesigneDansUnePhrase) {
  const struct {
    std::string phrase;
    const char* id;  ///< null when none is named
  } cas[] = {
      {"« Ouvre un Claude-Code\u00A0! »", "claude"},
      {"lance un codex dans Sources", "codex"},
      {"CODEX", "codex"},
      {"demande à Open_AI", "codex"},
      {"un OpenAI, vite", "codex"},
      {"l’Hermès de l'atelier", "hermes"},
      {"He\u0301 ! l'HERME\u0300S", "hermes"},
      {"claude\n\ncode", "claude"},
      // The longest alias, wherever it stands; the catalogue decides between equal ones.
      {"grok puis claude", "claude"},
      {"claude puis open ai", "codex"},
      {"claude code, ou hermes agent", "hermes"},
      {"gemini et claude", "claude"},
      {"hermes et gemini", "gemini"},
      {"grok cli ou gemini", "grok"},
      // Whole words only
      {"groker le code", nullptr},
      {"agrok", nullptr},
      {"claudette", nullptr},
      {"open le ai", nullptr},
      {"grok:cli", nullptr},
      {"claude\xFF", nullptr},
      {"ouvre un terminal", nullptr},
      {"«?!.»", nullptr},
      {" ", nullptr},
      {"", nullptr},
  };
  for (const auto& c : cas) {
    const AgentCLI* cli = AgentCLI::depuisPhrase(c.phrase);
    EXPECT_EQ(cli ? cli->id : "aucun", c.id ? c.id : "aucun") << c.phrase;
  }
}

TEST(AgentCLI, ChercheDansLOrdre) {
  const std::set<std::string> maisonDAbord = {"claude", "hermes"};
  for (const AgentCLI& cli : AgentCLI::tous()) {
    std::vector<std::string> ordre = {"/opt/homebrew/bin/" + cli.id, "/usr/local/bin/" + cli.id};
    ordre.insert(maisonDAbord.contains(cli.id) ? ordre.begin() : ordre.end(), "/maison/.local/bin/" + cli.id);
    for (std::size_t installe = 0; installe <= ordre.size(); ++installe) {
      std::vector<std::string> vus;
      const auto binaire = cli.binaire({"/maison", [&](const std::filesystem::path& chemin) {
                                          vus.push_back(chemin.string());
                                          return vus.size() > installe;
                                        }});
      const bool trouve = installe < ordre.size();
      EXPECT_EQ(binaire, trouve ? std::optional<std::filesystem::path>(ordre[installe]) : std::nullopt);
      EXPECT_EQ(vus, std::vector(ordre.begin(), ordre.begin() + std::ptrdiff_t(trouve ? installe + 1 : 3)));
    }
  }
}

TEST(AgentCLI, TildeEnTeteSeulement) {
  AgentCLI cli;
  EXPECT_FALSE(cli.binaire());
  cli.cheminsBinaires = {"/opt/~/x", "~x", "~", "./~"};
  std::vector<std::string> vus;
  EXPECT_FALSE(cli.disponibleSansCache({"/maison", [&](const std::filesystem::path& chemin) {
                                          vus.push_back(chemin.string());
                                          return false;
                                        }}));
  EXPECT_EQ(vus, (std::vector<std::string>{"/opt/~/x", "/maisonx", "/maison", "./~"}));
}

TEST(AgentCLI, ChercheSurLeDisque) {
  const DossierTemporaire maison;
  const AgentCLI::Machine machine{maison.chemin().string(), fichierExecutable};
  AgentCLI cli = AgentCLI::hermes();
  cli.cheminsBinaires = {"~/a/hermes", "~/b c/hermes"};
  std::filesystem::create_directories(maison.chemin() / "a/hermes");  // a folder may be "executable"
  const auto fichier = maison.ecrire("b c/hermes", "#!/bin/sh\n");
  EXPECT_FALSE(cli.disponibleSansCache(machine));
  std::filesystem::permissions(fichier, std::filesystem::perms::owner_all);
  EXPECT_EQ(cli.binaire(machine), fichier);

  for (const AgentCLI& connue : AgentCLI::tous()) EXPECT_EQ(connue.disponible(), connue.disponibleSansCache());
}

TEST(AgentCLI, CondenseTousSesChamps) {
  std::unordered_set<AgentCLI> variantes;
  std::set<std::size_t> condenses;
  const auto ajouter = [&](auto changer) {
    AgentCLI cli = AgentCLI::claude();
    changer(cli);
    variantes.insert(cli);
    condenses.insert(std::hash<AgentCLI>{}(cli));
  };
  for (int fois = 0; fois < 2; ++fois) {
    ajouter([](AgentCLI&) {});
    ajouter([](AgentCLI& c) { c.id += 'x'; });
    ajouter([](AgentCLI& c) { c.titre += 'x'; });
    ajouter([](AgentCLI& c) { c.editeur += 'x'; });
    ajouter([](AgentCLI& c) { c.cheminsBinaires[1] += 'x'; });
    ajouter([](AgentCLI& c) { c.arguments.emplace_back("-x"); });
    ajouter([](AgentCLI& c) { c.symbole += 'x'; });
    ajouter([](AgentCLI& c) { c.teinte = TeinteLanceur::ok; });
    ajouter([](AgentCLI& c) { c.alias[0] += 'x'; });
    ajouter([](AgentCLI& c) { c.prefixeSession += 'x'; });
  }
  EXPECT_EQ(variantes.size(), 10u);
  EXPECT_EQ(condenses.size(), 10u);
}

/// A cache with its world: a clock that stands still, and a probe that counts.
struct Essai {
  CacheDisponibiliteCLI::Instant maintenant{};
  bool installe = false;
  int sondages = 0;
  CacheDisponibiliteCLI cache{[this](const AgentCLI&) {
                                ++sondages;
                                return installe;
                              },
                              [this] { return maintenant; }};
};

TEST(CacheDisponibiliteCLI, OublieAuBoutDeCinqSecondes) {
  Essai e;
  EXPECT_FALSE(e.cache.valeur(AgentCLI::claude()));
  e.installe = true;
  e.maintenant += 5s - 1ns;
  EXPECT_FALSE(e.cache.valeur(AgentCLI::claude()));
  EXPECT_EQ(e.sondages, 1);
  EXPECT_TRUE(e.cache.valeur(AgentCLI::codex()));  // each program has its own age
  e.maintenant += 1ns;
  EXPECT_TRUE(e.cache.valeur(AgentCLI::claude()));
  e.installe = false;
  e.maintenant += 5s - 1ns;
  EXPECT_TRUE(e.cache.valeur(AgentCLI::claude()));  // the age runs from the last answer
  EXPECT_EQ(e.sondages, 3);
}

TEST(CacheDisponibiliteCLI, OublieSurDemande) {
  Essai e;
  e.cache.valeur(AgentCLI::claude());
  e.cache.valeur(AgentCLI::codex());
  e.installe = true;
  e.cache.oublier(AgentCLI::claude());
  EXPECT_TRUE(e.cache.valeur(AgentCLI::claude()));
  EXPECT_FALSE(e.cache.valeur(AgentCLI::codex()));
  e.cache.oublier();
  EXPECT_TRUE(e.cache.valeur(AgentCLI::codex()));
  EXPECT_TRUE(e.cache.valeur(AgentCLI::claude()));
  EXPECT_EQ(e.sondages, 5);
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
  const std::set<std::string> installes = {"claude", "grok"};
  std::atomic<int> sondages = 0;
  std::atomic<int> tics = 0;
  CacheDisponibiliteCLI cache(
      [&](const AgentCLI& cli) {
        ++sondages;
        return installes.contains(cli.id);
      },
      [&] { return CacheDisponibiliteCLI::Instant(++tics * 50ms); });
  constexpr int tours = 4000;
  std::atomic<int> faux = 0;
  std::array<std::thread, 8> fils;
  for (auto& f : fils)
    f = std::thread([&] {
      for (int tour = 0; tour < tours; ++tour)
        for (const AgentCLI& cli : AgentCLI::tous()) {
          if (cache.valeur(cli) != installes.contains(cli.id)) ++faux;
          if (tour % 50 == 0) cache.oublier(cli);
          if (tour % 99 == 0) cache.oublier();
        }
    });
  for (auto& f : fils) f.join();
  EXPECT_EQ(faux, 0);
  EXPECT_GE(sondages, 5);
  EXPECT_LT(sondages, 8 * tours * 5);
}

}  // namespace
}  // namespace tarnavelle
