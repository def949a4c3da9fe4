// What a voice conversation consumes and costs: the token counts that the service reports with each
// finished response, the price of each model, the conversation's total and the day's.
// Where the day's record is kept is its owner's business. Amounts are US dollars, written the same
// whatever the process's locale. Plain values and pure functions, safe from any thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "Socle/Date.hpp"
#include "Socle/JSON.hpp"

namespace tarnavelle {

/// Prices of one model, in dollars per million tokens.
struct TarifRealtime {
  double texteEntree = 0;
  double audioEntree = 0;
  double entreeCachee = 0;  ///< text or audio
  double texteSortie = 0;
  double audioSortie = 0;

  bool operator==(const TarifRealtime&) const = default;

  /// By model name.
  static const std::map<std::string, TarifRealtime, std::less<>>& table();
  /// What a model that the table does not know is taken to cost.
  static const TarifRealtime defaut;

  /// The row of that name, blanks around it and case aside; else the row with the longest name that
  /// begins it, so that a dated variant costs what its model does; else `defaut`.
  static const TarifRealtime& pour(std::string_view model);
};

/// Token counts of one response, or of several added up.
struct TourRealtime {
  std::int64_t texteEntreeNonCache = 0;
  std::int64_t audioEntreeNonCache = 0;
  std::int64_t entreeCachee = 0;
  std::int64_t texteSortie = 0;
  std::int64_t audioSortie = 0;

  bool operator==(const TourRealtime&) const = default;

  /// Field by field; a sum that 64 bits cannot hold stays at the largest number they can.
  TourRealtime& operator+=(const TourRealtime& autre);
  friend TourRealtime operator+(TourRealtime a, const TourRealtime& b) { return a += b; }
};

/// Reads the usage that an event reports under "response", "usage". A count that is missing, negative,
/// no number or beyond 64 bits reads as 0. Nothing when there is no usage object.
namespace LectureUsageRealtime {
std::optional<TourRealtime> lire(std::string_view texte);
/// The same from the event already parsed. Not an overload: a text converts to both parameters.
std::optional<TourRealtime> lireObjet(const Json& objet);
/// The same; when that usage is missing or empty, the one that some services report at the event's top level.
std::optional<TourRealtime> lireOuQuIlSoit(const Json& objet);
}  // namespace LectureUsageRealtime

/// What one conversation has consumed.
struct UsageRealtime {
  std::int64_t tours = 0;  ///< responses counted
  TourRealtime total;

  bool operator==(const UsageRealtime&) const = default;

  void ajouter(const TourRealtime& tour);
  double cout(const TarifRealtime& tarif) const;
  /// The conversation in one line. A duration that is negative or not finite shows as 0 s.
  std::string ligne(double dureeSecondes, const TarifRealtime& tarif) const;
};

/// What the conversations of one day have cost; kept from one run to the next as a JSON object.
struct CumulVoixDuJour {
  std::string jour;  ///< as `jourDe` writes it
  double usd = 0;
  std::int64_t sessions = 0;  ///< conversations counted

  bool operator==(const CumulVoixDuJour&) const = default;

  /// The day that an instant falls on, such as "2026-03-09".
  static std::string jourDe(std::chrono::system_clock::time_point date, const Calendrier& calendrier);

  /// With one more conversation of that cost, or started anew when the day is another. An amount that
  /// is not finite counts as 0.
  CumulVoixDuJour ajoutant(double montant, std::chrono::system_clock::time_point le,
                           const Calendrier& calendrier) const;

  /// The day in one line; nothing when it is over or no conversation was held.
  std::optional<std::string> ligne(std::chrono::system_clock::time_point le,
                                   const Calendrier& calendrier) const;

  /// Nothing when a key is missing or mistyped.
  static std::optional<CumulVoixDuJour> lire(std::string_view texte);
  Json json() const;
};

/// A rough cost from the lengths of sound alone, for want of token counts. Durations are seconds;
/// negative or not finite, they count as 0.
namespace RealtimeCost {
double estimate(double inSeconds, double outSeconds);
std::string line(double durationSeconds, double inSeconds, double outSeconds);
}  // namespace RealtimeCost

}  // namespace tarnavelle
