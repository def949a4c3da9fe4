#include "Proche.hpp"

#include <algorithm>

#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

constexpr std::size_t longueurMax = 40;  ///< bytes: the work grows as their square

std::string comparable(std::string_view nom) {
  std::string forme = Texte::sansAccents(Texte::minuscules(nom));
  std::ranges::replace(forme, '-', '_');
  return forme;
}

/// Insertions, deletions, replacements and swaps of neighbours between two texts (optimal string
/// alignment), by bytes: the names are ASCII.
std::size_t distance(std::string_view a, std::string_view b) {
  using Rangee = std::vector<std::size_t>;
  Rangee avant, precedente(b.size() + 1), courante(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) courante[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    avant = std::move(precedente);
    precedente = std::move(courante);
    courante.assign(b.size() + 1, i);
    for (std::size_t j = 1; j <= b.size(); ++j) {
      courante[j] =
          std::min({precedente[j] + 1, courante[j - 1] + 1, precedente[j - 1] + (a[i - 1] != b[j - 1])});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
        courante[j] = std::min(courante[j], avant[j - 2] + 1);
    }
  }
  return courante[b.size()];
}

}  // namespace

std::optional<std::string> nomProche(std::string_view tape, const std::vector<std::string>& noms) {
  if (tape.size() > longueurMax) return std::nullopt;
  const std::string forme = comparable(tape);
  if (forme.size() < 2) return std::nullopt;
  std::size_t meilleure = 1 + forme.size() / 3;  // beyond, another word was meant
  std::optional<std::string> proche;
  for (const std::string& nom : noms) {
    const std::string autre = comparable(nom);
    const auto ecart = autre.starts_with(forme) ? 1 : distance(forme, autre);
    if (ecart > meilleure || (proche && ecart == meilleure)) continue;
    meilleure = ecart;
    proche = nom;
  }
  return proche;
}

}  // namespace tarnavelle
