// The WebSocket servers of serveur_websocket.py, one set per test process, and a journal of what a
// client's callbacks tell, whatever thread they come on.
#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Socle/LectureJSON.hpp"

namespace tarnavelle::essai {

class ServeurEtranger {
 public:
  static ServeurEtranger& commun() {
    static ServeurEtranger serveur;
    return serveur;
  }

  /// Where the server of that name ("clair", "tls", …) carries out a scenario.
  std::string url(const std::string& serveur, const std::string& chemin) const {
    const bool tls = serveur != "clair" && serveur != "rapide";
    const auto port = std::to_string(accueil_.at("ports").at(serveur).get<int>());
    return (tls ? "wss://localhost:" : "ws://127.0.0.1:") + port + chemin;
  }

  /// What the server saw of the next connection to that path that ends.
  Json rapport(const std::string& chemin) {
    while (true) {
      Json dit = ligne();
      if (dit.is_null() || dit.at("chemin") == chemin) return dit;
    }
  }

  /// The authorities that clients of this process trust.
  void approuver(bool notre) const {
    ::setenv("SSL_CERT_FILE", notre ? accueil_.at("autorite").get<std::string>().c_str() : "/nulle/part", 1);
  }

 private:
  ServeurEtranger() : sortie_(::popen("exec '" PYTHON_WEBSOCKETS "' '" SERVEUR_WEBSOCKET "'", "r")) {
    std::setvbuf(sortie_, nullptr, _IONBF, 0);  // what poll cannot see must not be held here
    accueil_ = ligne();
    approuver(true);
  }
  ~ServeurEtranger() {
    ::kill(accueil_.value("pid", 0), SIGTERM);
    ::pclose(sortie_);
  }

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

  std::FILE* sortie_;
  Json accueil_;
};

/// Words in the order they came; long ones by their length.
class Journal {
 public:
  void noter(std::string_view genre, std::string_view texte = {}) {
    const std::lock_guard garde(verrou_);
    lignes_.push_back(std::string(genre).append(" ").append(texte.size() > 200 ? std::to_string(texte.size())
                                                                               : std::string(texte)));
    arrivee_.notify_all();
  }

  /// The lines once there are `n` of them, or those there are after ten seconds.
  std::vector<std::string> attendre(std::size_t n) {
    std::unique_lock garde(verrou_);
    arrivee_.wait_for(garde, std::chrono::seconds(10), [&] { return lignes_.size() >= n; });
    return lignes_;
  }

 private:
  std::mutex verrou_;
  std::condition_variable arrivee_;
  std::vector<std::string> lignes_;
};

/// How many threads ("task") or descriptors ("fd") this process has.
inline std::ptrdiff_t compter(const char* quoi) {
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
