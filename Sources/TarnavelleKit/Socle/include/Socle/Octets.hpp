// Bytes that are not text, such as sound.
#pragma once

#include <cstdint>
#include <vector>

namespace tarnavelle {

using Octets = std::vector<std::uint8_t>;

}  // namespace tarnavelle
