// The command line of a program that opens a door, as a table of what each option sets. Pure functions.
#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Socle/Resultat.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {

template <class Options>
struct LigneOption {
  std::string_view nom;
  std::string_view valeur;  ///< what its argument is, empty when it takes none
  std::string_view aide;
  bool (*poser)(Options& options, const std::string& valeur);  ///< whether the value is acceptable
};

namespace TableOptions {

/// The options, or in French why they cannot be read, without repeating a value. `aide`: the option that helps.
template <class Options>
Resultat<Options, std::string> lire(std::span<const LigneOption<Options>> table,
                                    const std::vector<std::string>& arguments, std::string_view aide) {
  const std::string voir = " Voir " + std::string(aide) + ".";
  Options options;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const auto option = std::ranges::find(table, arguments[i], &LigneOption<Options>::nom);
    if (option == table.end())
      return Sinon{"Option inconnue : « " + Texte::tronquer(arguments[i], 40) + " »." + voir};
    std::string valeur;
    if (!option->valeur.empty()) {
      if (++i == arguments.size()) return Sinon{"Il manque la valeur de " + std::string(option->nom) + "."};
      valeur = arguments[i];
    }
    if (!option->poser(options, valeur))
      return Sinon{"La valeur de " + std::string(option->nom) + " ne convient pas." + voir};
  }
  return options;
}

/// A line for each, ending with a line feed.
template <class Options>
std::string aide(std::span<const LigneOption<Options>> table) {
  std::size_t marge = 0;
  for (const auto& option : table) marge = std::max(marge, option.nom.size() + option.valeur.size() + 5);
  std::string lignes;
  for (const auto& option : table) {
    std::string gauche = "  " + std::string(option.nom) + " " + std::string(option.valeur);
    gauche.resize(marge, ' ');
    lignes.append(gauche).append(option.aide).append("\n");
  }
  return lignes;
}

}  // namespace TableOptions
}  // namespace tarnavelle::Plateau
