#include "Liaison/LecteurLignesFlux.hpp"

#include <algorithm>
#include <cstring>

#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

constexpr std::size_t garde = 64 * 1024;  ///< bytes of memory that a long line may leave behind

void vider(std::string& texte) {
  texte.clear();
  if (texte.capacity() > garde) std::string().swap(texte);
}

}  // namespace

void LecteurLignesFlux::ajouter(std::string_view morceau) {
  if (apresRetour_ && !morceau.empty()) {
    if (morceau.front() == '\n') morceau.remove_prefix(1);
    apresRetour_ = false;
  }
  morceau_ = morceau;
  saut_ = retour_ = nullptr;
}

const char* LecteurLignesFlux::chercher(const char*& connu, char octet) {
  if (connu && connu >= morceau_.data()) return connu;
  const void* trouve = std::memchr(morceau_.data(), octet, morceau_.size());
  return connu = trouve ? static_cast<const char*>(trouve) : morceau_.data() + morceau_.size();
}

std::optional<std::string_view> LecteurLignesFlux::suivante() {
  oublier();
  while (!morceau_.empty()) {
    const char* fin = std::min(chercher(saut_, '\n'), chercher(retour_, '\r'));
    const std::string_view ligne = morceau_.substr(0, static_cast<std::size_t>(fin - morceau_.data()));
    if (!sautee_ && debut_.size() + ligne.size() > maximum_) {
      vider(debut_);
      premiere_ = false;
      sautee_ = tropLongue_ = true;
      return std::nullopt;
    }
    morceau_.remove_prefix(ligne.size());
    if (!sautee_ && (!debut_.empty() || morceau_.empty())) debut_ += ligne;
    if (morceau_.empty()) return std::nullopt;
    if (morceau_.front() == '\r' && morceau_.size() == 1) apresRetour_ = true;
    morceau_.remove_prefix(morceau_.starts_with("\r\n") ? 2 : 1);
    if (std::exchange(sautee_, false)) continue;
    rendu_ = true;
    return rendre(debut_.empty() ? ligne : debut_);
  }
  return std::nullopt;
}

std::optional<std::string_view> LecteurLignesFlux::derniere() {
  oublier();
  if (debut_.empty()) return std::nullopt;
  rendu_ = true;
  return rendre(debut_);
}

void LecteurLignesFlux::oublier() {
  if (!std::exchange(rendu_, false)) return;
  vider(debut_);
  vider(reparee_);
}

std::string_view LecteurLignesFlux::rendre(std::string_view ligne) {
  if (std::exchange(premiere_, false)) ligne = Texte::sansMarqueDOrdre(ligne);
  if (Texte::utf8Valide(ligne)) return ligne;
  return reparee_ = Texte::reparer(ligne);
}

}  // namespace tarnavelle
