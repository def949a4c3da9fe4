#include "TerminauxTmux/LecteurControle.hpp"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tarnavelle::Plateau {
namespace {

/// "T N F": three numbers, whose last has its lowest bit set for a command of this client.
bool troisNombres(std::string_view texte) {
  int nombres = 0;
  while (true) {
    const auto fin = texte.find(' ');
    const auto nombre = texte.substr(0, fin);
    const bool chiffres = std::ranges::all_of(nombre, [](char c) { return c >= '0' && c <= '9'; });
    if (nombre.empty() || !chiffres || ++nombres > 3) return false;
    if (fin == std::string_view::npos) return nombres == 3;
    texte.remove_prefix(fin + 1);
  }
}

}  // namespace

void LecteurControle::ajouter(std::string_view octets) {
  while (!octets.empty() && !perdu_) {
    const void* saut = std::memchr(octets.data(), '\n', octets.size());
    const auto morceau =
        saut ? octets.substr(0, static_cast<std::size_t>(static_cast<const char*>(saut) - octets.data()))
             : octets;
    if (!marque_)
      ligne_.append(morceau.substr(0, avisMax - std::min(avisMax, ligne_.size())));
    else if (bloc_.texte.size() + ligne_.size() + morceau.size() < blocMax)
      ligne_.append(morceau);
    else
      desordre();
    octets.remove_prefix(morceau.size() + (saut ? 1 : 0));
    if (saut && !perdu_) finirLigne();
  }
}

std::optional<LecteurControle::Lecture> LecteurControle::suivante() {
  if (lues_.empty()) return std::nullopt;
  auto premiere = std::move(lues_.front());
  lues_.pop_front();
  return premiere;
}

void LecteurControle::finirLigne() {
  const std::string_view ligne(ligne_);
  const auto suite = [&](std::string_view mot) -> std::optional<std::string_view> {
    if (!ligne.starts_with(mot)) return std::nullopt;
    return ligne.substr(mot.size());
  };
  if (marque_) {
    const bool fin = suite("%end ") == *marque_;
    if (fin || suite("%error ") == *marque_) {
      bloc_.reussi = fin;
      lues_.emplace_back(std::exchange(bloc_, {}));
      marque_.reset();
    } else {
      bloc_.texte.append(ligne).push_back('\n');
    }
  } else if (const auto nombres = suite("%begin ")) {
    if (!troisNombres(*nombres)) return desordre();
    marque_.emplace(*nombres);
    bloc_.demande = (nombres->back() - '0') % 2 == 1;
  } else if (ligne.starts_with('%')) {
    lues_.emplace_back(AvisTmux{ligne_});
  } else {
    return desordre();
  }
  ligne_.clear();
}

void LecteurControle::desordre() {
  perdu_ = true;
  ligne_.clear();
  bloc_ = {};
  lues_.emplace_back(DesordreTmux{});
}

}  // namespace tarnavelle::Plateau
