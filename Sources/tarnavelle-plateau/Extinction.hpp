// The end of the whole board, at the operator's word: its terminals first, then, once he has been answered, the
// door. Safe from any thread.
#pragma once

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "TerminauxTmux/TerminauxTmux.hpp"
#include "Verbes/Moyens.hpp"

namespace tarnavelle::Plateau {

class Extinction final : public Extincteur {
 public:
  explicit Extinction(TerminauxTmux& terminaux) : terminaux_(terminaux) {}

  Resultat<std::vector<std::string>, std::string> eteindre(const std::vector<std::string>& cles) override;

  /// This thread's call has been answered: when it was the one that ended the board, this process is asked to
  /// end, as by a signal.
  void achever() const;

 private:
  TerminauxTmux& terminaux_;
  std::atomic<std::thread::id> eteinte_;  ///< whose call it was
};

}  // namespace tarnavelle::Plateau
