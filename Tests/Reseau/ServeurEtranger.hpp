// The WebSocket servers of serveur_websocket.py, one process of them per test process, and a journal of what
// a client's callbacks tell, whatever thread they come on.
#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>

#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <mutex>

#include "Reseau/Restes.hpp"
#include "Socle/LectureJSON.hpp"

namespace tarnavelle::essai {

class ServeurEtranger {
 public:
  static ServeurEtranger& commun() {
    static ServeurEtranger serveur;
    return serveur;
  }

  /// The authorities that clients of this process trust: a file beside the one that signed.
  void approuver(const std::string& fichier = "ca.pem") const {
    const std::filesystem::path notre = accueil_.at("autorite").get<std::string>();
    ::setenv("SSL_CERT_FILE", notre.parent_path().append(fichier).c_str(), 1);
  }

  /// Where the server of that name ("clair", "tls", …) carries out a scenario.
  std::string url(const std::string& serveur, const std::string& chemin) const {
    return (serveur == "clair" ? "ws://127.0.0.1:" : "wss://localhost:") +
           accueil_.at("ports").at(serveur).dump() + chemin;
  }

  /// What the server saw of the next connection to that path that ends.
  Json rapport(const std::string& chemin) const {
    while (true) {
      Json dit = ligne();
      if (dit.is_null() || dit.at("chemin") == chemin) return dit;
    }
  }

 private:
  ServeurEtranger() { approuver(); }
  ~ServeurEtranger() {
    ::kill(accueil_.value("pid", 0), SIGTERM);
    ::pclose(sortie_);
  }

  /// The next line that the servers print.
  Json ligne() const {
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

  std::FILE* sortie_ = [] {
    const auto sortie = ::popen("exec '" PYTHON_WEBSOCKETS "' '" SERVEUR_WEBSOCKET "'", "r");
    std::setvbuf(sortie, nullptr, _IONBF, 0);  // what poll cannot see must not be held here
    return sortie;
  }();
  Json accueil_ = ligne();
};

/// Words in the order they came; long ones by their length.
class Journal {
 public:
  void noter(std::string ligne, std::string_view texte = {}) {
    if (!texte.empty())
      ligne.append(" ").append(texte.size() > 200 ? std::to_string(texte.size()) : std::string(texte));
    const std::lock_guard garde(verrou_);
    lignes_.push_back(std::move(ligne));
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

}  // namespace tarnavelle::essai
