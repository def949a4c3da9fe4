#include "Socle/Fichiers.hpp"

#include <fcntl.h>
#include <poll.h>
#include <pwd.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <system_error>

#include "Socle/Attente.hpp"

#if defined(__APPLE__)
#include <sysdir.h>
#endif

namespace tarnavelle {
namespace {

#if defined(__APPLE__)
/// The first folder that macOS reports for the current user; it may start with "~".
std::filesystem::path supportDeLaPlateforme(const std::filesystem::path& personnel) {
  char chemin[PATH_MAX];
  auto etat =
      sysdir_start_search_path_enumeration(SYSDIR_DIRECTORY_APPLICATION_SUPPORT, SYSDIR_DOMAIN_MASK_USER);
  if (sysdir_get_next_search_path_enumeration(etat, chemin) == 0) return {};
  if (chemin[0] == '~') return personnel / std::filesystem::path(chemin + 1).relative_path();
  return chemin;
}
#endif

}  // namespace

std::optional<std::string> lireFichier(const std::filesystem::path& chemin, std::size_t tailleMax) {
  const int fd = ::open(chemin.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0) return std::nullopt;
  std::optional<std::string> contenu;
  struct stat etat {};
  if (::fstat(fd, &etat) == 0 && S_ISREG(etat.st_mode)) {
    contenu.emplace();
    std::array<char, 16 * 1024> bloc;
    while (true) {
      const auto lus = ::read(fd, bloc.data(), bloc.size());
      if (lus < 0 && errno == EINTR) continue;
      if (lus == 0) break;
      if (lus < 0 || contenu->size() + static_cast<std::size_t>(lus) > tailleMax) {
        contenu.reset();
        break;
      }
      contenu->append(bloc.data(), static_cast<std::size_t>(lus));
    }
  }
  ::close(fd);
  return contenu;
}

bool ecrireTout(int descripteur, std::string_view octets) {
  while (!octets.empty()) {
    const auto ecrits = ::write(descripteur, octets.data(), octets.size());
    if (ecrits < 0 && (errno == EINTR || attendreSiOccupe(descripteur, POLLOUT))) continue;
    if (ecrits <= 0) return false;
    octets.remove_prefix(static_cast<std::size_t>(ecrits));
  }
  return true;
}

bool ecrireFichierPrive(const std::filesystem::path& chemin, std::string_view contenu, Duree duree) {
  std::string provisoire = chemin.string() + ".XXXXXX";
  const int fd = ::mkostemp(provisoire.data(), O_CLOEXEC);  // a new file, 0600
  if (fd < 0) return false;
  const bool ecrit = ecrireTout(fd, contenu) && (duree == Duree::passagere || ::fsync(fd) == 0);
  if (::close(fd) == 0 && ecrit && ::rename(provisoire.c_str(), chemin.c_str()) == 0) return true;
  const int erreur = errno;
  ::unlink(provisoire.c_str());
  errno = erreur;
  return false;
}

std::string raisonEcriture(int erreur) {
  switch (erreur) {
    case EACCES:
    case EPERM: return "accès refusé";
    case EISDIR: return "c'est un dossier";
    case ENOENT: return "le dossier n'existe pas";
    case ENOTDIR: return "un élément du chemin n'est pas un dossier";
    case ENOSPC:
    case EDQUOT:
    case EFBIG: return "le disque est plein";
    case EIO: return "le disque est en panne";
    case EPIPE: return "plus personne ne le lit";
    case EROFS: return "le disque est en lecture seule";
    case ENAMETOOLONG: return "le nom est trop long";
    default: return "le système refuse (" + std::generic_category().message(erreur) + ")";
  }
}

bool creerDossierPrive(const std::filesystem::path& dossier) {
  struct stat etat {};
  if (dossier.empty()) return true;
  if (::stat(dossier.c_str(), &etat) == 0) return S_ISDIR(etat.st_mode);
  return creerDossierPrive(dossier.parent_path()) && (::mkdir(dossier.c_str(), 0700) == 0 || errno == EEXIST);
}

bool reserverDossier(const std::filesystem::path& dossier) {
  if (!creerDossierPrive(dossier)) return false;
  const int fd = ::open(dossier.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return false;
  struct stat etat {};
  const bool notre = ::fstat(fd, &etat) == 0 && etat.st_uid == ::geteuid() &&
                     ((etat.st_mode & (S_IRWXG | S_IRWXO)) == 0 || ::fchmod(fd, S_IRWXU) == 0);
  ::close(fd);
  return notre;
}

bool fichierExecutable(const std::filesystem::path& chemin) {
  struct stat etat {};
  return ::stat(chemin.c_str(), &etat) == 0 && S_ISREG(etat.st_mode) && ::access(chemin.c_str(), X_OK) == 0;
}

std::filesystem::path dossierPersonnel(const Variables& environnement) {
  if (environnement.texte("HOME")) return *environnement.octets("HOME");  // a path: its bytes are kept
  std::array<char, 16 * 1024> textes;                                     // far more than an entry holds
  passwd compte{}, *trouve = nullptr;
  const bool lue = ::getpwuid_r(::getuid(), &compte, textes.data(), textes.size(), &trouve) == 0;
  return lue && trouve && trouve->pw_dir ? trouve->pw_dir : "";
}

std::filesystem::path dossierApplicationSupport(const Variables& environnement) {
  const auto personnel = dossierPersonnel(environnement);
#if defined(__APPLE__)
  if (auto support = supportDeLaPlateforme(personnel); !support.empty()) return support;
#endif
  return personnel / applicationSupport;
}

namespace {

/// XDG Base Directory 0.8: the folder that the variable names, else that one in the home folder.
std::filesystem::path dossierXDG(const Variables& environnement, [[maybe_unused]] const char* variable,
                                 [[maybe_unused]] std::string_view sinon) {
#if defined(__APPLE__)
  return dossierApplicationSupport(environnement);
#else
  const std::filesystem::path choisi = environnement.octets(variable).value_or("");
  return choisi.is_absolute() ? choisi : dossierPersonnel(environnement) / sinon;
#endif
}

}  // namespace

std::filesystem::path dossierEtats(const Variables& environnement) {
  return dossierXDG(environnement, "XDG_STATE_HOME", ".local/state");
}

std::filesystem::path dossierReglages(const Variables& environnement) {
  return dossierXDG(environnement, "XDG_CONFIG_HOME", ".config");
}

}  // namespace tarnavelle
