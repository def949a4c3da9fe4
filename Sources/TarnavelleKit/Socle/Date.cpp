#include "Socle/Date.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <ctime>

namespace tarnavelle {

using namespace std::chrono;

Calendrier Calendrier::local() {
  return {[](sys_seconds instant) {
    const auto t = static_cast<std::time_t>(instant.time_since_epoch().count());
    std::tm heure{};
    tzset();  // localtime_r alone would keep the zone it first saw
    return seconds(localtime_r(&t, &heure) ? heure.tm_gmtoff : 0);
  }};
}

sys_seconds Calendrier::ici(sys_seconds instant) const {
  constexpr sys_seconds premier = sys_days(year(0) / 1 / 1);
  constexpr sys_seconds dernier = sys_days(year(9999) / 12 / 31) + 24h - 1s;
  instant = std::clamp(instant, premier, dernier);
  return std::clamp(instant + avance(instant), premier, dernier);
}

std::string Calendrier::jourDe(sys_seconds instant) const {
  const year_month_day j{floor<days>(ici(instant))};
  char texte[32];
  std::snprintf(texte, sizeof texte, "%04d-%02u-%02u", int(j.year()), unsigned(j.month()), unsigned(j.day()));
  return texte;
}

std::string Calendrier::heureDe(sys_seconds instant) const {
  const auto la = ici(instant);
  const hh_mm_ss h(la - floor<days>(la));
  char texte[32];
  std::snprintf(texte, sizeof texte, "%02d:%02d:%02d", int(h.hours().count()), int(h.minutes().count()),
                int(h.seconds().count()));
  return texte;
}

namespace {

/// Takes a text apart from its start.
class Lecteur {
 public:
  explicit Lecteur(std::string_view texte) : reste_(texte) {}

  bool fini() const { return reste_.empty(); }

  /// One of these characters.
  bool caractere(std::string_view parmi) {
    if (reste_.empty() || parmi.find(reste_[0]) == std::string_view::npos) return false;
    reste_.remove_prefix(1);
    return true;
  }

  /// A number of exactly that many digits, at most `maximum`.
  bool nombre(int chiffres, int maximum, int& n) {
    n = 0;
    for (int i = 0; i < chiffres; ++i) {
      const auto c = chiffre();
      if (!c) return false;
      n = 10 * n + *c;
    }
    return n <= maximum;
  }

  std::optional<int> chiffre() {
    if (reste_.empty() || reste_[0] < '0' || reste_[0] > '9') return std::nullopt;
    const int c = reste_[0] - '0';
    reste_.remove_prefix(1);
    return c;
  }

 private:
  std::string_view reste_;
};

/// What follows the seconds; true when there is no fraction.
bool lireFraction(Lecteur& lecteur, milliseconds& fraction) {
  fraction = 0ms;
  if (!lecteur.caractere(".,")) return true;
  milliseconds poids = 100ms;
  auto c = lecteur.chiffre();
  if (!c) return false;
  for (; c; c = lecteur.chiffre(), poids /= 10) fraction += *c * poids;
  return true;
}

bool lireAvance(Lecteur& lecteur, minutes& avance) {
  avance = 0min;
  if (lecteur.caractere("Zz")) return true;
  const bool est = lecteur.caractere("+");
  if (!est && !lecteur.caractere("-")) return false;
  int h = 0, m = 0;
  if (!lecteur.nombre(2, 23, h)) return false;
  if (!lecteur.fini()) {
    lecteur.caractere(":");
    if (!lecteur.nombre(2, 59, m)) return false;
  }
  avance = hours(h) + minutes(m);
  if (!est) avance = -avance;
  return true;
}

}  // namespace

std::optional<Date::Instant> Date::lireISO(std::string_view texte) {
  Lecteur l(texte);
  int annee = 0, mois = 0, quantieme = 0, h = 0, m = 0, s = 0;
  milliseconds fraction{};
  minutes avance{};
  if (!(l.nombre(4, 9999, annee) && l.caractere("-") && l.nombre(2, 12, mois) && l.caractere("-") &&
        l.nombre(2, 31, quantieme) && l.caractere("Tt ") && l.nombre(2, 23, h) && l.caractere(":") &&
        l.nombre(2, 59, m) && l.caractere(":") && l.nombre(2, 59, s) && lireFraction(l, fraction) &&
        lireAvance(l, avance) && l.fini()))
    return std::nullopt;
  const year_month_day jour{year(annee), month(static_cast<unsigned>(mois)),
                            day(static_cast<unsigned>(quantieme))};
  if (!jour.ok()) return std::nullopt;
  return sys_days(jour) + hours(h) + minutes(m) + seconds(s) + fraction - avance;
}

Date::Instant Date::depuisSecondes(double secondes) {
  constexpr double borne = 9223372036854775808.0;  // 2^63, the first double that does not fit
  const double ms = std::round(secondes * 1000);
  if (ms >= borne) return Instant::max();
  if (ms < -borne) return Instant::min();
  return Instant(milliseconds(std::isnan(ms) ? 0 : static_cast<std::int64_t>(ms)));
}

}  // namespace tarnavelle
