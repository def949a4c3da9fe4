#include "Photographe/Album.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>

#include "Socle/Fichiers.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau::Album {
namespace {

constexpr std::size_t nomMax = 40;  ///< characters of a name in a file's
constexpr int homonymesMax = 9999;

std::string refus(const std::filesystem::path& dossier, int erreur) {
  return "Impossible d'écrire dans « " + dossier.string() + " » : " + raisonEcriture(erreur) + ".";
}

}  // namespace

std::string nomDeFichier(std::string_view sujet, std::chrono::system_clock::time_point quand,
                         const Calendrier& calendrier) {
  std::string heure = calendrier.heure(quand);
  std::erase(heure, ':');
  const std::string nom = "tarnavelle-" + calendrier.jour(quand) + "-" + heure;
  const std::string mots = Texte::joindre(Texte::suitesDeLettres(Texte::premiers(sujet, nomMax)), "-");
  return nom + (mots.empty() ? "" : "-" + mots) + ".png";
}

Resultat<std::filesystem::path, std::string> ranger(const std::filesystem::path& chemin, std::string_view png) {
  static std::atomic<unsigned> rang = 0;
  const auto dossier = chemin.parent_path();
  const auto brouillon =
      dossier / (".tarnavelle-" + std::to_string(::getpid()) + "-" + std::to_string(++rang) + ".png");
  if (!ecrireFichierPrive(brouillon, png)) return Sinon{refus(dossier, errno)};
  auto candidat = chemin;
  int erreur = 0;
  // A place where nothing stands yet, then the picture in it. Not a link: not every disk has them.
  const auto prendre = [&] {
    const int place = ::open(candidat.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (place >= 0) ::close(place);
    return place >= 0 && ::rename(brouillon.c_str(), candidat.c_str()) == 0 ? 0 : errno;
  };
  for (int n = 2; (erreur = prendre()) == EEXIST; ++n) {
    if (n > homonymesMax) break;
    candidat.replace_filename(chemin.stem().string() + "-" + std::to_string(n) + chemin.extension().string());
  }
  if (erreur == 0) return candidat;
  ::unlink(brouillon.c_str());
  return Sinon{refus(dossier, erreur)};
}

}  // namespace tarnavelle::Plateau::Album
