#include "Socle/Colonnes.hpp"

#include <utf8proc.h>

#include <algorithm>
#include <utility>

#include "Socle/Inoffensif.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Colonnes {
namespace {

/// Columns of one user-perceived character: those of its code points, never more than two, and two when
/// a selector asks for its picture.
std::size_t largeurDUn(std::string_view caractere) {
  constexpr utf8proc_int32_t selecteurImage = 0xFE0F;
  std::size_t colonnes = 0;
  while (!caractere.empty()) {
    utf8proc_int32_t p = -1;
    const auto lus = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(caractere.data()),
                                      static_cast<utf8proc_ssize_t>(caractere.size()), &p);
    caractere.remove_prefix(lus > 0 ? static_cast<std::size_t>(lus) : 1);
    if (p == selecteurImage && colonnes == 1) colonnes = 2;
    if (lus > 0 && Inoffensif::laissePasser(p)) colonnes += static_cast<std::size_t>(utf8proc_charwidth(p));
  }
  return std::min<std::size_t>(colonnes, 2);
}

}  // namespace

std::size_t largeur(std::string_view texte) {
  std::size_t colonnes = 0;
  while (!texte.empty()) {
    // A run of plain ASCII, but its last character, which a combining mark may follow.
    if (const auto n = Texte::plageOrdinaire(texte); n > 1) {
      colonnes += n - 1;
      texte.remove_prefix(n - 1);
    }
    const auto caractere = Texte::premiers(texte, 1);
    colonnes += largeurDUn(caractere);
    texte.remove_prefix(caractere.size());
  }
  return colonnes;
}

std::string couper(std::string_view texte, std::size_t colonnes) {
  if (texte.size() <= colonnes || largeur(texte) <= colonnes) return std::string(texte);
  if (colonnes == 0) return {};
  std::size_t fin = 0;
  for (std::size_t prises = 0;;) {
    const auto caractere = Texte::premiers(texte.substr(fin), 1);
    prises += largeurDUn(caractere);
    if (prises > colonnes - 1) break;
    fin += caractere.size();
  }
  return std::string(texte.substr(0, fin)) + "…";
}

std::string completer(std::string_view texte, std::size_t colonnes) {
  const auto prises = largeur(texte);
  return std::string(texte).append(colonnes > prises ? colonnes - prises : 0, ' ');
}

bool inseparables(std::string_view gauche, std::string_view droite) {
  constexpr std::string_view ouvrant = "«", fermant = "»";
  return gauche.ends_with(ouvrant) || droite.starts_with(fermant) ||
         (!droite.empty() && std::string_view(":;?!").find(droite[0]) != std::string_view::npos);
}

std::vector<std::string> plier(std::string_view texte, std::size_t colonnes) {
  std::vector<std::string> lignes;
  std::size_t prises = 0;
  const auto mots = Texte::mots(texte);
  for (std::size_t i = 0; i < mots.size();) {
    std::string bloc(mots[i]);
    while (++i < mots.size() && inseparables(mots[i - 1], mots[i])) bloc.append(" ").append(mots[i]);
    const auto largeurBloc = largeur(bloc);
    if (lignes.empty() || prises + 1 + largeurBloc > colonnes) {
      lignes.push_back(std::move(bloc));
      prises = largeurBloc;
    } else {
      lignes.back().append(" ").append(bloc);
      prises += 1 + largeurBloc;
    }
  }
  return lignes;
}

}  // namespace tarnavelle::Colonnes
