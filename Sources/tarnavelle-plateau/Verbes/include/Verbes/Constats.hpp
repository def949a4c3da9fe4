// What is known of what the registry holds: an agent's or a window's end counts over what was last seen of it.
#pragma once

#include "Etats/Veille.hpp"
#include "Registre/Fiches.hpp"

namespace tarnavelle::Plateau {

Constat constater(const FicheAgent& agent, Veille& veille);

/// A shell at its prompt works, too: nobody tells.
Etat etatDe(const FicheFenetre& fenetre);

}  // namespace tarnavelle::Plateau
