// The rules of every program, with what the operator puts in their place.
#include <algorithm>
#include <filesystem>

#include "Etats/Regles.hpp"
#include "ReglesEmbarquees.hpp"
#include "ReglesInterne.hpp"
#include "Socle/Fichiers.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::size_t tailleMax = 64 * 1024;

std::optional<Regles> lireOuPlaindre(const std::filesystem::path& fichier, std::vector<std::string>& plaintes) {
  std::error_code erreur;
  if (!std::filesystem::exists(std::filesystem::symlink_status(fichier, erreur))) return std::nullopt;
  const std::string suite = " Les règles d'origine restent en vigueur.";
  const auto texte = lireFichier(fichier, tailleMax);
  if (!texte) {
    plaintes.push_back("Règles d'écran illisibles : " + fichier.string() + "." + suite);
    return std::nullopt;
  }
  auto lues = Regles::lire(*texte);
  if (lues) return *lues;
  plaintes.push_back("Règles d'écran refusées : " + fichier.string() + ", " + lues.raison() + "." + suite);
  return std::nullopt;
}

}  // namespace

CatalogueRegles::CatalogueRegles(const std::string& dossier) {
  for (const auto& [programme, texte] : reglesEmbarquees) {
    std::optional<Regles> choisies;
    if (!dossier.empty())
      choisies =
          lireOuPlaindre(std::filesystem::path(dossier) / (std::string(programme) + ".regles"), plaintes_);
    if (!choisies)
      if (const auto embarquees = Regles::lire(texte)) choisies = *embarquees;
    if (choisies) regles_.emplace_back(programme, *std::move(choisies));
  }
}

const Regles& CatalogueRegles::de(std::string_view programme) const {
  static const Regles aucunes = *Regles::lire("");
  const auto trouvees = std::ranges::find(regles_, programme, &std::pair<std::string, Regles>::first);
  return trouvees == regles_.end() ? aucunes : trouvees->second;
}

}  // namespace tarnavelle::Plateau
