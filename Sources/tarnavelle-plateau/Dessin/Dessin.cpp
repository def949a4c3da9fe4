#include "Dessin/Dessin.hpp"

#include <algorithm>
#include <map>
#include <utility>

#include "Formes.hpp"
#include "Photographe/Couleurs.hpp"
#include "Traits.hpp"

namespace tarnavelle::Plateau::Dessin {
namespace {

using Couleurs::RVB;

cairo_status_t recueillir(void* png, const unsigned char* octets, unsigned int taille) {
  static_cast<std::string*>(png)->append(reinterpret_cast<const char*>(octets), taille);
  return CAIRO_STATUS_SUCCESS;
}

class Toile {
 public:
  Toile(cairo_t* cairo, const Grille& grille, Formes& formes)
      : cairo_(cairo), grille_(grille), formes_(formes) {}

  /// How many cells hold what no font has.
  std::size_t peindre() {
    encrer(Couleurs::fondPropre);
    cairo_paint(cairo_);
    cairo_translate(cairo_, marge, marge);
    cairo_set_antialias(cairo_, CAIRO_ANTIALIAS_NONE);
    for (int l = 0; l < grille_.taille().lignes; ++l)
      parPlages(l, [&](int debut, int fin) { fond(l, debut, fin); });
    for (int l = 0; l < grille_.taille().lignes; ++l)
      parPlages(l, [&](int debut, int fin) { texte(l, debut, fin); });
    for (const auto& [police, glyphes] : glyphes_) {
      cairo_set_scaled_font(cairo_, police.first);
      encrer(police.second);
      cairo_show_glyphs(cairo_, glyphes.data(), static_cast<int>(glyphes.size()));
    }
    return manques_;
  }

 private:
  void encrer(RVB couleur) {
    cairo_set_source_rgb(cairo_, (couleur >> 16 & 0xff) / 255.0, (couleur >> 8 & 0xff) / 255.0,
                         (couleur & 0xff) / 255.0);
  }
  void rectangle(double x, double y, double largeur, double hauteur) {
    cairo_rectangle(cairo_, x, y, largeur, hauteur);
    cairo_fill(cairo_);
  }

  /// The runs of equal style of a line.
  template <class Plage>
  void parPlages(int ligne, Plage plage) {
    const int colonnes = grille_.taille().colonnes;
    for (int debut = 0; debut < colonnes;) {
      int fin = debut + 1;
      while (fin < colonnes && grille_.en(ligne, fin).style == grille_.en(ligne, debut).style) ++fin;
      plage(debut, fin);
      debut = fin;
    }
  }

  void fond(int ligne, int debut, int fin) {
    const RVB couleur = Couleurs::de(grille_.en(ligne, debut).style).fond;
    if (couleur == Couleurs::fondPropre) return;
    encrer(couleur);
    rectangle(debut * largeurCase, ligne * hauteurCase, (fin - debut) * largeurCase, hauteurCase);
  }

  void texte(int ligne, int debut, int fin) {
    const Style& style = grille_.en(ligne, debut).style;
    const RVB encre = Couleurs::de(style).encre;
    const double base = ligne * hauteurCase + formes_.ligneDeBase();
    for (int c = debut; c < fin && !style.cache; ++c) {
      encrer(encre);
      if (!tracer(cairo_, grille_.en(ligne, c).texte, c * largeurCase, ligne * hauteurCase))
        caractere(grille_.en(ligne, c), c * largeurCase, base, encre);
    }
    const double large = (fin - debut) * largeurCase;
    if (style.souligne) rectangle(debut * largeurCase, base + 2, large, 1);
    if (style.barre) rectangle(debut * largeurCase, base - hauteurCase / 4.0, large, 1);
  }

  void caractere(const Case& c, double x, double base, RVB encre) {
    if (c.texte.empty()) return;
    const Forme& forme = formes_.de(c);
    const double place = c.largeur * largeurCase;
    if (forme.manque) {
      ++manques_;
      cairo_set_line_width(cairo_, 1);
      cairo_rectangle(cairo_, x + 1.5, base - 10.5, place - 3, 11);
      cairo_stroke(cairo_);
      return;
    }
    if (forme.largeur <= place + 0.5) {
      const double gauche = x + (place - forme.largeur) / 2;
      for (const auto& partie : forme.parties) {
        auto& glyphes = glyphes_[{scelle(partie), encre}];
        for (auto [glyphe, dx, dy] : partie.glyphes) glyphes.push_back({glyphe, gauche + dx, base + dy});
      }
      return;
    }
    // Another font's, too wide for its cells: made to fit.
    cairo_save(cairo_);
    cairo_translate(cairo_, x, base);
    cairo_scale(cairo_, place / forme.largeur, place / forme.largeur);
    for (const auto& partie : forme.parties) {
      cairo_set_scaled_font(cairo_, scelle(partie));
      cairo_show_glyphs(cairo_, partie.glyphes.data(), static_cast<int>(partie.glyphes.size()));
    }
    cairo_restore(cairo_);
  }

  static cairo_scaled_font_t* scelle(const Forme::Partie& partie) {
    return pango_cairo_font_get_scaled_font(PANGO_CAIRO_FONT(partie.police.get()));
  }

  cairo_t* cairo_;
  const Grille& grille_;
  Formes& formes_;
  std::map<std::pair<cairo_scaled_font_t*, RVB>, std::vector<cairo_glyph_t>> glyphes_;
  std::size_t manques_ = 0;
};

}  // namespace

Resultat<Image, std::string> peindre(const Grille& grille) {
  Formes formes;
  if (!formes.utilisables())
    return Sinon{
        std::string("Aucune police n'est installée sur cette machine : une photo n'aurait pas de "
                    "texte. Sur Debian : apt install fonts-dejavu-core.")};
  const auto& [colonnes, lignes] = grille.taille();
  const Tenu<cairo_surface_t, cairo_surface_destroy> surface(cairo_image_surface_create(
      CAIRO_FORMAT_RGB24, colonnes * largeurCase + 2 * marge, lignes * hauteurCase + 2 * marge));
  const Tenu<cairo_t, cairo_destroy> cairo(cairo_create(surface.get()));
  Image image;
  image.sansGlyphe = Toile(cairo.get(), grille, formes).peindre();
  if (cairo_status(cairo.get()) != CAIRO_STATUS_SUCCESS ||
      cairo_surface_write_to_png_stream(surface.get(), recueillir, &image.png) != CAIRO_STATUS_SUCCESS)
    return Sinon{std::string("La photo n'a pas pu être dessinée.")};
  return image;
}

}  // namespace tarnavelle::Plateau::Dessin
