// A file that a command leaves for the operator.
#pragma once

#include <filesystem>
#include <string_view>

#include "Session.hpp"

namespace tarnavelle {

/// Writes the file, readable by its owner alone, and shows its path; or says why not and returns `echec`: what
/// stood there before then stands there still, whole.
int deposer(Session& session, const std::filesystem::path& chemin, std::string_view contenu, int echec);

}  // namespace tarnavelle
