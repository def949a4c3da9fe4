#include "Fil.hpp"

#include <algorithm>
#include <utility>

#include "Boite.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

using De = Memoire::Propos::De;

/// On lines that begin with that, then with blanks of its width.
std::vector<std::string> debutant(std::string_view debut, std::string_view texte, std::size_t colonnes) {
  std::string propre;
  for (const char c : texte)
    if (c == '\t')
      propre += "    ";
    else if (c != '\r')
      propre += c;
  while (propre.ends_with('\n')) propre.pop_back();
  auto lignes =
      enLignes(Inoffensif::montrable(propre, "\n"), colonnes - std::min(colonnes - 1, std::size_t{3}), true);
  for (std::size_t i = 0; i < lignes.size(); ++i) lignes[i].insert(0, i == 0 ? debut : Fil::marge);
  return lignes;
}

}  // namespace

std::vector<std::string> Fil::vous(std::string_view texte, std::size_t colonnes) {
  auto lignes = debutant("❯ ", texte.substr(0, vousMax * colonnes * 4), colonnes);
  if (lignes.size() > vousMax) {
    lignes.resize(vousMax);
    lignes.emplace_back(std::string(marge) + "… (" + std::to_string(Texte::caracteres(texte)) + " caractères)");
  }
  return lignes;
}
std::vector<std::string> Fil::note(std::string_view texte, std::size_t colonnes) {
  return debutant("· ", texte, colonnes);
}
std::vector<std::string> Fil::outil(std::string_view texte, std::size_t colonnes) {
  return debutant("  → ", texte, colonnes - 2);
}

std::vector<std::string> Fil::lignes(const Memoire::Propos& propos, std::size_t colonnes) {
  switch (propos.de) {
    case De::vous: return vous(propos.texte, colonnes);
    case De::hermes: return debutant(marge, propos.texte, colonnes);
    case De::note: return note(propos.texte, colonnes);
  }
  return {};
}

std::vector<std::string> Fil::ecouter(std::string_view morceau, std::size_t colonnes) {
  partielle_ += morceau;
  std::vector<std::string> completes;
  const auto ajouter = [&](std::string_view ligne) {
    for (std::string& l : debutant(marge, ligne, colonnes)) completes.push_back(std::move(l));
  };
  if (const auto saut = partielle_.rfind('\n'); saut != partielle_.npos) {
    for (std::size_t debut = 0; debut <= saut;) {
      const auto fin = partielle_.find('\n', debut);
      ajouter(std::string_view(partielle_).substr(debut, fin - debut));
      debut = fin + 1;
    }
    partielle_.erase(0, saut + 1);
  }
  // Of a long paragraph, the lines that no further word changes.
  constexpr std::size_t longue = 4096;
  if (partielle_.size() > longue) {
    const auto blanc = partielle_.find_last_of(' ');
    const auto coupe = blanc == partielle_.npos || blanc == 0 ? partielle_.size() : blanc;
    ajouter(std::string_view(partielle_).substr(0, coupe));
    partielle_.erase(0, std::min(coupe + 1, partielle_.size()));
  }
  return completes;
}

std::vector<std::string> Fil::enCours(std::size_t colonnes) const {
  return partielle_.empty() ? std::vector<std::string>() : debutant(marge, partielle_, colonnes);
}

std::vector<std::string> Fil::finir(std::size_t colonnes) {
  auto lignes = enCours(colonnes);
  partielle_.clear();
  return lignes;
}

}  // namespace tarnavelle
