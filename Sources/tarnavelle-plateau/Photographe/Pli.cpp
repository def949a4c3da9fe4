#include <cstdint>
#include <initializer_list>

#include "Photographe/Image.hpp"

namespace tarnavelle::Plateau::Pli {
namespace {

constexpr char dessine = 'D', refuse = 'R';

void nombre(std::string& pli, std::uint64_t valeur, int octets) {
  for (int i = 0; i < octets; ++i) pli += static_cast<char>(valeur >> 8 * i & 0xff);
}
void texte(std::string& pli, std::string_view valeur, int octets) {
  nombre(pli, valeur.size(), octets);
  pli += valeur;
}

/// Takes what was written; once too little is left, `entier` is false and all is 0 or empty.
class Lecteur {
 public:
  explicit Lecteur(std::string_view octets) : reste_(octets) {}

  std::uint64_t nombre(int octets) {
    std::uint64_t valeur = 0;
    const auto pris = prendre(static_cast<std::size_t>(octets));
    for (std::size_t i = 0; i < pris.size(); ++i)
      valeur |= std::uint64_t{static_cast<unsigned char>(pris[i])} << 8 * i;
    return valeur;
  }
  std::string_view texte(int octets) { return prendre(nombre(octets)); }
  bool entier() const { return entier_; }
  bool fini() const { return entier_ && reste_.empty(); }

 private:
  std::string_view prendre(std::size_t octets) {
    entier_ = entier_ && octets <= reste_.size();
    if (!entier_) return {};
    const auto pris = reste_.substr(0, octets);
    reste_.remove_prefix(octets);
    return pris;
  }

  std::string_view reste_;
  bool entier_ = true;
};

void couleur(std::string& pli, const Couleur& c) {
  nombre(pli, static_cast<std::uint64_t>(c.genre), 1);
  nombre(pli, c.valeur, 4);
}
Couleur couleur(Lecteur& lecteur) {
  const auto genre = lecteur.nombre(1) % 3;
  return {static_cast<Couleur::Genre>(genre), static_cast<std::uint32_t>(lecteur.nombre(4))};
}

constexpr std::initializer_list<bool Style::*> attributs = {&Style::gras,     &Style::attenue, &Style::italique,
                                                            &Style::souligne, &Style::inverse, &Style::cache,
                                                            &Style::barre};

void style(std::string& pli, const Style& s) {
  couleur(pli, s.encre);
  couleur(pli, s.fond);
  std::uint64_t bits = 0;
  for (const auto attribut : attributs) bits = bits << 1 | (s.*attribut ? 1U : 0U);
  nombre(pli, bits, 1);
}
Style style(Lecteur& lecteur) {
  Style s{.encre = couleur(lecteur), .fond = couleur(lecteur)};
  auto bits = lecteur.nombre(1);
  for (auto attribut = attributs.end(); attribut != attributs.begin(); bits >>= 1)
    s.** --attribut = (bits & 1) != 0;
  return s;
}

}  // namespace

std::string plier(const Grille& grille) {
  std::string pli;
  const auto& [colonnes, lignes] = grille.taille();
  nombre(pli, static_cast<std::uint64_t>(colonnes), 4);
  nombre(pli, static_cast<std::uint64_t>(lignes), 4);
  for (int l = 0; l < lignes; ++l)
    for (int c = 0; c < colonnes; ++c) {
      const Case& la = grille.en(l, c);
      texte(pli, la.texte, 1);
      nombre(pli, static_cast<std::uint64_t>(la.largeur), 1);
      style(pli, la.style);
    }
  return pli;
}

std::optional<Grille> deplier(std::string_view octets) {
  Lecteur lecteur(octets);
  const Taille taille{.colonnes = static_cast<int>(lecteur.nombre(4)),
                      .lignes = static_cast<int>(lecteur.nombre(4))};
  if (!lecteur.entier() || !Grille::convient(taille)) return std::nullopt;
  Grille grille(taille);
  for (int l = 0; l < taille.lignes; ++l)
    for (int c = 0; c < taille.colonnes && lecteur.entier(); ++c) {
      Case la{.texte = std::string(lecteur.texte(1))};
      la.largeur = static_cast<int>(lecteur.nombre(1) % 3);
      la.style = style(lecteur);
      grille.placer(l, c, std::move(la));
    }
  return lecteur.fini() ? std::optional(std::move(grille)) : std::nullopt;
}

std::string plierImage(const Resultat<Image, std::string>& image) {
  std::string pli(1, image ? dessine : refuse);
  nombre(pli, image ? image->sansGlyphe : 0, 8);
  texte(pli, image ? image->png : image.raison(), 8);
  return pli;
}

std::optional<Resultat<Image, std::string>> deplierImage(std::string_view octets) {
  Lecteur lecteur(octets);
  const auto genre = static_cast<char>(lecteur.nombre(1));
  const auto sansGlyphe = static_cast<std::size_t>(lecteur.nombre(8));
  std::string contenu(lecteur.texte(8));
  if (!lecteur.fini() || (genre != dessine && genre != refuse)) return std::nullopt;
  if (genre == refuse) return Resultat<Image, std::string>(Sinon{std::move(contenu)});
  return Resultat<Image, std::string>(Image{.png = std::move(contenu), .sansGlyphe = sansGlyphe});
}

}  // namespace tarnavelle::Plateau::Pli
