#include "Depot.hpp"

#include <cerrno>
#include <cstring>
#include <string>

#include "Socle/Fichiers.hpp"

namespace tarnavelle {
namespace {

std::string raisonDe(int erreur) {
  switch (erreur) {
    case EACCES:
    case EPERM: return "accès refusé";
    case EISDIR: return "c'est un dossier";
    case ENOENT: return "le dossier n'existe pas";
    case ENOTDIR: return "un élément du chemin n'est pas un dossier";
    case ENOSPC: return "le disque est plein";
    case EROFS: return "le disque est en lecture seule";
    case ENAMETOOLONG: return "le nom est trop long";
    default: return std::strerror(erreur);
  }
}

}  // namespace

int deposer(Session& session, const std::filesystem::path& chemin, std::string_view contenu, int echec) {
  if (!ecrireFichierPrive(chemin, contenu)) {
    session.erreurs.avertir("Impossible d'écrire " + chemin.string() + " : " + raisonDe(errno) + ".");
    return echec;
  }
  std::error_code erreur;
  const auto absolu = std::filesystem::absolute(chemin, erreur);
  session.sortie.montrer({{(erreur ? chemin : absolu).string()}});
  return Statut::fait;
}

}  // namespace tarnavelle
