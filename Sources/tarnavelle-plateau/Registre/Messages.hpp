// What an agent's end does to what others await of it.
#pragma once

#include <string_view>

#include "Socle/Date.hpp"

namespace tarnavelle::Plateau {
class Seance;
}

namespace tarnavelle::Plateau::Messages {

/// Whoever was to be told of something else is told that it has ended, and its relays are gone. It still bears
/// its name.
void rompre(Seance& seance, std::string_view agent, Date::Instant quand);

}  // namespace tarnavelle::Plateau::Messages
