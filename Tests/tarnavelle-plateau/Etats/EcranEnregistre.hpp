// Screens of the real programs, as text: what is drawn dim stands between ⟦ and ⟧. Rules and wide gaps are
// shortened.
#pragma once

#include <fstream>
#include <string>
#include <string_view>

#include "Terminaux/Terminaux.hpp"

namespace tarnavelle::Plateau {

inline Ecran ecranDe(std::string_view texte) {
  constexpr std::string_view ouvre = "⟦";
  constexpr std::string_view ferme = "⟧";
  Ecran ecran;
  std::string ligne;
  std::string claire;
  bool attenue = false;
  while (!texte.empty()) {
    if (texte.starts_with(ouvre) || texte.starts_with(ferme)) {
      attenue = texte.starts_with(ouvre);
      texte.remove_prefix(ouvre.size());
      continue;
    }
    if (texte.front() == '\n') {
      ecran.lignes.push_back(std::exchange(ligne, {}));
      ecran.attenuees.push_back(std::exchange(claire, {}));
    } else {
      ligne += texte.front();
      claire += attenue ? ' ' : texte.front();
    }
    texte.remove_prefix(1);
  }
  return ecran;
}

/// The screen of a file of ecrans/, without its extension: "claude/repos".
inline Ecran ecranEnregistre(const std::string& nom) {
  std::ifstream fichier(std::string(ECRANS) + "/" + nom + ".txt");
  return ecranDe(std::string(std::istreambuf_iterator<char>(fichier), {}));
}

}  // namespace tarnavelle::Plateau
