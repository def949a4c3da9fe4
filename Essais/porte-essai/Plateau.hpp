// The trial board as its callers see it: one command in, one reply out, from any number of threads.
// What verbs do is in Verbes, what there is on the board in Monde; here are the lock, the clock and
// `attendre`, which waits without holding anyone else up. Thread-safe.
#pragma once

#include <condition_variable>
#include <mutex>

#include "Monde.hpp"
#include "Porte/CommandeControle.hpp"
#include "Porte/ReponsePorte.hpp"

namespace tarnavelle::PorteEssai {

/// Time as the board sees it.
class Horloge {
 public:
  virtual ~Horloge() = default;
  virtual Instant maintenant() const = 0;
  /// Returns when `reveil` is notified, at the latest at `echeance`; may return early.
  virtual void attendre(std::condition_variable& reveil, std::unique_lock<std::mutex>& verrou,
                        Instant echeance) = 0;
};

class HorlogeReelle final : public Horloge {
 public:
  Instant maintenant() const override;
  void attendre(std::condition_variable& reveil, std::unique_lock<std::mutex>& verrou,
                Instant echeance) override;
};

class Plateau {
 public:
  static constexpr std::chrono::seconds attenteDefaut{60};
  static constexpr std::chrono::seconds attenteMax{300};

  /// The clock must outlive the board.
  explicit Plateau(Horloge& horloge);

  ReponsePorte executer(const CommandeControle& commande);

  /// Ends every `attendre` under way and to come.
  void arreter();

 private:
  ReponsePorte attendre(const CommandeControle::attendre& commande);

  Horloge& horloge_;
  std::mutex mutex_;
  std::condition_variable reveil_;
  Monde monde_ = Monde::depart();
  bool arrete_ = false;
};

}  // namespace tarnavelle::PorteEssai
