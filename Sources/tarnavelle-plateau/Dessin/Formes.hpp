// How each text of a cell is drawn: its glyphs, found once. One thread at a time.
#pragma once

#include <pango/pangocairo.h>

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Photographe/Grille.hpp"

namespace tarnavelle::Plateau::Dessin {

template <auto rendre>
struct Rendre {
  template <class T>
  void operator()(T* objet) const {
    rendre(objet);
  }
};
template <class T, auto rendre = g_object_unref>
using Tenu = std::unique_ptr<T, Rendre<rendre>>;

/// Glyphs at their places, from the text's left and the baseline, in pixels.
struct Forme {
  struct Partie {
    Tenu<PangoFont> police;
    std::vector<cairo_glyph_t> glyphes;
  };
  std::vector<Partie> parties;
  double largeur = 0;
  bool manque = false;  ///< no font has it
};

class Formes {
 public:
  Formes();
  /// Whether there is a font at all.
  bool utilisables() const { return ligneDeBase_ > 0; }
  /// From the top of a cell, in whole pixels.
  int ligneDeBase() const { return ligneDeBase_; }
  const Forme& de(const Case& c);

 private:
  Forme former(std::string_view texte, std::size_t variante);

  Tenu<PangoFontMap> polices_;
  Tenu<PangoContext> contexte_;
  std::array<Tenu<PangoFontDescription, pango_font_description_free>, 4> descriptions_;
  int ligneDeBase_ = 0;
  std::array<std::unordered_map<std::string, Forme>, 4> connues_;
};

}  // namespace tarnavelle::Plateau::Dessin
