// A world in which streams follow a script and time passes at once: what was asked of it, and when.
#pragma once

#include <cmath>
#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "Socle/FluxLignes.hpp"

namespace tarnavelle::essai {

/// One connection: what the server answers, then what comes and after how many seconds.
struct Ouverture {
  std::variant<int, ErreurReseau> reponse;
  std::vector<std::pair<double, LectureFlux>> suite = {};
};

inline std::pair<double, LectureFlux> ligne(double apres, std::string_view texte) {
  return {apres, {LectureFlux::ligne{texte}}};
}

class MondeFlux final : public FluxLignes {
 public:
  /// Once the script is over, the stream is interrupted.
  explicit MondeFlux(std::vector<Ouverture> script) : script_(script.begin(), script.end()) {}

  MondeFlux(const MondeFlux&) = delete;

  std::vector<std::string> journal;
  std::vector<RequeteHTTP> requetes;
  double secondes = 0;
  std::function<void()> pendantLaPause = [] {};

  void noter(const std::string& fait) { journal.push_back(std::to_string(std::lround(secondes)) + " " + fait); }

  std::variant<int, ErreurReseau> ouvrir(const RequeteHTTP& requete) override {
    fermer();
    if (interrompu_ || script_.empty()) return ErreurReseau::annulee;
    const auto question = requete.url.find('?');
    noter(requete.methode + (question == std::string::npos ? "" : requete.url.substr(question)));
    requetes.push_back(requete);
    ouverte_ = std::move(script_.front());
    script_.pop_front();
    return ouverte_.reponse;
  }

  LectureFlux suivante(std::optional<std::chrono::milliseconds> attente) override {
    if (interrompu_) return {LectureFlux::perte{ErreurReseau::annulee}};
    if (rang_ == ouverte_.suite.size() && !attente) return {LectureFlux::perte{ErreurReseau::delaiDepasse}};
    const double patience = attente ? std::chrono::duration<double>(*attente).count() : 1e9;
    double silence = 1e12;
    if (rang_ < ouverte_.suite.size()) silence = ouverte_.suite[rang_].first - passe_;
    secondes += std::min(silence, patience);
    if (silence > patience) {
      passe_ += patience;
      return {LectureFlux::attente{}};
    }
    passe_ = 0;
    return ouverte_.suite[rang_++].second;
  }

  void fermer() override {
    rang_ = 0;
    passe_ = 0;
    ouverte_ = {ErreurReseau::autre};
  }

  void pauser(std::chrono::milliseconds duree) override {
    pendantLaPause();
    if (!interrompu_) secondes += std::chrono::duration<double>(duree).count();
  }

  void interrompre() override { interrompu_ = true; }

 private:
  std::deque<Ouverture> script_;
  Ouverture ouverte_{ErreurReseau::autre};
  std::size_t rang_ = 0;
  double passe_ = 0;  ///< seconds waited already for what comes next
  bool interrompu_ = false;
};

}  // namespace tarnavelle::essai
