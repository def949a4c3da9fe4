// What stands on standard input: the lines of a plain split, those too long left out. Each "~" stands for many
// bytes, or no input would outgrow the reader's buffer, whose end then falls anywhere in a line.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "Cible.hpp"
#include "LecteurLignes.hpp"

using namespace tarnavelle;

namespace {

constexpr std::size_t beaucoup = 16'381, ligneMax = 100'000;

using Lignes = std::vector<std::optional<std::string>>;

Lignes decouper(std::string_view texte) {
  Lignes lignes;
  while (!texte.empty()) {
    const auto ligne = texte.substr(0, texte.find('\n'));
    lignes.push_back(ligne.size() > ligneMax ? std::nullopt : std::optional<std::string>(ligne));
    texte.remove_prefix(std::min(ligne.size() + 1, texte.size()));
  }
  return lignes;
}

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  static const int fichier = ::fileno(std::tmpfile());
  std::string texte;
  for (const char c : vue(octets, taille)) texte.append(c == '~' ? beaucoup : 1, c);
  exiger(::ftruncate(fichier, 0) == 0 && ::lseek(fichier, 0, SEEK_SET) == 0);
  exiger(::write(fichier, texte.data(), texte.size()) == static_cast<ssize_t>(texte.size()));
  exiger(::lseek(fichier, 0, SEEK_SET) == 0);

  LecteurLignes lecteur(fichier, ligneMax);
  Lignes lignes;
  while (const auto ligne = lecteur.suivante())
    lignes.push_back(ligne->tropLongue ? std::nullopt : std::optional<std::string>(ligne->texte));
  exiger(lignes == decouper(texte));
  return 0;
}
