// What a screen looks like: its text with colours and attributes, line by line. Plain values.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tarnavelle::Plateau {

struct Taille {
  int colonnes = 200;  ///< what a terminal has when nobody looks
  int lignes = 50;
  bool operator==(const Taille&) const = default;
};

struct Couleur {
  enum class Genre : std::uint8_t {
    propre,   ///< the terminal's own ink or ground
    palette,  ///< one of the 256
    vraie,    ///< 0xRRGGBB
  };
  Genre genre = Genre::propre;
  std::uint32_t valeur = 0;
  bool operator==(const Couleur&) const = default;
};

struct Style {
  Couleur encre{};
  Couleur fond{};
  bool gras = false;
  bool attenue = false;
  bool italique = false;
  bool souligne = false;
  bool inverse = false;
  bool cache = false;
  bool barre = false;
  bool operator==(const Style&) const = default;
};

/// Text of one style: well-formed UTF-8 without control characters.
struct Troncon {
  std::string texte;
  Style style{};
  bool operator==(const Troncon&) const = default;
};

struct Peinture {
  struct Curseur {
    int ligne = 0;  ///< from 0, as is the column
    int colonne = 0;
    bool operator==(const Curseur&) const = default;
  };
  Taille taille;
  std::vector<std::vector<Troncon>> lignes;  ///< blanks that a line ends with may be missing
  std::optional<Curseur> curseur;            ///< nothing while the program hides it
};

}  // namespace tarnavelle::Plateau
