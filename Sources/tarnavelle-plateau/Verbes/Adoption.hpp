// What a board finds when its door opens: agents and windows that outlived the last one, in terminals that the
// registry knows, or does not know any more.
#pragma once

#include <optional>

#include "Atelier.hpp"
#include "Registre/Avarie.hpp"

namespace tarnavelle::Plateau {

/// Takes up every terminal that stands there, and notes what has ended. Where the terminals do not answer,
/// nothing changes: `reprendreAdoption` does it later.
std::optional<Avarie> adopterLesTerminaux(Atelier& atelier);

/// What could not be done when the door opened, or when the terminals were lost, as soon as they answer.
void reprendreAdoption(Atelier& atelier);

}  // namespace tarnavelle::Plateau
