// The bridge's loop: one line in, at most one line out, strictly one after the other.
#pragma once

#include "Repartiteur.hpp"

namespace tarnavelle {

/// Serves every line of `entree` on `sortie` (file descriptors) and returns at the end of input. Each
/// reply leaves in one write; a write that fails is forgotten. The caller ignores SIGPIPE.
void servir(int entree, int sortie, Repartiteur& repartiteur);

}  // namespace tarnavelle
