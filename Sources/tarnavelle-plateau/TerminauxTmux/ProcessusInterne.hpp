// The processes of a terminal: a terminal is a session (setsid), and its leader's number names it as long as
// any process of it lives. Told apart from later bearers of the same number by when they began.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tarnavelle::Plateau::Processus {

struct Un {
  pid_t pid = 0;
  std::uint64_t debut = 0;  ///< in the platform's own unit, since boot or an epoch
  bool operator==(const Un&) const = default;
};

/// When that process began; nothing once it has ended.
std::optional<std::uint64_t> debut(pid_t pid);

/// A descriptor that can be read from the end of that process on; -1 when the system gives none (Linux
/// before 5.3), or the process has been waited for.
int guetDeFin(pid_t pid);

/// Those of these sessions that have not ended, and what they, or those that are known already, started in
/// sessions of its own. A program that starts itself anew so is a daemon, which others may share: it is not
/// among them, nor what it started.
std::vector<Un> deLaSuite(const std::vector<pid_t>& meneurs, const std::vector<Un>& connus);

/// Those that began with one of these in their environment, "NAME=value", as far as the system tells (Linux);
/// but for programs of those names that lead a session of their own, and what these started.
std::vector<Un> portant(const std::vector<std::string>& marques, const std::vector<std::string>& demons);

/// "sleep, processus 42".
std::string enMots(const Un& processus);

/// Sends a signal to a process, unless its number has passed to another.
void signaler(const Un& processus, int signal);

/// What differs from one start of the machine to the next; empty when the system does not say.
std::string demarrage();

}  // namespace tarnavelle::Plateau::Processus
