// Paths as texts: those of another machine, which no file system here can be asked about. Pure functions, safe
// from any thread.
#pragma once

#include <string_view>

namespace tarnavelle::Chemin {

/// The last component of a "/"-separated path, trailing slashes aside; "/" for the root.
std::string_view dernierComposant(std::string_view chemin);

}  // namespace tarnavelle::Chemin
