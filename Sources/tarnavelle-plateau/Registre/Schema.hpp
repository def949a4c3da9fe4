// The registry's tables, version by version: how a file of any version becomes one of the newest.
#pragma once

#include <cstdint>

namespace tarnavelle::Plateau {

class Seance;

namespace Schema {

/// What marks the file as a board's registry ("Tarn" in ASCII); kept for ever.
inline constexpr std::int64_t application = 0x5461726E;
extern const std::int64_t version;

/// Brings the tables from that version (0 for an empty file) to the newest one, in the sitting's transaction.
void migrer(Seance& seance, std::int64_t depuis);

}  // namespace Schema
}  // namespace tarnavelle::Plateau
