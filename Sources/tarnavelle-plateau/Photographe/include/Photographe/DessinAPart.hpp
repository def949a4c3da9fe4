// Pictures drawn by a program of their own, `tarnavelle-dessin`: the libraries that draw, and what they keep,
// stay out of the door. Safe from any thread; one picture at a time.
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "Photographe/Image.hpp"
#include "Socle/Environnement.hpp"

namespace tarnavelle::Plateau {

class DessinAPart {
 public:
  /// `programme`: an absolute path.
  DessinAPart(std::string programme, Environnement heritage)
      : programme_(std::move(programme)), heritage_(std::move(heritage)) {}

  /// Or, in French, why there is no picture: a sentence.
  Resultat<Image, std::string> peindre(const Grille& grille);

 private:
  const std::string programme_;
  const Environnement heritage_;
  std::mutex mutex_;
};

}  // namespace tarnavelle::Plateau
