// Pictures of real terminals: their cells asked of the ground, drawn, and put where the operator finds them.
// Safe from any thread; nothing is kept from one picture to the next.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>

#include "Photographe/Image.hpp"
#include "Socle/Date.hpp"
#include "Verbes/Moyens.hpp"

namespace tarnavelle::Plateau {

struct ReglagesPhotographe {
  std::filesystem::path dossier;    ///< the usual one: made 0700 if it is not there
  std::filesystem::path personnel;  ///< what "~" stands for
  /// Draws, or says in French why not. In a process of its own: `DessinAPart`.
  std::function<Resultat<Image, std::string>(const Grille&)> peindre;
  std::function<std::chrono::system_clock::time_point()> date = std::chrono::system_clock::now;
  Calendrier calendrier = Calendrier::local();
};

class PhotographeReel final : public Photographe {
 public:
  /// Beyond, what a picture weighs in a reply is told, in bytes of base64.
  static constexpr std::size_t lourd = 1'000'000;

  PhotographeReel(Terminaux& terminaux, ReglagesPhotographe reglages)
      : terminaux_(terminaux), reglages_(std::move(reglages)) {}

  Resultat<Photo, std::string> photographier(const Sujet& sujet, const Tirage& tirage) override;

 private:
  Resultat<std::filesystem::path, std::string> destination(const Sujet& sujet, const Tirage& tirage) const;

  Terminaux& terminaux_;
  const ReglagesPhotographe reglages_;
};

}  // namespace tarnavelle::Plateau
