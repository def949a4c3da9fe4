#include "Terminal/Saisie.hpp"

#include <signal.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>

namespace tarnavelle {
namespace {

termios avantSilence{};

/// Gives the terminal its echo back, and leaves.
void renoncer(int signal) {
  ::tcsetattr(STDIN_FILENO, TCSANOW, &avantSilence);
  ::_exit(128 + signal);
}

}  // namespace

std::optional<std::string> saisirSansEcho(std::size_t octetsMax, const std::function<void()>& inviter) {
  const bool terminal = ::isatty(STDIN_FILENO) == 1 && ::tcgetattr(STDIN_FILENO, &avantSilence) == 0;
  if (terminal) {
    termios muet = avantSilence;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) std::signal(signal, renoncer);
    muet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &muet);
    inviter();
  }
  std::optional<std::string> ligne;
  for (char c = 0; (!ligne || ligne->size() <= octetsMax) && ::read(STDIN_FILENO, &c, 1) == 1;) {
    if (!ligne) ligne.emplace();
    if (c == '\n') break;
    *ligne += c;
  }
  if (terminal) ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &avantSilence);
  return ligne;
}

}  // namespace tarnavelle
