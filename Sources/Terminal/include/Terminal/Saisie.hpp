// A value typed by a person, or given on standard input by a program. One thread at a time.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace tarnavelle {

/// The first line of standard input, cut beyond that many bytes; nothing when there is none. On a terminal what
/// is typed is not shown, and `inviter` is called before it is waited for; a signal that ends the process from
/// then on gives the terminal its echo back.
std::optional<std::string> saisirSansEcho(std::size_t octetsMax, const std::function<void()>& inviter);

}  // namespace tarnavelle
