#include "Socle/Date.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

namespace tarnavelle {
namespace {

using namespace std::chrono;
using namespace std::string_literals;

TEST(Date, LitUneDateISO) {
  constexpr sys_seconds midi = sys_days(2026y / March / 9) + 12h + 34min + 56s;
  struct {
    std::string texte;
    Date::Instant attendu;
  } const cas[] = {
      {"2026-03-09T12:34:56Z", midi},
      {"2026-03-09t12:34:56z", midi},
      {"2026-03-09 14:34:56+02:00", midi},
      {"2026-03-09T14:34:56+0200", midi},
      {"2026-03-09T07:04:56-05:30", midi},
      {"2026-03-10T02:34:56+14", midi},
      {"2026-03-09T12:34:56.7-00:00", midi + 700ms},
      {"2026-03-09T12:34:56,0789Z", midi + 78ms},
      {"2026-03-09T12:34:56." + std::string(1000, '9') + "Z", midi + 999ms},
      {"2024-02-29T00:00:00Z", sys_days(2024y / February / 29)},
      {"1969-12-31T23:59:59.999Z", sys_seconds(0s) - 1ms},
      {"0000-01-01T00:00:00+23:59", sys_days(0y / January / 1) - 23h - 59min},
      {"9999-12-31T23:59:59-23:59", sys_days(10000y / January / 1) + 23h + 58min + 59s},
  };
  for (const auto& c : cas) {
    const auto lu = Date::lireISO(c.texte);
    ASSERT_TRUE(lu) << c.texte;
    EXPECT_EQ(lu->time_since_epoch().count(), c.attendu.time_since_epoch().count()) << c.texte;
  }
}

TEST(Date, RefuseCeQuiNEnEstPasUne) {
  const std::string cas[] = {
      "",
      "2026-03-09",
      "2026-03-09T12:34:56",
      "2026-03-09T12:34Z",
      "20260309T123456Z",
      "2026-3-9T12:34:56Z",
      "+2026-03-09T12:34:56Z",
      "-026-03-09T12:34:56Z",
      "12026-03-09T12:34:56Z",
      "2026-00-09T12:34:56Z",
      "2026-13-09T12:34:56Z",
      "2026-03-00T12:34:56Z",
      "2026-04-31T12:34:56Z",
      "2025-02-29T12:34:56Z",
      "1900-02-29T12:34:56Z",
      "2026-03-09T24:00:00Z",
      "2026-03-09T12:60:00Z",
      "2026-03-09T23:59:60Z",
      "2026-03-09T12:34:56.Z",
      "2026-03-09T12:34:56.5.5Z",
      "2026-03-09T12:34:56 Z",
      "2026-03-09T12:34:56+2",
      "2026-03-09T12:34:56+02:",
      "2026-03-09T12:34:56+02:0",
      "2026-03-09T12:34:56+24:00",
      "2026-03-09T12:34:56+02:60",
      "2026-03-09T12:34:56+02:00Z",
      " 2026-03-09T12:34:56Z",
      "2026-03-09T12:34:56Z\n",
      "2026-03-09T12:34:56Z\0"s,
      "2026-03-0\xFFT12:34:56Z",
      "\xD9\xA2\xD9\xA0-03-09T12:34:56Z",
      "2026-03-09T12:34:5" + std::string(100, '6') + "Z",
  };
  for (const auto& texte : cas) EXPECT_FALSE(Date::lireISO(texte)) << texte;
}

TEST(Date, DepuisSecondes) {
  constexpr double infini = std::numeric_limits<double>::infinity();
  struct {
    double secondes;
    Date::Instant attendu;
  } const cas[] = {
      {0, {}},
      {1700000000, sys_days(2023y / November / 14) + 22h + 13min + 20s},
      {1.0005, Date::Instant(1001ms)},
      {-1.5, Date::Instant(-1500ms)},
      {9007199254740.0, Date::Instant(9007199254740000ms)},
      {9223372036854776.0, Date::Instant::max()},
      {1e300, Date::Instant::max()},
      {infini, Date::Instant::max()},
      {-9223372036854776.0, Date::Instant::min()},
      {-infini, Date::Instant::min()},
      {std::nan(""), {}},
  };
  for (const auto& c : cas) EXPECT_EQ(Date::depuisSecondes(c.secondes), c.attendu) << c.secondes;
}

TEST(Calendrier, JourLocal) {
  const auto fixe = [](seconds avance) { return Calendrier{[avance](sys_seconds) { return avance; }}; };
  const auto minuit = sys_days(2026y / March / 9);
  struct {
    system_clock::time_point date;
    seconds avance;
    std::string attendu;
  } const cas[] = {
      {minuit, 0s, "2026-03-09"},
      {minuit - 1ns, 0s, "2026-03-08"},
      {minuit - 1ns, 1s, "2026-03-09"},
      {minuit + 5h, -5h, "2026-03-09"},
      {minuit + 5h - 1ns, -5h, "2026-03-08"},
      {minuit + 10h, 14h, "2026-03-10"},
      {sys_days(1969y / December / 31), 0s, "1969-12-31"},
  };
  for (const auto& c : cas) EXPECT_EQ(fixe(c.avance).jour(c.date), c.attendu) << c.avance.count();
}

/// In another process: the time zone is the whole process's.
TEST(Calendrier, SuitLeFuseauDuProcessus) {
  const auto jourA = [](const char* fuseau, sys_seconds date) {
    setenv("TZ", fuseau, 1);
    return Calendrier::local().jour(date);
  };
  const auto veilles = [&] {
    const char* paris = "CET-1CEST,M3.5.0,M10.5.0/3";
    const auto hiver = sys_days(2026y / January / 31) + 22h + 30min;
    const auto ete = sys_days(2026y / July / 31) + 22h + 30min;
    return jourA(paris, hiver) == "2026-01-31" && jourA(paris, ete) == "2026-08-01" &&
           jourA("EST5", ete) == "2026-07-31" && jourA("<+0130>-1:30", hiver) == "2026-02-01";
  };
  EXPECT_EXIT(std::exit(veilles() ? 0 : 1), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace tarnavelle
