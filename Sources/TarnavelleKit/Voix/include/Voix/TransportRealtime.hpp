// The channel under a voice session, by the names the session has for it. TransportWebSocketRealtime is the
// real one; the thread rule is the channel's.
#pragma once

#include "Liaison/CanalTexte.hpp"

namespace tarnavelle {

using TransportRealtime = CanalTexte;
using RappelsTransportRealtime = RappelsCanal;

}  // namespace tarnavelle
