#include "Options.hpp"

#include <algorithm>
#include <optional>
#include <string_view>

#include "Jeton.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::PorteEssai {
namespace {

std::optional<std::int64_t> nombreEntre(const std::string& texte, std::int64_t minimum, std::int64_t maximum) {
  const auto n = entierDecimal(texte);
  return n && *n >= minimum && *n <= maximum ? n : std::nullopt;
}

struct Option {
  std::string_view nom;
  std::string_view valeur;  ///< what its argument is, empty when it takes none
  std::string_view aide;
  bool (*poser)(Options& options, const std::string& valeur);  ///< whether the value is acceptable
};

constexpr Option table[] = {
    {"--port", "N", "port d'écoute (défaut : un port libre)",
     [](Options& o, const std::string& v) {
       const auto n = nombreEntre(v, 0, 65535);
       o.serveur.port = static_cast<std::uint16_t>(n.value_or(0));
       return n.has_value();
     }},
    {"--fichier", "CHEMIN", "fichier d'adresse à écrire (défaut : celui du cockpit)",
     [](Options& o, const std::string& v) {
       o.fichier = v;
       return o.fichier.has_filename();
     }},
    {"--jeton", "TEXTE", "jeton exigé, pour les tests (défaut : 32 octets au hasard)",
     [](Options& o, const std::string& v) {
       o.serveur.jeton = v;
       return jetonUtilisable(v);
     }},
    {"--retard-ms", "N", "panne : attendre avant de répondre",
     [](Options& o, const std::string& v) {
       const auto n = nombreEntre(v, 0, 3'600'000);
       o.serveur.pannes.retard = std::chrono::milliseconds(n.value_or(0));
       return n.has_value();
     }},
    {"--couper", "", "panne : annoncer toute la réponse, en envoyer la moitié, fermer",
     [](Options& o, const std::string&) { return o.serveur.pannes.couper = true; }},
    {"--statut", "N", "panne : répondre ce statut (200 à 599, sauf 204 et 304)",
     [](Options& o, const std::string& v) {
       const auto n = nombreEntre(v, 200, 599);
       o.serveur.pannes.statut = static_cast<unsigned>(n.value_or(200));
       return n && *n != 204 && *n != 304;  // these two carry no body
     }},
    {"--corps", "TEXTE", "panne : répondre ce corps, tel quel",
     [](Options& o, const std::string& v) {
       o.serveur.pannes.corps = v;
       return true;
     }},
    {"--help", "", "cette aide", [](Options& o, const std::string&) { return o.aide = true; }},
};

}  // namespace

Resultat<Options, std::string> Options::lire(const std::vector<std::string>& arguments) {
  Options options;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const auto* option = std::ranges::find(table, arguments[i], &Option::nom);
    if (option == std::end(table))
      return Sinon{"Option inconnue : « " + Texte::tronquer(arguments[i], 40) + " ». Voir --help."};
    std::string valeur;
    if (!option->valeur.empty()) {
      if (++i == arguments.size()) return Sinon{"Il manque la valeur de " + std::string(option->nom) + "."};
      valeur = arguments[i];
    }
    if (!option->poser(options, valeur))
      return Sinon{"La valeur de " + std::string(option->nom) + " ne convient pas. Voir --help."};
  }
  return options;
}

std::string Options::texteAide() {
  std::string aide =
      "porte-essai : une porte de commande d'essai, sur cette machine, avec un plateau en mémoire.\n\n";
  for (const Option& option : table) {
    std::string gauche = "  " + std::string(option.nom) + " " + std::string(option.valeur);
    gauche.resize(std::max<std::size_t>(gauche.size() + 1, 22), ' ');
    aide.append(gauche).append(option.aide).append("\n");
  }
  return aide;
}

}  // namespace tarnavelle::PorteEssai
