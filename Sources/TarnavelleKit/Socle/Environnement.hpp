// The process environment as a value, read afresh each time it is asked for.
#pragma once

#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tarnavelle {

/// Variable names and values, well-formed UTF-8. Values are as the process holds them, untrimmed.
using Environnement = std::map<std::string, std::string, std::less<>>;

/// The named variables that are set. Invalid bytes are replaced by U+FFFD.
Environnement environnementDuProcessus(std::initializer_list<const char*> noms);

/// The value trimmed of white space and newlines; nothing when it is unset or nothing remains.
std::optional<std::string> variable(const Environnement& environnement, std::string_view nom);

}  // namespace tarnavelle
