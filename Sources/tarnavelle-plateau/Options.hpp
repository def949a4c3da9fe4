// The command line of the board. Pure functions.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Socle/Resultat.hpp"

namespace tarnavelle::Plateau {

struct Options {
  bool detache = false;
  bool reprendre = false;
  bool service = false;  ///< write what would open it with the user's session
  bool aide = false;
  bool version = false;
  std::string socket = "tarnavelle";
  std::filesystem::path dossierEtat;  ///< empty: the usual one
  std::filesystem::path ssh;          ///< ssh's configuration; empty: the user's own

  /// The options, or in French why they cannot be read.
  static Resultat<Options, std::string> lire(const std::vector<std::string>& arguments);
  /// The help text, ending with a line feed.
  static std::string texteAide();
};

}  // namespace tarnavelle::Plateau
