// The data of a reply laid out for reading. Lists of records become tables, whose columns are aligned by
// what the terminal shows. Safe from any thread.
#pragma once

#include <cstddef>
#include <optional>

#include "Socle/JSON.hpp"
#include "Sortie.hpp"

namespace tarnavelle::Affichage {

/// Tables are cut to `colonnes`, when given; all the rest stands whole. What could drive a terminal is
/// written out, the line feeds of texts that have lines of their own aside.
Page exposer(const Json& donnees, std::optional<std::size_t> colonnes);

}  // namespace tarnavelle::Affichage
