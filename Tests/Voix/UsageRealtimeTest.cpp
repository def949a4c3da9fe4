#include "Voix/UsageRealtime.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "Socle/LectureJSON.hpp"

namespace tarnavelle {
namespace {

using namespace std::chrono;
constexpr std::int64_t plein = std::numeric_limits<std::int64_t>::max();

TEST(TarifRealtime, PourUnModele) {
  const auto& table = TarifRealtime::table();
  const std::pair<const char*, const TarifRealtime&> cas[] = {
      {" \tGPT-Realtime-2.1-Mini\u00a0", table.at("gpt-realtime-2.1-mini")},
      {"gpt-realtime-2.1-mini-2026-01-15", table.at("gpt-realtime-2.1-mini")},
      {"gpt-realtime-2.1-min", table.at("gpt-realtime-2.1")},
      {"gpt-realtim", TarifRealtime::defaut},
  };
  for (const auto& [model, attendu] : cas) EXPECT_EQ(&TarifRealtime::pour(model), &attendu) << model;
}

TEST(LectureUsageRealtime, LitLUsage) {
  const std::pair<const char*, TourRealtime> lus[] = {
      {R"({"input_token_details":{"text_tokens":119,"audio_tokens":41,"cached_tokens":64,
            "cached_tokens_details":{"text_tokens":60,"audio_tokens":4}},
          "output_token_details":{"text_tokens":30,"audio_tokens":91}})",
       {59, 37, 64, 30, 91}},
      {R"({"input_token_details":{"text_tokens":-9223372036854775808,"audio_tokens":3,
            "cached_tokens_details":{"text_tokens":9223372036854775807,"audio_tokens":-5}}})",
       {0, 3}},
      {R"({"input_token_details":"unimplemented","output_token_details":{"text_tokens":12.9,"audio_tokens":"9"}})",
       {.texteSortie = 12}},
  };
  for (const auto& [usage, attendu] : lus)
    EXPECT_EQ(LectureUsageRealtime::lire(std::string(R"({"response":{"usage":)") + usage + "}}"), attendu)
        << usage;
  for (const char* refus : {R"({"response":{"usage":[]}})", R"({"usage":{}})", "{"})
    EXPECT_FALSE(LectureUsageRealtime::lire(refus)) << refus;
  const std::string ici = R"("usage":{"output_token_details":{"audio_tokens":5}})",
                    vide = R"("usage":{"output_token_details":{}})";
  const std::pair<std::string, std::optional<TourRealtime>> ouQuIlSoit[] = {
      {R"({"response":{"usage":{}},)" + ici + "}", TourRealtime{.audioSortie = 5}},
      {R"({"response":{"usage":null},)" + ici + "}", TourRealtime{.audioSortie = 5}},
      {"{" + ici + "}", TourRealtime{.audioSortie = 5}},
      {R"({"response":{)" + vide + "}," + ici + "}", TourRealtime{}},
      {R"({"response":{"usage":{}},"usage":{}})", TourRealtime{}},
      {R"({"response":{"usage":{}},"usage":7})", TourRealtime{}},
      {R"({"response":{},"usage":{}})", {}},
  };
  for (const auto& [texte, attendu] : ouQuIlSoit)
    EXPECT_EQ(LectureUsageRealtime::lireOuQuIlSoit(LectureJSON::valeur(texte).value()), attendu) << texte;
}

TEST(UsageRealtime, SAjouteCouteEtSeDit) {
  EXPECT_EQ((TourRealtime{plein, 2, -plein, 3, 4} + TourRealtime{1, -1, -2, 1, 50}),
            (TourRealtime{plein, 1, -plein - 1, 4, 54}));
  const auto& mini = TarifRealtime::table().at("gpt-realtime-2.1-mini");
  UsageRealtime usage;
  usage.ajouter({1'000'000, 2'000'000, 3'000'000, 4'000'000, 5'000'000});
  usage.ajouter({0, 100, 0, 0, 10});
  EXPECT_DOUBLE_EQ(usage.cout(mini), 0.6 + 20.001 + 0.9 + 9.6 + 100.0002);
  for (const auto& [duree, attendue] : {std::pair(59.9, "59 s"), {60., "1 min 0 s"}, {HUGE_VAL, "0 s"}})
    EXPECT_EQ(usage.ligne(duree, mini), std::string("Conversation — ") + attendue + " · 2 tours · ~131.1012 $");
}

TEST(CumulVoixDuJour, CompteUnJour) {
  const Calendrier utc, tokyo{[](sys_seconds) { return 9h; }};
  const auto soir = sys_days(2026y / March / 9) + 20h;
  const auto un = CumulVoixDuJour().ajoutant(0.126, soir, utc);
  EXPECT_EQ(un.ligne(soir, utc), "Aujourd'hui : 1 conversation · ~0.13 $");
  const auto deux = un.ajoutant(1.5, soir + 1h, utc);
  EXPECT_EQ(deux.ligne(soir, utc), "Aujourd'hui : 2 conversations · ~1.63 $");
  EXPECT_EQ(deux.ajoutant(0.5, soir, tokyo), (CumulVoixDuJour{"2026-03-10", 0.5, 1}));
  EXPECT_FALSE(deux.ligne(soir, tokyo));
  EXPECT_FALSE((CumulVoixDuJour{"2026-03-09", 0, 0}.ligne(soir, utc)));
  EXPECT_EQ(un.ajoutant(std::nan(""), soir, utc), (CumulVoixDuJour{"2026-03-09", 0.126, 2}));
  EXPECT_EQ(deux.json().dump(), R"({"jour":"2026-03-09","sessions":2,"usd":1.626})");
  EXPECT_EQ(CumulVoixDuJour::lire(R"({"jour":"x","usd":3,"sessions":2.0,"autre":null})"),
            (CumulVoixDuJour{"x", 3, 2}));
  for (const char* refus :
       {R"({"usd":1,"sessions":1})", R"({"jour":"x","usd":1})", R"({"jour":"x","usd":"1","sessions":1})"})
    EXPECT_FALSE(CumulVoixDuJour::lire(refus)) << refus;
}

TEST(RealtimeCost, Estime) {
  EXPECT_EQ(RealtimeCost::line(12.34, 60, 30), "Realtime — 12.3 s · ~0.0180 $");
  EXPECT_EQ(RealtimeCost::line(HUGE_VAL, -5, std::nan("")), "Realtime — 0.0 s · ~0.0000 $");
}

}  // namespace
}  // namespace tarnavelle
