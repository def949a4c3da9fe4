// Calendar dates: the day an instant falls on where the user is, and date-times written in ISO 8601.
// Safe from any thread; `Calendrier::local` as long as none changes the environment, which names the time zone.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tarnavelle {

/// The Gregorian calendar in one time zone.
struct Calendrier {
  /// How far local time is ahead of UTC at an instant; UTC itself when not given.
  std::function<std::chrono::seconds(std::chrono::sys_seconds)> avance = [](std::chrono::sys_seconds) {
    return std::chrono::seconds(0);
  };

  /// The process's time zone, as it is at each question.
  static Calendrier local();

  /// The local day, written year-month-day with zero padding: "2026-03-09". Of what four digits cannot write,
  /// the first or the last day that they can.
  template <class Duree>
  std::string jour(std::chrono::sys_time<Duree> date) const {
    return jourDe(std::chrono::floor<std::chrono::seconds>(date));
  }
  /// The local time, to the second: "12:03:11".
  template <class Duree>
  std::string heure(std::chrono::sys_time<Duree> date) const {
    return heureDe(std::chrono::floor<std::chrono::seconds>(date));
  }

 private:
  std::chrono::sys_seconds ici(std::chrono::sys_seconds instant) const;
  std::string jourDe(std::chrono::sys_seconds instant) const;
  std::string heureDe(std::chrono::sys_seconds instant) const;
};

namespace Date {

/// Wide enough for any year that ISO 8601 writes.
using Instant = std::chrono::sys_time<std::chrono::milliseconds>;

/// Reads a whole text such as "2026-03-09T12:34:56Z" or "2026-03-09T12:34:56.789+02:00" (RFC 3339):
/// "T", "t" or a space between date and time, "." or "," before a fraction of any length (cut to
/// milliseconds), "Z", "z" or a mandatory offset ±hh:mm, ±hhmm or ±hh. Nothing else: no white space
/// around it, no day that does not exist, no hour 24, no leap second.
std::optional<Instant> lireISO(std::string_view texte);

/// That many seconds after 1970-01-01 00:00:00 UTC, to the nearest millisecond; the first or last instant
/// there is when they are out of range, 1970 when they are no number.
Instant depuisSecondes(double secondes);

}  // namespace Date

}  // namespace tarnavelle
