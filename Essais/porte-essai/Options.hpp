// The command line of the trial door. Pure functions.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Accueil/ServeurHTTP.hpp"
#include "Socle/Resultat.hpp"

namespace tarnavelle::PorteEssai {

struct Options {
  Plateau::ReglagesServeur serveur;
  std::string jeton;              ///< empty when none was given
  std::filesystem::path fichier;  ///< empty when none was given
  bool aide = false;

  /// The options, or in French why they cannot be read. No message repeats a token.
  static Resultat<Options, std::string> lire(const std::vector<std::string>& arguments);
  /// The help text, ending with a line feed.
  static std::string texteAide();
};

}  // namespace tarnavelle::PorteEssai
