// The board as the voice sees it: what "etat" answers, told to the model, and what has happened since.
// Pure functions and plain values.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Socle/JSON.hpp"
#include "Voix/MondeVoix.hpp"

namespace tarnavelle::Voix {

struct AgentVu {
  std::string nom;
  std::string programme;  ///< such as "claude"
  std::string etat;       ///< in French, as the board says it
  std::string scene;      ///< empty: the visible one
  bool operator==(const AgentVu&) const = default;

  bool travaille() const { return etat == "travaille"; }
  bool attend() const { return etat == "attend une réponse"; }
};

struct PlateauVu {
  std::vector<AgentVu> agents;
  MondeVoix monde;
  bool operator==(const PlateauVu&) const = default;

  /// Of the door's reply; nothing when it is none, or a refusal.
  static std::optional<PlateauVu> lire(std::string_view reponse);
};

/// The agents that wait for an answer now and did not before.
std::vector<std::string> appelsNouveaux(const PlateauVu& avant, const PlateauVu& maintenant);

}  // namespace tarnavelle::Voix
