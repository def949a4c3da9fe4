// The manual page, in French: all that the help tells, and what stands around it. Safe from any thread.
#pragma once

#include <string>

namespace tarnavelle::Manuel {

/// The page as troff with the "man" macros, in UTF-8.
std::string page();

}  // namespace tarnavelle::Manuel
