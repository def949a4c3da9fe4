// A PNG read back: which colours its cells hold.
#pragma once

#include <cairo.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <string_view>

#include "Dessin/Dessin.hpp"

namespace tarnavelle::Plateau::essai {

class Pixels {
 public:
  explicit Pixels(std::string_view png) {
    surface_ = cairo_image_surface_create_from_png_stream(
        [](void* reste, unsigned char* octets, unsigned int taille) {
          auto& source = *static_cast<std::string_view*>(reste);
          if (source.size() < taille) return CAIRO_STATUS_READ_ERROR;
          std::memcpy(octets, source.data(), taille);
          source.remove_prefix(taille);
          return CAIRO_STATUS_SUCCESS;
        },
        &png);
    EXPECT_EQ(cairo_surface_status(surface_), CAIRO_STATUS_SUCCESS);
  }
  ~Pixels() { cairo_surface_destroy(surface_); }
  Pixels(const Pixels&) = delete;
  Pixels& operator=(const Pixels&) = delete;

  int largeur() const { return cairo_image_surface_get_width(surface_); }
  int hauteur() const { return cairo_image_surface_get_height(surface_); }
  std::uint32_t en(int x, int y) const {
    const auto* rangee = cairo_image_surface_get_data(surface_) + y * cairo_image_surface_get_stride(surface_);
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, rangee + 4 * x, sizeof pixel);
    return pixel & 0xffffff;
  }

  /// How many pixels of a cell have each colour.
  std::map<std::uint32_t, int> couleurs(int ligne, int colonne) const {
    std::map<std::uint32_t, int> comptes;
    for (int y = 0; y < Dessin::hauteurCase; ++y)
      for (int x = 0; x < Dessin::largeurCase; ++x)
        ++comptes[en(Dessin::marge + colonne * Dessin::largeurCase + x,
                     Dessin::marge + ligne * Dessin::hauteurCase + y)];
    return comptes;
  }
  std::uint32_t fond(int ligne, int colonne) const {
    const auto comptes = couleurs(ligne, colonne);
    return std::ranges::max_element(comptes, {}, &std::pair<const std::uint32_t, int>::second)->first;
  }
  /// Pixels of it that are not its ground.
  int encre(int ligne, int colonne) const {
    return Dessin::hauteurCase * Dessin::largeurCase - couleurs(ligne, colonne)[fond(ligne, colonne)];
  }

 private:
  cairo_surface_t* surface_;
};

}  // namespace tarnavelle::Plateau::essai
