#include "Etats/Etat.hpp"

namespace tarnavelle::Plateau {

std::string_view nom(Etat etat) {
  switch (etat) {
    case Etat::travaille: return "travaille";
    case Etat::besoin: return "besoin";
    case Etat::repos: return "repos";
    case Etat::fini: return "fini";
    case Etat::sorti: return "sorti";
    case Etat::rompue: return "rompue";
    case Etat::inconnu: return "inconnu";
  }
  return "";
}

std::string_view nom(Source source) {
  switch (source) {
    case Source::aucune: return "";
    case Source::crochet: return "crochet";
    case Source::ecran: return "écran";
    case Source::titre: return "titre";
    case Source::processus: return "processus";
    case Source::porte: return "porte";
    case Source::lien: return "lien";
  }
  return "";
}

std::string_view description(Source source) {
  switch (source) {
    case Source::aucune: return "rien";
    case Source::crochet: return "un crochet";
    case Source::ecran: return "l'écran";
    case Source::titre: return "le titre";
    case Source::processus: return "le processus";
    case Source::porte: return "la porte";
    case Source::lien: return "le lien avec sa machine";
  }
  return "";
}

}  // namespace tarnavelle::Plateau
