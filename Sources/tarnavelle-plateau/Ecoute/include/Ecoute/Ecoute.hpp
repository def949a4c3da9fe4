// The board's ear on Hermès: listens for as long as it lives, on a thread of its own, and puts each notice into
// the registry, once, across restarts and sudden deaths of the door. What is shown of them is read there.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Hermes/ReglageNtfy.hpp"
#include "Registre/Registre.hpp"
#include "Verbes/Moyens.hpp"

namespace tarnavelle::Plateau {

struct ReglagesEcoute {
  ReglageNtfy ntfy;
  ReglageNtfy alertes;                           ///< where the board's own alerts go: they are no notices
  std::function<void()> change;                  ///< there is something new to show; on the ear's thread
  std::function<void(const std::string&)> dire;  ///< what the operator has to know: sentences; the same
};

class Ecoute final : public Oreille {
 public:
  Ecoute(Registre& registre, ReglagesEcoute reglages);
  /// Ends at once.
  ~Ecoute() override;
  Ecoute(const Ecoute&) = delete;
  Ecoute& operator=(const Ecoute&) = delete;

  /// Listens from here on, if there is anything to listen to.
  void demarrer();

  std::string dit() const override;

 private:
  class Corps;
  std::unique_ptr<Corps> corps_;
};

}  // namespace tarnavelle::Plateau
