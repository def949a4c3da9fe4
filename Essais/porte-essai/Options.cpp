#include "Options.hpp"

#include <optional>

#include "Accueil/Jeton.hpp"
#include "Accueil/TableOptions.hpp"
#include "Socle/LectureJSON.hpp"

namespace tarnavelle::PorteEssai {
namespace {

std::optional<std::int64_t> nombreEntre(const std::string& texte, std::int64_t minimum, std::int64_t maximum) {
  const auto n = entierDecimal(texte);
  return n && *n >= minimum && *n <= maximum ? n : std::nullopt;
}

constexpr Plateau::LigneOption<Options> table[] = {
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
       o.jeton = v;
       return Plateau::jetonUtilisable(v);
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
  return Plateau::TableOptions::lire<Options>(table, arguments, "--help");
}

std::string Options::texteAide() {
  return "porte-essai : une porte de commande d'essai, sur cette machine, avec un plateau en mémoire.\n\n" +
         Plateau::TableOptions::aide<Options>(table);
}

}  // namespace tarnavelle::PorteEssai
