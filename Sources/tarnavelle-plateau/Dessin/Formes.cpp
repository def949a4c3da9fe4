#include "Formes.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Dessin/Dessin.hpp"

namespace tarnavelle::Plateau::Dessin {
namespace {

constexpr std::size_t gras = 1;
constexpr std::size_t italique = 2;

/// What stands in for a character that programs love, and that no font has but as a coloured picture.
std::string_view courant(std::string_view texte) {
  constexpr std::pair<std::string_view, std::string_view> semblables[] = {
      {"⎿", "└"},   {"⏺", "●"}, {"⏵", "▸"}, {"⏴", "◂"}, {"⏶", "▴"}, {"⏷", "▾"},
      {"⏸", "‖"}, {"⏹", "■"}, {"⬝", "▪"},   {"⬛", "■"},   {"⬜", "□"},   {"⧉", "❐"},
  };
  for (const auto& [rare, semblable] : semblables)
    if (texte == rare) return semblable;
  return texte;
}

double pixels(int unites) { return static_cast<double>(unites) / PANGO_SCALE; }

}  // namespace

Formes::Formes()
    : polices_(pango_cairo_font_map_new()), contexte_(pango_font_map_create_context(polices_.get())) {
  const Tenu<cairo_font_options_t, cairo_font_options_destroy> options(cairo_font_options_create());
  cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
  cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_SLIGHT);
  cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
  pango_cairo_context_set_font_options(contexte_.get(), options.get());
  pango_context_set_round_glyph_positions(contexte_.get(), FALSE);
  pango_context_set_language(contexte_.get(), pango_language_from_string("fr"));

  // The size at which a character takes one cell.
  constexpr int essai = 100;
  for (std::size_t v = 0; v < descriptions_.size(); ++v) {
    auto* description = pango_font_description_new();
    descriptions_[v].reset(description);
    pango_font_description_set_family_static(description, "monospace");
    pango_font_description_set_weight(description, v & gras ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
    pango_font_description_set_style(description, v & italique ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);
    pango_font_description_set_absolute_size(description, essai * PANGO_SCALE);
  }
  const Forme chiffre = former("0", 0);
  if (chiffre.manque || !(chiffre.largeur > 0)) return;
  const double taille = essai * largeurCase / chiffre.largeur;
  for (const auto& description : descriptions_)
    pango_font_description_set_absolute_size(description.get(), taille * PANGO_SCALE);

  const Tenu<PangoFontMetrics, pango_font_metrics_unref> mesures(
      pango_context_get_metrics(contexte_.get(), descriptions_[0].get(), nullptr));
  const double haut = pixels(pango_font_metrics_get_ascent(mesures.get()));
  const double bas = pixels(pango_font_metrics_get_descent(mesures.get()));
  ligneDeBase_ = std::max(1, static_cast<int>(std::lround((hauteurCase - haut - bas) / 2 + haut)));
}

const Forme& Formes::de(const Case& c) {
  const std::size_t variante = (c.style.gras ? gras : 0) | (c.style.italique ? italique : 0);
  auto& connues = connues_[variante];
  const auto connue = connues.find(c.texte);
  if (connue != connues.end()) return connue->second;
  return connues.emplace(c.texte, former(courant(c.texte), variante)).first->second;
}

Forme Formes::former(std::string_view texte, std::size_t variante) {
  Forme forme;
  pango_context_set_font_description(contexte_.get(), descriptions_[variante].get());
  const Tenu<PangoAttrList, pango_attr_list_unref> attributs(pango_attr_list_new());
  GList* morceaux =
      pango_itemize(contexte_.get(), texte.data(), 0, static_cast<int>(texte.size()), attributs.get(), nullptr);
  const Tenu<PangoGlyphString, pango_glyph_string_free> glyphes(pango_glyph_string_new());
  for (GList* m = morceaux; m; m = m->next) {
    auto* morceau = static_cast<PangoItem*>(m->data);
    PangoFont* police = morceau->analysis.font;
    if (!police) {
      forme.manque = true;
      continue;
    }
    pango_shape(texte.data() + morceau->offset, morceau->length, &morceau->analysis, glyphes.get());
    Forme::Partie partie;
    partie.police.reset(PANGO_FONT(g_object_ref(police)));
    for (int i = 0; i < glyphes->num_glyphs; ++i) {
      const auto& [glyphe, place, attribut] = glyphes->glyphs[i];
      if (glyphe & PANGO_GLYPH_UNKNOWN_FLAG) forme.manque = true;
      if (glyphe != PANGO_GLYPH_EMPTY && !(glyphe & PANGO_GLYPH_UNKNOWN_FLAG))
        partie.glyphes.push_back({glyphe, forme.largeur + pixels(place.x_offset), pixels(place.y_offset)});
      forme.largeur += pixels(place.width);
    }
    forme.parties.push_back(std::move(partie));
  }
  g_list_free_full(morceaux, [](void* morceau) { pango_item_free(static_cast<PangoItem*>(morceau)); });
  return forme;
}

}  // namespace tarnavelle::Plateau::Dessin
