// How the failure of a connection with Hermès is told to the operator. Safe from any thread. Private to this
// folder.
#pragma once

#include <string_view>

#include "Liaison/ErreurReseau.hpp"

namespace tarnavelle::interne {

/// In French, a clause without a full stop. `injoignable` is what it says of a server that cannot be reached.
std::string_view phraseReseau(ErreurReseau code, std::string_view injoignable);

}  // namespace tarnavelle::interne
