// Bytes that are not text, such as sound. A plain value: one thread at a time.
#pragma once

#include <cstdint>
#include <vector>

namespace tarnavelle {

using Octets = std::vector<std::uint8_t>;

}  // namespace tarnavelle
