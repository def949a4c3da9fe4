// How much each state needs the operator, and how it is called. Pure functions.
#pragma once

#include <string_view>

#include "Etats/Etat.hpp"

namespace tarnavelle::Plateau {

/// In words, for the operator: "attend une réponse".
std::string_view enMots(Etat etat);

/// The lower the more urgent, as `UrgenceVoliere` has it.
int urgence(Etat etat);

}  // namespace tarnavelle::Plateau
