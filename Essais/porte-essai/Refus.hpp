// What the verbs of the trial board check before they act, and the French refusals that follow. A check
// that finds something returns it; one that does not fills a refusal. The caller holds the board.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Monde.hpp"
#include "Porte/ReponsePorte.hpp"

namespace tarnavelle::PorteEssai::Refus {

/// Longest text that the board keeps.
inline constexpr std::size_t octetsMax = 16 * 1024;

bool vide(std::string_view texte);
ReponsePorte manque(std::string_view argument);

/// Why a text cannot be kept: nothing in it, or too much.
std::optional<ReponsePorte> texte(std::string_view argument, std::string_view valeur);
std::optional<ReponsePorte> tropLong(std::string_view argument, std::string_view valeur);
std::optional<ReponsePorte> sorti(const Agent& agent);

/// The window of that name, or the one in view for an empty name; null after filling `refus`.
Fenetre* fenetreVisee(Monde& monde, const std::string& nom, ReponsePorte& refus);

/// The agent whose window bears that name, or is in view for an empty name; null after filling `refus`.
Agent* agentOuvert(Monde& monde, const std::string& nom, ReponsePorte& refus);

/// The agent named, its window open or not; null after filling `refus`.
Agent* session(Monde& monde, const std::string& nom, ReponsePorte& refus);

}  // namespace tarnavelle::PorteEssai::Refus
