#include "Traits.hpp"

#include <array>
#include <cmath>
#include <cstdint>
#include <utility>

#include "Dessin/Dessin.hpp"

namespace tarnavelle::Plateau::Dessin {
namespace {

enum Cote : unsigned { haut, droite, bas, gauche };
enum Trait : unsigned { aucun, fin, epais, double_ };

/// The four lines that meet in each character from U+2500 on, two bits each in the order of `Cote`. Dashes and
/// diagonals, 0, are left to the font.
constexpr std::array<std::uint8_t, 128> croisees = {
    0x44, 0x88, 0x11, 0x22, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x14, 0x18, 0x24, 0x28,
    0x50, 0x90, 0x60, 0xa0, 0x05, 0x09, 0x06, 0x0a, 0x41, 0x81, 0x42, 0x82, 0x15, 0x19, 0x16, 0x25,
    0x26, 0x1a, 0x29, 0x2a, 0x51, 0x91, 0x52, 0x61, 0x62, 0x92, 0xa1, 0xa2, 0x54, 0x94, 0x58, 0x98,
    0x64, 0xa4, 0x68, 0xa8, 0x45, 0x85, 0x49, 0x89, 0x46, 0x86, 0x4a, 0x8a, 0x55, 0x95, 0x59, 0x99,
    0x56, 0x65, 0x66, 0x96, 0x5a, 0xa5, 0x69, 0x9a, 0xa9, 0xa6, 0x6a, 0xaa, 0x00, 0x00, 0x00, 0x00,
    0xcc, 0x33, 0x1c, 0x34, 0x3c, 0xd0, 0x70, 0xf0, 0x0d, 0x07, 0x0f, 0xc1, 0x43, 0xc3, 0x1d, 0x37,
    0x3f, 0xd1, 0x73, 0xf3, 0xdc, 0x74, 0xfc, 0xcd, 0x47, 0xcf, 0xdd, 0x77, 0xff, 0x14, 0x50, 0x41,
    0x05, 0x00, 0x00, 0x00, 0x40, 0x01, 0x04, 0x10, 0x80, 0x02, 0x08, 0x20, 0x48, 0x21, 0x84, 0x12};
constexpr unsigned premierTrait = 0x2500, premierArrondi = 0x256d, dernierArrondi = 0x2570;
constexpr unsigned premierPave = 0x2580, dernierPave = 0x259f;

// The pixel that a thin line takes in the middle of a cell.
constexpr int milieuX = largeurCase / 2;
constexpr int milieuY = hauteurCase / 2 - 1;

void remplir(cairo_t* cairo, double x, double y, double largeur, double hauteur) {
  cairo_rectangle(cairo, x, y, largeur, hauteur);
  cairo_fill(cairo);
}

class Croisee {
 public:
  Croisee(cairo_t* cairo, double x, double y, unsigned bras) : cairo_(cairo), x_(x), y_(y), bras_(bras) {}

  void tracer() const {
    for (const Cote cote : {haut, droite, bas, gauche}) {
      const bool debout = cote == haut || cote == bas;
      const Cote avant = debout ? gauche : haut, apres = debout ? droite : bas;
      switch (trait(cote)) {
        case aucun: break;
        case fin: ligne(cote, 0, 0, 0); break;
        case epais: ligne(cote, 0, 1, 0); break;
        case double_: ligne(cote, -1, 0, retrait(avant, apres)); ligne(cote, 1, 0, retrait(apres, avant));
      }
    }
  }

  void arrondir() const {
    const double cx = x_ + milieuX + 0.5, cy = y_ + milieuY + 0.5;
    cairo_save(cairo_);
    cairo_set_antialias(cairo_, CAIRO_ANTIALIAS_DEFAULT);
    cairo_set_line_width(cairo_, 1);
    cairo_move_to(cairo_, cx, trait(bas) ? y_ + hauteurCase : y_);
    const double bord = trait(droite) ? x_ + largeurCase : x_;
    cairo_line_to(cairo_, cx, cy + (trait(bas) ? 1 : -1) * largeurCase / 2.0);
    cairo_curve_to(cairo_, cx, cy, cx, cy, bord, cy);
    cairo_stroke(cairo_);
    cairo_restore(cairo_);
  }

 private:
  Trait trait(Cote cote) const { return static_cast<Trait>(bras_ >> (2 * cote) & 3); }

  /// How far short of the middle one of two lines stops, on whose side `cote` is: it turns there, or goes past.
  int retrait(Cote cote, Cote autre) const {
    return trait(cote) == double_ ? 1 : trait(autre) == double_ ? -1 : 0;
  }

  /// From the middle to a side: beside the middle by `ecart`, `corps` pixels wider on both sides.
  void ligne(Cote cote, int ecart, int corps, int retrait) const {
    const double travers = (cote == haut || cote == bas ? milieuX : milieuY) + ecart - corps;
    const double large = 1 + 2 * corps;
    // The middle itself belongs to each line that reaches it.
    switch (cote) {
      case haut: remplir(cairo_, x_ + travers, y_, large, milieuY + 1 + corps - retrait); break;
      case bas:
        remplir(cairo_, x_ + travers, y_ + milieuY - corps + retrait, large,
                hauteurCase - milieuY + corps - retrait);
        break;
      case gauche: remplir(cairo_, x_, y_ + travers, milieuX + 1 + corps - retrait, large); break;
      case droite:
        remplir(cairo_, x_ + milieuX - corps + retrait, y_ + travers, largeurCase - milieuX + corps - retrait,
                large);
    }
  }

  cairo_t* cairo_;
  double x_, y_;
  unsigned bras_;
};

void paver(cairo_t* cairo, unsigned rang, double x, double y) {
  constexpr double l = largeurCase, h = hauteurCase;
  const auto huitieme = [](double tout, unsigned n) { return std::round(tout * n / 8); };
  const double l2 = huitieme(l, 4), h2 = huitieme(h, 4);
  if (rang == 0) return remplir(cairo, x, y, l, h2);
  if (rang <= 8) return remplir(cairo, x, y + h - huitieme(h, rang), l, huitieme(h, rang));
  if (rang <= 0xf) return remplir(cairo, x, y, huitieme(l, 0x10 - rang), h);
  if (rang == 0x10) return remplir(cairo, x + l2, y, l - l2, h);
  if (rang <= 0x13) {
    cairo_save(cairo);
    cairo_rectangle(cairo, x, y, l, h);
    cairo_clip(cairo);
    cairo_paint_with_alpha(cairo, (rang - 0x10) / 4.0);
    return cairo_restore(cairo);
  }
  if (rang == 0x14) return remplir(cairo, x, y, l, huitieme(h, 1));
  if (rang == 0x15) return remplir(cairo, x + l - huitieme(l, 1), y, huitieme(l, 1), h);
  // Quadrants: upper left, upper right, lower left, lower right, from the lowest bit on.
  constexpr std::array<unsigned, 10> quarts = {4, 8, 1, 13, 9, 7, 11, 2, 6, 14};
  const unsigned presents = quarts[rang - 0x16];
  for (unsigned q = 0; q < 4; ++q)
    if (presents >> q & 1)
      remplir(cairo, q % 2 ? x + l2 : x, q < 2 ? y : y + h2, q % 2 ? l - l2 : l2, q < 2 ? h2 : h - h2);
}

}  // namespace

bool tracer(cairo_t* cairo, std::string_view texte, double x, double y) {
  if (texte.size() != 3 || texte[0] != '\xe2') return false;
  const auto bits = [&](std::size_t i) { return static_cast<unsigned char>(texte[i]) & 0x3fU; };
  const unsigned point = 0x2000 | bits(1) << 6 | bits(2);
  if (point >= premierPave && point <= dernierPave) return paver(cairo, point - premierPave, x, y), true;
  if (point < premierTrait || point >= premierPave || croisees[point - premierTrait] == 0) return false;
  const Croisee croisee(cairo, x, y, croisees[point - premierTrait]);
  const bool arrondie = point >= premierArrondi && point <= dernierArrondi;
  arrondie ? croisee.arrondir() : croisee.tracer();
  return true;
}

}  // namespace tarnavelle::Plateau::Dessin
