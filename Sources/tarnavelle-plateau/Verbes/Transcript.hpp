// The last reply that a program's own record holds. Reads the end of the file only.
#pragma once

#include <optional>
#include <string>

namespace tarnavelle::Plateau::Transcript {

/// Nothing when there is no such record, when it cannot be read, or when its end holds no reply.
std::optional<std::string> derniereReponse(const std::string& chemin);

}  // namespace tarnavelle::Plateau::Transcript
