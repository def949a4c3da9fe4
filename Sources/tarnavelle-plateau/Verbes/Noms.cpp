#include "Noms.hpp"

#include <algorithm>
#include <sstream>

#include "Agents/AgentCLI.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::size_t nomMax = 60;       ///< characters of a name
constexpr std::size_t citationMax = 80;  ///< characters of an argument repeated in a message

/// The model families that speech names like agents: « ouvre un opus » opens one, so it cannot also
/// call one.
constexpr std::string_view modeles[] = {"sonnet", "opus", "haiku", "gpt", "llama", "mistral", "qwen"};

bool designeUnProgramme(const std::string& replie) {
  std::istringstream mots(replie);
  for (std::string mot; mots >> mot;) {
    if (std::ranges::find(lanceurs(), mot) != lanceurs().end()) return true;
    if (std::ranges::find(modeles, mot) != std::end(modeles)) return true;
  }
  return false;
}

}  // namespace

const std::vector<std::string>& lanceurs() {
  static const auto ids = [] {
    std::vector<std::string> liste;
    for (const AgentCLI& cli : AgentCLI::tous()) liste.push_back(cli.id);
    return liste;
  }();
  return ids;
}

const std::vector<std::string>& rosterUsine() {
  static const std::vector<std::string> rapaces = {"Merlin",   "Milan",   "Harfang",    "Faucon",   "Buse",
                                                   "Épervier", "Autour",  "Balbuzard",  "Busard",   "Gerfaut",
                                                   "Circaète", "Hulotte", "Crécerelle", "Hobereau", "Pygargue",
                                                   "Effraie",  "Gypaète", "Chevêche"};
  return rapaces;
}

std::string prochainNom(const std::vector<std::string>& liste,
                        const std::function<bool(const std::string&)>& pris) {
  for (unsigned tour = 1;; ++tour) {
    for (const std::string& nom : liste) {
      std::string candidat = tour == 1 ? nom : nom + " " + std::to_string(tour);
      if (!pris(candidat)) return candidat;
    }
  }
}

std::optional<std::string> refusNom(std::string_view nom, bool indicatif) {
  if (Texte::replier(nom).empty()) return "Un nom ne peut pas être vide.";
  if (Texte::caracteres(nom) > nomMax) return "Nom trop long : " + cite(nom) + ".";
  if (std::ranges::any_of(nom, [](unsigned char c) { return c < 0x20 || c == 0x7F; }))
    return "Un nom tient sur une ligne, sans caractère de contrôle.";
  if (indicatif && designeUnProgramme(Texte::replier(nom)))
    return cite(nom) + " désigne un programme ou un modèle : un agent ne peut pas porter ce nom.";
  return std::nullopt;
}

std::string cite(std::string_view texte) {
  return "« " + Texte::tronquer(Texte::rogner(texte), citationMax) + " »";
}

std::string enumerer(const std::vector<std::string>& textes) {
  return textes.empty() ? "aucun" : Texte::joindre(textes, ", ");
}

}  // namespace tarnavelle::Plateau
