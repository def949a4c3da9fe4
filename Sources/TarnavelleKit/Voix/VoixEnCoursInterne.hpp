// The model's voice on its way to the operator's ears: how long it still lasts, and what of it he has not heard
// when it is silenced. One thread at a time.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Voix/FenetreLecture.hpp"

namespace tarnavelle {

class VoixEnCoursInterne {
 public:
  using Secondes = FenetreLecture::Secondes;

  /// Samples of that item, played after those before.
  void donner(std::string_view item, std::int64_t echantillons, Secondes maintenant);

  bool audible(Secondes maintenant) const { return fenetre_.audible(maintenant); }
  /// From when on `audible` is false, unless more is given.
  Secondes fin() const { return fenetre_.finDeLecture + FenetreLecture::traine; }

  /// An item that was cut short, and how much of it was heard.
  struct Coupe {
    std::string item;
    std::chrono::milliseconds entendu;
    bool operator==(const Coupe&) const = default;
  };
  /// Silence: the items cut short. `perdus`: the samples that were not heard; absent, the clock tells.
  std::vector<Coupe> couper(std::optional<std::int64_t> perdus, Secondes maintenant);

  /// The items are of a session that is over; their sound plays on.
  void oublierItems() { parts_.clear(); }

 private:
  static constexpr std::size_t partsMax = 8;  ///< items that may be waiting to be heard at once

  struct Part {
    std::string item;
    std::int64_t echantillons = 0;
  };
  FenetreLecture fenetre_;
  std::deque<Part> parts_;  ///< the latest, in order
};

}  // namespace tarnavelle
