// What this machine does outside the terminals: runs the line that attests a task, shows a page. Safe from any
// thread.
#pragma once

#include "Socle/Environnement.hpp"
#include "Verbes/Moyens.hpp"

namespace tarnavelle::Plateau {

class MachineReelle final : public Machine {
 public:
  static constexpr std::size_t sortieMax = 16 * 1024;  ///< bytes kept of the output: its end

  /// `heritage`: what programs are given of our environment.
  MachineReelle(Variables environnement, Environnement heritage)
      : environnement_(std::move(environnement)), heritage_(std::move(heritage)) {}

  Issue verifier(const Verification& quoi) override;
  std::optional<std::string> ouvrirWeb(const std::string& cible) override;

 private:
  const Variables environnement_;
  const Environnement heritage_;
};

}  // namespace tarnavelle::Plateau
