#include "Depot.hpp"

#include <cerrno>
#include <string>

#include "Socle/Fichiers.hpp"

namespace tarnavelle {

int deposer(Session& session, const std::filesystem::path& chemin, std::string_view contenu, int echec) {
  std::error_code erreur;
  // A new file takes the place of the old one: not that of a device or a pipe.
  const auto occupant = std::filesystem::status(chemin, erreur);
  std::string raison;
  if (std::filesystem::is_directory(occupant))
    raison = raisonEcriture(EISDIR);
  else if (std::filesystem::exists(occupant) && !std::filesystem::is_regular_file(occupant))
    raison = "ce n'est pas un fichier ordinaire";
  else if (!ecrireFichierPrive(chemin, contenu))
    raison = raisonEcriture(errno);
  if (!raison.empty()) {
    session.erreurs.avertir("Impossible d'écrire " + chemin.string() + " : " + raison + ".");
    return echec;
  }
  const auto absolu = std::filesystem::absolute(chemin, erreur);
  session.sortie.montrer({{(erreur ? chemin : absolu).string()}});
  return Statut::fait;
}

}  // namespace tarnavelle
