#include "Socle/Date.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>
#include <tuple>
#include <utility>

namespace tarnavelle {
namespace {

using namespace std::chrono;

TEST(Date, LireISO) {
  constexpr sys_seconds midi = sys_days(2026y / March / 9) + 12h + 34min + 56s;
  const std::pair<std::string, Date::Instant> cas[] = {
      {"2026-03-09t12:34:56z", midi},
      {"2026-03-09 14:34:56+02:00", midi},
      {"2026-03-09T07:04:56-0530", midi},
      {"2026-03-10T02:34:56+14", midi},
      {"2026-03-09T12:34:56,0789Z", midi + 78ms},
      {"2026-03-09T12:34:56." + std::string(1000, '9') + "Z", midi + 999ms},
      {"1969-12-31T23:59:59.999Z", sys_seconds(0s) - 1ms},
      {"9999-12-31T23:59:59-23:59", sys_days(10000y / January / 1) + 23h + 58min + 59s},
  };
  for (const auto& [texte, attendu] : cas)
    EXPECT_TRUE(Date::lireISO(texte) == attendu) << texte << " " << attendu.time_since_epoch().count();
  const std::string refuses[] = {
      // Not that shape
      "", "2026-03-09T12:34:56", "2026-03-09T12:34Z", "2026-3-9T12:34:56Z", "+2026-03-09T12:34:56Z",
      "2026-03-09T12:34:56.Z", " 2026-03-09T12:34:56Z", "2026-03-0\xFFT12:34:56Z",
      // No such day, no such hour
      "2026-00-09T12:34:56Z", "2026-13-09T12:34:56Z", "2026-03-00T12:34:56Z", "2026-04-31T12:34:56Z",
      "1900-02-29T12:34:56Z", "2026-03-09T24:00:00Z", "2026-03-09T12:60:00Z", "2026-03-09T23:59:60Z",
      // No such offset
      "2026-03-09T12:34:56+2", "2026-03-09T12:34:56+02:", "2026-03-09T12:34:56+24:00",
      "2026-03-09T12:34:56+02:60", "2026-03-09T12:34:56+02:00Z"};
  for (const auto& texte : refuses) EXPECT_FALSE(Date::lireISO(texte)) << texte;
}

TEST(Date, DepuisSecondes) {
  const std::pair<double, Date::Instant> cas[] = {
      {1.0005, Date::Instant(1001ms)},
      {9007199254740.0, Date::Instant(9007199254740000ms)},
      {9223372036854776.0, Date::Instant::max()},
      {-9223372036854776.0, Date::Instant::min()},
      {-std::numeric_limits<double>::infinity(), Date::Instant::min()},
      {std::nan(""), {}},
  };
  for (const auto& [secondes, attendu] : cas) EXPECT_EQ(Date::depuisSecondes(secondes), attendu) << secondes;
}

TEST(Calendrier, JourLocal) {
  const auto minuit = sys_days(2026y / March / 9);
  const std::tuple<system_clock::time_point, seconds, const char*> cas[] = {
      {minuit - 1us, 0s, "2026-03-08"},
      {minuit - 1us, 1s, "2026-03-09"},
      {minuit + 5h - 1us, -5h, "2026-03-08"},
      {sys_days(1969y / December / 31), 14h, "1969-12-31"}};
  for (const auto& [date, avance, attendu] : cas)
    EXPECT_EQ(Calendrier{[a = avance](sys_seconds) { return a; }}.jour(date), attendu) << avance.count();
  // Far from what the system's clock can say.
  EXPECT_EQ(Calendrier{}.jour(Date::depuisSecondes(4e11 - 4e10)), "9999-12-31");
  EXPECT_EQ(Calendrier{}.jour(Date::depuisSecondes(1e11)), "5138-11-16");
  EXPECT_EQ(Calendrier{}.jour(Date::Instant::max()) + Calendrier{}.jour(Date::Instant::min()),
            "9999-12-310000-01-01");
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
