// The signals that end a door. For its `main`, before any thread is started.
#pragma once

namespace tarnavelle::Plateau::Signaux {

/// Holds them back in every thread until `attendreFin` hears one; lets a peer that is gone, and a disk that is
/// full, be failures that are told.
void retenir();
/// Returns once one has come.
void attendreFin();
/// Whether one has come.
bool finDemandee();

}  // namespace tarnavelle::Plateau::Signaux
