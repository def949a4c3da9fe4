// What a shell loads so that it completes the client's command lines, by asking the client each time.
#pragma once

#include <optional>
#include <string_view>

namespace tarnavelle {

/// The script of bash, zsh or fish; nothing for another name.
std::optional<std::string_view> scriptCompletion(std::string_view shell);

}  // namespace tarnavelle
