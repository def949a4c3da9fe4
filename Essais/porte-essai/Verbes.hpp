// What each verb does to the board and what it answers, in French. `attendre`, the only verb that takes
// its time, is the Plateau's. Not thread-safe: the caller holds the board.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Monde.hpp"
#include "Porte/CommandeControle.hpp"
#include "Porte/ReponsePorte.hpp"

namespace tarnavelle::PorteEssai::Verbes {

/// Carries out a command other than `attendre` (which gets `pasCable` here). A refusal changes nothing.
ReponsePorte appliquer(Monde& monde, const CommandeControle& commande, Instant maintenant);

/// An agent's state in words: "travaille", "attend une réponse", "au repos", "sorti".
std::string_view enMots(EtatAgent etat);

/// A JSON value as the payload of a reply.
std::optional<PorteJSON> donnees(const Json& json);

}  // namespace tarnavelle::PorteEssai::Verbes
