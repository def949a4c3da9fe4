// Servers written in Python, one process of them per test process: what they print, and which authorities
// their clients trust. The first line tells where they listen ("ports" by name), who signed their
// certificates ("autorite") and their process ("pid").
#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>

#include "Socle/LectureJSON.hpp"

namespace tarnavelle::essai {

class ServeurPython {
 public:
  ServeurPython(const ServeurPython&) = delete;

  /// The authorities that clients of this process trust.
  void approuver(bool notre) const {
    ::setenv("SSL_CERT_FILE", notre ? accueil_.at("autorite").get<std::string>().c_str() : "/nulle/part", 1);
  }

  std::string port(const std::string& serveur) const {
    return std::to_string(accueil_.at("ports").at(serveur).get<int>());
  }

 protected:
  ServeurPython(const std::string& interprete, const std::string& script)
      : sortie_(::popen(("exec '" + interprete + "' '" + script + "'").c_str(), "r")) {
    std::setvbuf(sortie_, nullptr, _IONBF, 0);  // what poll cannot see must not be held here
    accueil_ = ligne();
    approuver(true);
  }
  ~ServeurPython() {
    ::kill(accueil_.value("pid", 0), SIGTERM);
    ::pclose(sortie_);
  }

  /// The next line that the servers print.
  Json ligne() {
    std::string lue;
    for (int c = 0; c != '\n'; lue += static_cast<char>(c)) {
      pollfd attente{::fileno(sortie_), POLLIN, 0};
      if (::poll(&attente, 1, 10000) <= 0 || (c = std::fgetc(sortie_)) == EOF) {
        ADD_FAILURE() << "the foreign server says nothing";
        return nullptr;
      }
    }
    return LectureJSON::valeur(lue).value_or(nullptr);
  }

 private:
  std::FILE* sortie_;
  Json accueil_;
};

/// How many threads ("task") or descriptors ("fd") this process has.
inline std::ptrdiff_t compter(const char* quoi) {
  // With a program's first thread, ThreadSanitizer starts one of its own that stays.
  [[maybe_unused]] static const bool dejaUnFil = (std::thread([] {}).join(), true);
  const std::filesystem::directory_iterator dossier(std::string("/proc/self/") + quoi);
  return std::distance(begin(dossier), end(dossier));
}

/// Waits until there are no more of them than before, ten seconds at most; how many there are then.
inline std::ptrdiff_t retomber(const char* quoi, std::ptrdiff_t avant) {
  for (int i = 0; i < 1000 && compter(quoi) > avant; ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  return compter(quoi);
}

}  // namespace tarnavelle::essai
