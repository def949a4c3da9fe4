// The manual page, in French, derived from the catalogue. Pure.
#pragma once

#include <string>

namespace tarnavelle::Manuel {

/// The page as troff with the "man" macros, in UTF-8.
std::string page();

}  // namespace tarnavelle::Manuel
