#include "Boite.hpp"

#include <algorithm>
#include <utility>

#include "Socle/Colonnes.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

constexpr std::size_t ligneMax = 16 * 1024;  ///< bytes of a line that are laid out: what shows is its end

/// As it is drawn: a tab is four columns.
std::string dessinable(std::string_view texte) {
  std::string large;
  for (const char c : texte)
    if (c == '\t')
      large += "    ";
    else
      large += c;
  return Inoffensif::montrable(large);
}

}  // namespace

std::vector<std::string> enLignes(std::string_view texte, std::size_t colonnes, bool mots) {
  std::vector<std::string> lignes;
  std::string ligne;
  std::size_t large = 0;
  const auto finir = [&] {
    lignes.push_back(std::exchange(ligne, {}));
    large = 0;
  };
  for (std::string_view reste = texte; !reste.empty();) {
    const auto signe = Texte::premiers(reste, 1);
    reste.remove_prefix(signe.size());
    if (signe == "\n") {
      finir();
      continue;
    }
    const auto place = Colonnes::largeur(signe);
    if (large + place > colonnes && large > 0) {
      const auto blanc = mots ? ligne.find_last_of(' ') : ligne.npos;
      if (mots && signe == " ") {
        finir();
        continue;
      }
      if (blanc != ligne.npos && ligne.find_first_not_of(' ') < blanc) {
        const std::string suite = ligne.substr(blanc + 1);
        ligne.resize(blanc);
        finir();
        ligne = suite;
        large = Colonnes::largeur(ligne);
      } else {
        finir();
      }
    }
    ligne += signe;
    large += place;
  }
  finir();
  return lignes;
}

std::size_t Boite::avant(std::size_t ou) const {
  if (ou == 0) return 0;
  // A character is rarely long: from not too far back.
  std::size_t debut = ou > 64 ? ou - 64 : 0;
  while (debut > 0 && (static_cast<unsigned char>(texte_[debut]) & 0xC0U) == 0x80U) --debut;
  return ou - Texte::derniers(std::string_view(texte_).substr(debut, ou - debut), 1).size();
}

std::size_t Boite::apres(std::size_t ou) const {
  return ou + Texte::premiers(std::string_view(texte_).substr(ou, 64), 1).size();
}

std::size_t Boite::debutDeLigne(std::size_t ou) const {
  const auto saut = ou == 0 ? std::string::npos : texte_.rfind('\n', ou - 1);
  return saut == std::string::npos ? 0 : saut + 1;
}

std::size_t Boite::finDeLigne(std::size_t ou) const { return std::min(texte_.find('\n', ou), texte_.size()); }

void Boite::inserer(std::string_view texte) {
  texte_.insert(curseur_, texte);
  curseur_ += texte.size();
}

void Boite::monter(bool vers) {
  const auto debut = debutDeLigne(curseur_);
  const auto rang = Texte::caracteres(std::string_view(texte_).substr(debut, curseur_ - debut));
  const auto voisine =
      vers ? (debut == 0 ? debut : debutDeLigne(debut - 1)) : std::min(finDeLigne(curseur_) + 1, texte_.size());
  if (voisine == debut) return;
  const auto ligne = std::string_view(texte_).substr(voisine, finDeLigne(voisine) - voisine);
  curseur_ = voisine + Texte::premiers(ligne, rang).size();
}

bool Boite::toucher(Frappe::Touche touche) {
  using enum Frappe::Touche;
  const auto effacer = [&](std::size_t de, std::size_t a) {
    texte_.erase(de, a - de);
    curseur_ = de;
  };
  switch (touche) {
    case nouvelleLigne: inserer("\n"); return true;
    case tabulation: inserer("\t"); return true;
    case retourArriere: effacer(avant(curseur_), curseur_); return true;
    case supprimer: effacer(curseur_, apres(curseur_)); return true;
    case gauche: curseur_ = avant(curseur_); return true;
    case droite: curseur_ = apres(curseur_); return true;
    case haut: monter(true); return true;
    case bas: monter(false); return true;
    case debut: curseur_ = debutDeLigne(curseur_); return true;
    case fin: curseur_ = this->finDeLigne(curseur_); return true;
    case vider: effacer(0, texte_.size()); return true;
    case finDeLigne: effacer(curseur_, this->finDeLigne(curseur_)); return true;
    case mot: {
      const auto avantMot = texte_.find_last_not_of(" \n\t", curseur_ == 0 ? 0 : curseur_ - 1);
      const auto blanc = avantMot == texte_.npos ? texte_.npos : texte_.find_last_of(" \n\t", avantMot);
      effacer(curseur_ == 0 || blanc == texte_.npos ? 0 : blanc + 1, curseur_);
      return true;
    }
    case entree:
    case echap:
    case ctrlC:
    case ctrlD:
    case ctrlL: return false;
  }
  return false;
}

std::string Boite::prendre() {
  curseur_ = 0;
  return std::exchange(texte_, {});
}

Boite::Vue Boite::vue(std::size_t colonnes, std::size_t lignesMax) const {
  // Laid out around the cursor only: a long paste must not cost more at each key.
  std::size_t de = debutDeLigne(curseur_);
  for (std::size_t n = 1; n < lignesMax && de > 0 && curseur_ - de < ligneMax; ++n) de = debutDeLigne(de - 1);
  if (curseur_ - de > ligneMax) {
    de = curseur_ - ligneMax;
    while (de < curseur_ && (static_cast<unsigned char>(texte_[de]) & 0xC0U) == 0x80U) ++de;
  }
  Vue vue;
  const auto dessiner = [&](std::string_view texte) {
    std::vector<std::string> lignes;
    for (std::size_t debut = 0;; ++debut) {
      const auto fin = std::min(texte.find('\n', debut), texte.size());
      for (std::string& l : enLignes(dessinable(texte.substr(debut, fin - debut)), colonnes, false))
        lignes.push_back(std::move(l));
      debut = fin;
      if (fin == texte.size()) return lignes;
    }
  };
  const std::string_view tout = texte_;
  const auto haut = dessiner(tout.substr(de, curseur_ - de));
  vue.lignes = dessiner(tout.substr(de, std::min(tout.size() - de, curseur_ - de + ligneMax)));
  vue.ligne = haut.size() - 1;
  vue.colonne = Colonnes::largeur(haut.back());
  if (vue.colonne >= colonnes && colonnes > 0) vue.colonne = colonnes - 1;
  vue.suite = de > 0;
  if (vue.lignes.size() > lignesMax) {
    vue.suite = true;
    const auto premiere = vue.ligne + 1 > lignesMax ? vue.ligne + 1 - lignesMax : 0;
    vue.lignes.erase(vue.lignes.begin(), vue.lignes.begin() + static_cast<std::ptrdiff_t>(premiere));
    vue.lignes.resize(std::min(vue.lignes.size(), lignesMax));
    vue.ligne -= premiere;
  }
  return vue;
}

}  // namespace tarnavelle
