#include "Options.hpp"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "Socle/Colonnes.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/Texte.hpp"
#include "Voix/ProfilEcouteVoix.hpp"

namespace tarnavelle::Voix {
namespace {

struct Rang {
  std::string_view nom;
  std::string_view valeur;  ///< what it takes; empty for a flag
  std::string_view objet;
  bool Options::*drapeau = nullptr;
  std::optional<std::string> Options::*texte = nullptr;
};

constexpr std::array<Rang, 15> table = {{
    {"--pousser", "", "ne vous écouter que touche espace tenue (ou d'une pression à l'autre)",
     &Options::pousser},
    {"--service", "NOM", "openai, openai-2.1, grok, ou autre (une adresse réglée)", nullptr, &Options::service},
    {"--modele", "NOM", "modèle demandé, au lieu de celui du service", nullptr, &Options::modele},
    {"--voix", "NOM", "voix demandée, au lieu de celle du service", nullptr, &Options::voix},
    {"--profil", "NOM",
     "casque : vous pouvez couper la parole ; haut-parleurs : le micro se tait quand la voix parle", nullptr,
     &Options::profil},
    {"--micro", "NOM", "un autre micro, par son numéro ou une partie de son nom", nullptr, &Options::micro},
    {"--haut-parleur", "NOM", "un autre haut-parleur, de même", nullptr, &Options::hautParleur},
    {"--entree", "FICHIER", "un son au lieu du micro (WAV, FLAC, OGG) ; - pour l'entrée standard", nullptr,
     &Options::entree},
    {"--sortie", "FICHIER", "un fichier WAV au lieu du haut-parleur ; - pour la sortie standard", nullptr,
     &Options::sortie},
    {"--json", "", "un objet JSON par ligne, pour un programme", &Options::json},
    {"--peripheriques", "", "montrer les micros et haut-parleurs de cette machine", &Options::peripheriques},
    {"--reglages", "", "montrer ce qui est réglé, sans les secrets", &Options::reglages},
    {"--regler", "REGLAGE", "garder un réglage, lu sur l'entrée standard (vide : l'oublier)", nullptr,
     &Options::regler},
    {"--version", "", "dire la version", &Options::version},
    {"--help", "", "cette aide", &Options::aide},
}};

std::string citer(std::string_view mot) {
  return "« " + Inoffensif::montrable(Texte::tronquer(mot, 40)) + " »";
}

}  // namespace

Resultat<Options, std::string> Options::lire(const std::vector<std::string>& mots) {
  Options options;
  for (std::size_t i = 0; i < mots.size(); ++i) {
    const std::string_view mot = mots[i] == "-h" || mots[i] == "--aide" ? "--help" : std::string_view(mots[i]);
    const auto egal = mot.starts_with("--") ? mot.find('=') : mot.npos;
    const auto nom = mot.substr(0, egal);
    const auto* rang = std::ranges::find(table, nom, &Rang::nom);
    if (rang == table.end()) return Sinon{"Option inconnue : " + citer(nom) + "."};
    if (rang->drapeau) {
      if (egal != mot.npos) return Sinon{std::string(nom) + " ne prend pas de valeur."};
      options.*rang->drapeau = true;
      continue;
    }
    if (egal == mot.npos && i + 1 == mots.size())
      return Sinon{"Il manque ce que prend " + std::string(nom) + " : " + std::string(rang->valeur) + "."};
    const std::string valeur = egal != mot.npos ? std::string(mot.substr(egal + 1)) : mots[++i];
    if (valeur.empty()) return Sinon{std::string(nom) + " est vide."};
    options.*rang->texte = valeur;
  }
  if (options.profil)
    if (auto refus = refusProfil(*options.profil)) return Sinon{*std::move(refus)};
  return options;
}

std::optional<std::string> Options::refusProfil(std::string_view nom) {
  if (nom == ProfilEcouteVoix::casque().nom || nom == ProfilEcouteVoix::hautParleurs().nom) return std::nullopt;
  return "Profil inconnu : " + citer(nom) + ". Connus : " + ProfilEcouteVoix::casque().nom + ", " +
         ProfilEcouteVoix::hautParleurs().nom + ".";
}

std::string Options::texteAide() {
  std::string texte =
      "tarnavelle-voix : parler au plateau. Un micro, un haut-parleur, un service vocal, et les verbes du "
      "plateau\n"
      "pour outils.\n\n";
  for (const Rang& rang : table) {
    const std::string forme =
        std::string(rang.nom) + (rang.valeur.empty() ? "" : " ") + std::string(rang.valeur);
    bool premiere = true;
    for (const std::string& ligne : Colonnes::plier(rang.objet, 72)) {
      texte += "  " + Colonnes::completer(premiere ? forme : "", 20) + " " + ligne + "\n";
      premiere = false;
    }
  }
  return texte +
         "\nIl faut la clé d'un service : OPENAI_API_KEY ou XAI_API_KEY, dans l'environnement ou gardée par "
         "--regler.\n"
         "Sur un terminal : espace pour parler, faire taire ou réveiller ; Ctrl-C pour raccrocher.\n"
         "Statuts : 0 fini ; 1 le service refuse ; 2 ligne, réglage ou périphérique à revoir ; 3 service "
         "injoignable ;\n"
         "130 interrompu.\n";
}

}  // namespace tarnavelle::Voix
