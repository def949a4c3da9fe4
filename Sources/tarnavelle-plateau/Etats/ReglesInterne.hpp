// What a file of rules holds, once read. For the reading of files and of screens alone.
#pragma once

#include <re2/re2.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Etats/Regles.hpp"

namespace tarnavelle::Plateau {

/// A compiled pattern; one that is absent matches nothing.
using Motif = std::unique_ptr<const RE2>;

inline re2::StringPiece piece(std::string_view texte) { return {texte.data(), texte.size()}; }

inline bool trouve(const Motif& motif, std::string_view texte) {
  return motif && RE2::PartialMatch(piece(texte), *motif);
}

/// What the pattern's first group holds.
std::optional<std::string> groupe(const Motif& motif, std::string_view texte);

/// One row: what is looked for, where, and what it proves.
struct Regle {
  enum class Effet { travaille, besoin, repos, enFile, interrompu };
  enum class Lieu { bas, dessus, dessous, boite };
  Effet effet;
  std::string nom;
  Lieu lieu;
  std::size_t lignes;  ///< of the place, blank ones not counted
  Motif motif;
};

struct Regles::Corps {
  struct Boite {
    Motif avant;           ///< on the line above it
    Motif debut;           ///< its first line; without it, the box is the block of `suite` lines above its end
    Motif suite;           ///< its other lines
    Motif apres;           ///< on the line under it, the last such line of the screen
    Motif vide;            ///< text of an empty box that is not drawn dim
    Motif indice;          ///< what the program draws after a text, not dim, with the text
    Motif collage;         ///< a large paste's mark
    std::size_t pied = 0;  ///< last lines of it that are not text
    std::size_t sous = 6;  ///< most lines that stand under it
  } boite;
  std::vector<Regle> regles;  ///< the first that speaks wins
  Motif titre;
  Signes signes;
  Motif decor;
  Motif marge;
  Motif version;
  Motif consigne;
  std::vector<Motif> cadre;
  std::vector<std::string> gardes;
};

}  // namespace tarnavelle::Plateau
