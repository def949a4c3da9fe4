#include "Lexique.hpp"

#include <algorithm>

#include "Socle/Colonnes.hpp"

namespace tarnavelle {
namespace {

constexpr std::size_t gouttiere = 2;    ///< before the terms, and after them
constexpr std::size_t largeurMin = 20;  ///< of the texts, however narrow the terminal

}  // namespace

void Lexique::ajouter(std::string terme, std::string texte) {
  entrees_.emplace_back(std::move(terme), std::move(texte));
}

void Lexique::versPage(Page& page, std::optional<std::size_t> colonnes) const {
  std::size_t marge = 0;
  for (const auto& [terme, texte] : entrees_)
    marge = std::max(marge, gouttiere + Colonnes::largeur(terme) + gouttiere);
  for (const auto& [terme, texte] : entrees_) {
    const auto place = colonnes ? std::max(*colonnes, marge + largeurMin) - marge : texte.size();
    std::string debut = Colonnes::completer(std::string(gouttiere, ' ') + terme, marge);
    for (const std::string& ligne : Colonnes::plier(texte, place)) {
      page.push_back({debut + ligne});
      debut.assign(marge, ' ');
    }
  }
}

}  // namespace tarnavelle
