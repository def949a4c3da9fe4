#include "Voix/UsageRealtime.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace tarnavelle {
namespace {

using namespace std::chrono;
constexpr std::int64_t plein = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t creux = std::numeric_limits<std::int64_t>::min();
const TarifRealtime grand = TarifRealtime::pour("gpt-realtime");
const TarifRealtime mini = TarifRealtime::pour("gpt-realtime-2.1-mini");

TEST(TarifRealtime, PourUnModele) {
  const auto& table = TarifRealtime::table();
  struct {
    const char* model;
    const TarifRealtime& attendu;
  } const cas[] = {
      {"gpt-realtime-2.1-mini", table.at("gpt-realtime-2.1-mini")},
      {" \tGPT-Realtime-2.1-Mini\u00a0", table.at("gpt-realtime-2.1-mini")},
      {"gpt-realtime-2.1-mini-2026-01-15", table.at("gpt-realtime-2.1-mini")},
      {"gpt-realtime-2.1-min", table.at("gpt-realtime-2.1")},
      {"gpt-realtime-2025-08-28", table.at("gpt-realtime")},
      {"gpt-realtim", TarifRealtime::defaut},
      {"grok-voice-think-fast-2.0", TarifRealtime::defaut},
      {"", TarifRealtime::defaut},
  };
  for (const auto& c : cas) EXPECT_EQ(&TarifRealtime::pour(c.model), &c.attendu) << c.model;
}

TEST(LectureUsageRealtime, LitLUsage) {
  struct {
    const char* usage;
    std::optional<TourRealtime> attendu;
  } const cas[] = {
      {R"({"input_token_details":{"text_tokens":119,"audio_tokens":41,"cached_tokens":64,
            "cached_tokens_details":{"text_tokens":60,"audio_tokens":4}},
          "output_token_details":{"text_tokens":30,"audio_tokens":91}})",
       TourRealtime{59, 37, 64, 30, 91}},
      {R"({"input_token_details":{"text_tokens":10,"audio_tokens":5},"total_tokens":99})", TourRealtime{10, 5}},
      {R"({"input_token_details":{"text_tokens":10,"cached_tokens_details":{"text_tokens":64}}})",
       TourRealtime{}},
      {R"({"input_token_details":{"text_tokens":-9223372036854775808,"audio_tokens":-3,
            "cached_tokens_details":{"text_tokens":9223372036854775807,"audio_tokens":-5}}})",
       TourRealtime{}},
      {R"({"input_token_details":{"text_tokens":9223372036854775807,"audio_tokens":1e300,
            "cached_tokens":9223372036854775808,"cached_tokens_details":{"text_tokens":-1}}})",
       TourRealtime{plein}},
      {R"({"output_token_details":{"text_tokens":12.9,"audio_tokens":"12"}})", TourRealtime{.texteSortie = 12}},
      {R"({"input_token_details":"unimplemented","output_token_details":[1]})", TourRealtime{}},
      {"{}", TourRealtime{}},
      {"null", std::nullopt},
      {"[]", std::nullopt},
  };
  for (const auto& c : cas)
    EXPECT_EQ(LectureUsageRealtime::lire(std::string(R"({"response":{"usage":)") + c.usage + "}}"), c.attendu)
        << c.usage;
  for (const char* trame : {R"({"usage":{}})", R"({"response":{}})", R"({"response":"x"})", "[]", "{", ""})
    EXPECT_FALSE(LectureUsageRealtime::lire(trame)) << trame;
}

TEST(TourRealtime, SAjouteSansDeborder) {
  EXPECT_EQ((TourRealtime{1, 2, 3, 4, 5} + TourRealtime{10, 20, 30, 40, 50}),
            (TourRealtime{11, 22, 33, 44, 55}));
  EXPECT_EQ((TourRealtime{plein, plein, creux, creux, creux} + TourRealtime{1, -1, -1, 1, plein}),
            (TourRealtime{plein, plein - 1, creux, creux + 1, -1}));
}

TEST(UsageRealtime, CouteEtSeDit) {
  UsageRealtime usage;
  EXPECT_EQ(usage.ligne(0, grand), "Conversation — 0 s · 0 tours · ~0.0000 $");
  usage.ajouter({1'000'000, 2'000'000, 3'000'000, 4'000'000, 5'000'000});
  usage.ajouter({0, 100, 0, 0, 10});
  EXPECT_EQ(usage, (UsageRealtime{2, {1'000'000, 2'000'100, 3'000'000, 4'000'000, 5'000'010}}));
  EXPECT_DOUBLE_EQ(usage.cout(grand), 4 + 64.0032 + 1.2 + 64 + 320.00064);
  EXPECT_DOUBLE_EQ(usage.cout(mini), 0.6 + 20.001 + 0.9 + 9.6 + 100.0002);
  struct {
    double duree;
    const char* attendue;
  } const cas[] = {
      {59.9, "59 s"},
      {60, "1 min 0 s"},
      {125, "2 min 5 s"},
      {-3, "0 s"},
      {std::nan(""), "0 s"},
      {HUGE_VAL, "0 s"},
      {1e300, "150000000000000000 min 0 s"},
  };
  for (const auto& c : cas)
    EXPECT_EQ(usage.ligne(c.duree, grand),
              std::string("Conversation — ") + c.attendue + " · 2 tours · ~453.2038 $");
}

TEST(CumulVoixDuJour, CompteUnJour) {
  const Calendrier utc, tokyo{[](sys_seconds) { return 9h; }};
  const auto soir = sys_days(2026y / March / 9) + 20h;
  const CumulVoixDuJour vide;
  const auto un = vide.ajoutant(0.126, soir, utc);
  EXPECT_EQ(un, (CumulVoixDuJour{"2026-03-09", 0.126, 1}));
  EXPECT_EQ(un.ligne(soir, utc), "Aujourd'hui : 1 conversation · ~0.13 $");
  const auto deux = un.ajoutant(1.5, soir + 1h, utc);
  EXPECT_EQ(deux, (CumulVoixDuJour{"2026-03-09", 1.626, 2}));
  EXPECT_EQ(deux.ligne(soir, utc), "Aujourd'hui : 2 conversations · ~1.63 $");
  EXPECT_EQ(deux.ajoutant(0.5, soir, tokyo), (CumulVoixDuJour{"2026-03-10", 0.5, 1}));
  EXPECT_FALSE(deux.ligne(soir, tokyo));
  EXPECT_FALSE(vide.ligne(soir, utc));
  EXPECT_EQ(un.ajoutant(std::nan(""), soir, utc), (CumulVoixDuJour{"2026-03-09", 0.126, 2}));
  EXPECT_EQ(un.ajoutant(HUGE_VAL, soir, tokyo), (CumulVoixDuJour{"2026-03-10", 0, 1}));
  EXPECT_EQ((CumulVoixDuJour{"2026-03-09", 1e308, plein}.ajoutant(1e308, soir, utc)),
            (CumulVoixDuJour{"2026-03-09", 1e308, plein}));

  EXPECT_EQ(deux.json().dump(), R"({"jour":"2026-03-09","sessions":2,"usd":1.626})");
  EXPECT_EQ(CumulVoixDuJour::lire(deux.json().dump()), deux);
  EXPECT_EQ(CumulVoixDuJour::lire(R"({"jour":"x","usd":3,"sessions":2.0,"autre":null})"),
            (CumulVoixDuJour{"x", 3, 2}));
  for (const char* texte :
       {"", "[]", R"({"usd":1,"sessions":1})", R"({"jour":1,"usd":1,"sessions":1})", R"({"jour":"x","usd":1})",
        R"({"jour":"x","usd":"1","sessions":1})", R"({"jour":"x","usd":1,"sessions":1e300})"})
    EXPECT_FALSE(CumulVoixDuJour::lire(texte)) << texte;
}

TEST(RealtimeCost, Estime) {
  EXPECT_DOUBLE_EQ(RealtimeCost::estimate(60, 30), 0.018);
  EXPECT_EQ(RealtimeCost::estimate(std::nan(""), -1), 0);
  EXPECT_EQ(RealtimeCost::line(12.34, 60, 30), "Realtime — 12.3 s · ~0.0180 $");
  EXPECT_EQ(RealtimeCost::line(HUGE_VAL, -5, std::nan("")), "Realtime — 0.0 s · ~0.0000 $");
  EXPECT_EQ(RealtimeCost::line(1e308, 0, 0).size(), 309 + std::string("Realtime — .0 s · ~0.0000 $").size());
}

}  // namespace
}  // namespace tarnavelle
