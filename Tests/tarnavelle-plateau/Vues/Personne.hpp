// A person at a terminal: a pseudo-terminal in which tmux is attached, and what it has drawn there.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace tarnavelle::Plateau::essai {

class Personne {
 public:
  Personne(std::vector<std::string> mots, unsigned short colonnes, unsigned short lignes) {
    terminal_ = ::posix_openpt(O_RDWR | O_NOCTTY);
    ::grantpt(terminal_);
    ::unlockpt(terminal_);
    const int sien = ::open(::ptsname(terminal_), O_RDWR | O_NOCTTY);
    const winsize taille{lignes, colonnes, 0, 0};
    ::ioctl(sien, TIOCSWINSZ, &taille);
    pid_ = ::fork();
    if (pid_ == 0) {
      ::setsid();
      ::ioctl(sien, TIOCSCTTY, 0);
      for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::dup2(sien, fd);
      ::unsetenv("TMUX");
      ::setenv("TERM", "xterm-256color", 1);
      std::vector<char*> pointeurs;
      for (std::string& mot : mots) pointeurs.push_back(mot.data());
      pointeurs.push_back(nullptr);
      ::execvp(pointeurs.front(), pointeurs.data());
      ::_exit(127);
    }
    ::close(sien);
    lecteur_ = std::thread([this] { lire(); });
  }
  ~Personne() { partir(); }
  Personne(const Personne&) = delete;
  Personne& operator=(const Personne&) = delete;

  void partir() {
    if (pid_ <= 0) return;
    parti_ = true;
    ::kill(pid_, SIGHUP);
    ::waitpid(pid_, nullptr, 0);
    lecteur_.join();
    ::close(terminal_);
    pid_ = 0;
  }
  void redimensionner(unsigned short colonnes, unsigned short lignes) {
    const winsize taille{lignes, colonnes, 0, 0};
    ::ioctl(terminal_, TIOCSWINSZ, &taille);
  }
  void taper(std::string_view octets) { static_cast<void>(!::write(terminal_, octets.data(), octets.size())); }
  /// All that was drawn, sequences included.
  std::string dessine() {
    const std::lock_guard garde(verrou_);
    return dessine_;
  }
  bool voit(std::string_view texte) { return dessine().find(texte) != std::string::npos; }

 private:
  void lire() {
    for (char octets[4096];;) {
      pollfd attendu{terminal_, POLLIN, 0};
      if (::poll(&attendu, 1, 50) == 0 && !parti_) continue;
      const auto lus = ::read(terminal_, octets, sizeof octets);
      if (lus <= 0) return;
      const std::lock_guard garde(verrou_);
      dessine_.append(octets, static_cast<std::size_t>(lus));
    }
  }

  pid_t pid_ = 0;
  int terminal_ = -1;
  std::atomic<bool> parti_ = false;
  std::mutex verrou_;
  std::string dessine_;
  std::thread lecteur_;
};

}  // namespace tarnavelle::Plateau::essai
