#include "Noms.hpp"

#include <utf8proc.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <sstream>

#include "Socle/Texte.hpp"

namespace tarnavelle::PorteEssai {
namespace {

constexpr std::size_t nomMax = 60;       ///< characters of a name
constexpr std::size_t citationMax = 80;  ///< characters of an argument repeated in a message

/// Further programs, and the model families that speech names like agents: « ouvre un opus » opens one,
/// so it cannot also call one.
constexpr std::string_view autresProgrammes[] = {"hermes", "sonnet", "opus",    "haiku",
                                                 "gpt",    "llama",  "mistral", "qwen"};

bool designeUnProgramme(const std::string& replie) {
  std::istringstream mots(replie);
  for (std::string mot; mots >> mot;) {
    if (std::ranges::find(lanceurs(), mot) != lanceurs().end()) return true;
    if (std::ranges::find(autresProgrammes, mot) != std::end(autresProgrammes)) return true;
  }
  return false;
}

}  // namespace

std::string replier(std::string_view nom) {
  const auto rogne = Texte::rogner(nom);
  utf8proc_uint8_t* sortie = nullptr;
  const auto options = static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_DECOMPOSE | UTF8PROC_COMPAT |
                                                      UTF8PROC_CASEFOLD | UTF8PROC_STRIPMARK);
  const auto octets = utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(rogne.data()),
                                   static_cast<utf8proc_ssize_t>(rogne.size()), &sortie, options);
  const std::unique_ptr<utf8proc_uint8_t, void (*)(void*)> garde(sortie, std::free);
  if (octets < 0) return std::string(rogne);
  return {reinterpret_cast<const char*>(sortie), static_cast<std::size_t>(octets)};
}

const std::vector<std::string>& lanceurs() {
  static const std::vector<std::string> ids = {"claude", "codex", "grok", "gemini"};
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
  if (replier(nom).empty()) return "Un nom ne peut pas être vide.";
  if (Texte::caracteres(nom) > nomMax) return "Nom trop long : " + cite(nom) + ".";
  if (std::ranges::any_of(nom, [](unsigned char c) { return c < 0x20 || c == 0x7F; }))
    return "Un nom tient sur une ligne, sans caractère de contrôle.";
  if (indicatif && designeUnProgramme(replier(nom)))
    return cite(nom) + " désigne un programme ou un modèle : un agent ne peut pas porter ce nom.";
  return std::nullopt;
}

std::string cite(std::string_view texte) {
  return "« " + Texte::tronquer(Texte::rogner(texte), citationMax) + " »";
}

std::string enumerer(const std::vector<std::string>& textes) {
  if (textes.empty()) return "aucun";
  std::string liste;
  for (const std::string& texte : textes) liste.append(liste.empty() ? "" : ", ").append(texte);
  return liste;
}

}  // namespace tarnavelle::PorteEssai
