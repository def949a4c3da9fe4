#include "Acces.hpp"

#include "Accueil/Jeton.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/LectureJSON.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::size_t tailleMax = 4096;

}  // namespace

std::optional<Acces> Acces::lire(const std::filesystem::path& fichier) {
  Acces acces;
  if (const auto texte = lireFichier(fichier, tailleMax))
    if (const auto json = LectureJSON::objet(*texte)) {
      const auto port = Champ::entier(*json, "port", 0);
      acces.port = port > 0 && port <= 65535 ? static_cast<std::uint16_t>(port) : std::uint16_t{0};
      acces.jeton = Champ::texte(*json, "jeton");
      acces.secret = Champ::texte(*json, "secret");
    }
  std::error_code erreur;
  if ((!jetonUtilisable(acces.jeton) || !jetonUtilisable(acces.secret)) &&
      std::filesystem::exists(std::filesystem::symlink_status(fichier, erreur))) {
    const std::filesystem::path ecarte = fichier.string() + ".endommage";
    std::filesystem::rename(fichier, ecarte, erreur);
    acces.avis = "« " + fichier.string() + " », d'où viennent les jetons des agents, ne se lit plus" +
                 (erreur ? std::string(".") : " : il est mis de côté sous « " + ecarte.string() + " ».") +
                 " Un agent encore ouvert n'a plus accès à la porte : relancer_agent le lui rend.";
  }
  for (std::string* secret : {&acces.jeton, &acces.secret}) {
    if (jetonUtilisable(*secret)) continue;
    const auto neuf = jetonAleatoire();
    if (!neuf) return std::nullopt;
    *secret = *neuf;
  }
  return acces;
}

bool Acces::ecrire(const std::filesystem::path& fichier) const {
  const auto texte = EcritureJSON::compacte({{"port", port}, {"jeton", jeton}, {"secret", secret}});
  return texte && ecrireFichierPrive(fichier, *texte);
}

}  // namespace tarnavelle::Plateau
