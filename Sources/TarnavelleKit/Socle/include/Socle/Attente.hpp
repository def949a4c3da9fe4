// Waiting for a descriptor that its owner has made non-blocking, as some launchers do.
// Safe from any thread.
#pragma once

#include <poll.h>

#include <cerrno>

namespace tarnavelle {

/// After a failed read or write: when it would have blocked, waits until it no longer would, and returns
/// true. Any other failure returns false at once.
inline bool attendreSiOccupe(int descripteur, short evenement) {
  if (errno != EAGAIN && errno != EWOULDBLOCK) return false;
  pollfd attendu{descripteur, evenement, 0};
  ::poll(&attendu, 1, -1);
  return true;
}

}  // namespace tarnavelle
