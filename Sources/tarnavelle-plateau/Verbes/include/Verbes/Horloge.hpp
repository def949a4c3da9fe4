// Time as the board sees it: a clock of its own for a test, the machine's otherwise.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "Etats/Etat.hpp"

namespace tarnavelle::Plateau {

/// Safe from any thread.
class Horloge {
 public:
  virtual ~Horloge() = default;
  virtual Instant maintenant() const = 0;
  /// Returns when `reveil` is notified, at the latest at `echeance`; may return early.
  virtual void attendre(std::condition_variable& reveil, std::unique_lock<std::mutex>& verrou,
                        Instant echeance) = 0;
  /// The calendar's date, for what is kept: it may jump.
  virtual std::chrono::system_clock::time_point date() const = 0;
};

class HorlogeReelle final : public Horloge {
 public:
  Instant maintenant() const override;
  void attendre(std::condition_variable& reveil, std::unique_lock<std::mutex>& verrou,
                Instant echeance) override;
  std::chrono::system_clock::time_point date() const override;
};

}  // namespace tarnavelle::Plateau
