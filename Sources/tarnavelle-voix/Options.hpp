// The command line of the voice. Pure functions.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Socle/Resultat.hpp"

namespace tarnavelle::Voix {

struct Options {
  bool aide = false;
  bool version = false;
  bool peripheriques = false;
  bool reglages = false;
  std::optional<std::string> regler{};  ///< a setting, whose value is read from standard input

  bool pousser = false;
  bool json = false;
  std::optional<std::string> service{};
  std::optional<std::string> modele{};
  std::optional<std::string> voix{};
  std::optional<std::string> profil{};
  std::optional<std::string> micro{};
  std::optional<std::string> hautParleur{};
  std::optional<std::string> entree{};  ///< a file in place of the microphone; "-": standard input
  std::optional<std::string> sortie{};

  /// The options, or in French why the line makes no sense.
  static Resultat<Options, std::string> lire(const std::vector<std::string>& mots);
  /// Why no listening profile bears that name, in French; nothing when one does.
  static std::optional<std::string> refusProfil(std::string_view nom);
  /// The help text, ending with a line feed.
  static std::string texteAide();
};

}  // namespace tarnavelle::Voix
