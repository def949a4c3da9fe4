// What a shell loads so that it completes the client's command lines, by asking the client each time.
#pragma once

#include <span>
#include <string_view>

namespace tarnavelle {

struct ScriptCompletion {
  std::string_view shell;  ///< its name
  std::string_view texte;
};

/// One for each shell that is served.
std::span<const ScriptCompletion> scriptsCompletion();

}  // namespace tarnavelle
