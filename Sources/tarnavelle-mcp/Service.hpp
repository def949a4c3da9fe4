// The bridge's service: one line in, at most one line out, strictly one after the other. One thread.
#pragma once

#include "Repartiteur.hpp"

namespace tarnavelle {

/// Serves every line of `entree` on `sortie` (file descriptors) and returns at the end of input. Each
/// reply leaves in one write. A write that fails is forgotten: the client has none of that reply, or its
/// beginning, and the next lines are served all the same. The caller ignores SIGPIPE.
void servir(int entree, int sortie, Repartiteur& repartiteur);

}  // namespace tarnavelle
