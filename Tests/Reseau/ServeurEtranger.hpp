// The WebSocket servers of serveur_websocket.py, one set per test process, and a journal of what a
// client's callbacks tell, whatever thread they come on.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "Reseau/ServeurPython.hpp"

namespace tarnavelle::essai {

class ServeurEtranger : public ServeurPython {
 public:
  static ServeurEtranger& commun() {
    static ServeurEtranger serveur;
    return serveur;
  }

  /// Where the server of that name ("clair", "tls", …) carries out a scenario.
  std::string url(const std::string& serveur, const std::string& chemin) const {
    const bool tls = serveur != "clair" && serveur != "rapide";
    return (tls ? "wss://localhost:" : "ws://127.0.0.1:") + port(serveur) + chemin;
  }

  /// What the server saw of the next connection to that path that ends.
  Json rapport(const std::string& chemin) {
    while (true) {
      Json dit = ligne();
      if (dit.is_null() || dit.at("chemin") == chemin) return dit;
    }
  }

 private:
  ServeurEtranger() : ServeurPython(PYTHON_WEBSOCKETS, SERVEUR_WEBSOCKET) {}
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
