#include "Voix/CoutDuJour.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <nlohmann/json.hpp>
#include <thread>
#include <utility>

#include "Socle/EcritureJSON.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/Inoffensif.hpp"

namespace tarnavelle {
namespace {

constexpr std::size_t tailleMax = std::size_t{64} * 1024;  ///< bytes of the file

/// The lock, until the end of the scope; the system lets go of it when the process ends.
class Verrou {
 public:
  explicit Verrou(const std::string& chemin)
      : descripteur_(::open(chemin.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600)) {}
  Verrou(const Verrou&) = delete;
  Verrou& operator=(const Verrou&) = delete;
  ~Verrou() {
    if (descripteur_ >= 0) ::close(descripteur_);
  }

  /// False, which errno tells, when it cannot be had in time.
  bool prendre(std::chrono::milliseconds patience) const {
    constexpr std::chrono::milliseconds pause{5};
    const auto fin = std::chrono::steady_clock::now() + patience;
    while (descripteur_ >= 0) {
      if (::flock(descripteur_, LOCK_EX | LOCK_NB) == 0) return true;
      if (errno != EWOULDBLOCK && errno != EINTR) return false;
      if (std::chrono::steady_clock::now() >= fin) {
        errno = EWOULDBLOCK;
        return false;
      }
      std::this_thread::sleep_for(pause);
    }
    return false;
  }

 private:
  int descripteur_;
};

std::string nomme(const std::filesystem::path& fichier) {
  return "« " + Inoffensif::montrable(fichier.string()) + " »";
}

}  // namespace

std::filesystem::path CoutDuJour::chemin(const Variables& environnement) {
  return dossierEtats(environnement) / "tarnavelle" / "voix" / "cout.json";
}

std::optional<CumulVoixDuJour> CoutDuJour::lire() const {
  const auto texte = lireFichier(fichier_, tailleMax);
  return texte ? CumulVoixDuJour::lire(*texte) : std::nullopt;
}

Resultat<CoutDuJour::Ajout, std::string> CoutDuJour::ajouter(double dollars, Instant le) const {
  const auto refus = [&] {
    const int erreur = errno;
    return Sinon{"Le coût du jour n'est pas gardé dans " + nomme(fichier_) + " : " +
                 (erreur == EWOULDBLOCK ? "un autre programme l'écrit" : raisonEcriture(erreur)) + "."};
  };
  creerDossierPrive(fichier_.parent_path());
  const Verrou verrou(fichier_.string() + ".verrou");
  if (!verrou.prendre(patience_)) return refus();
  const auto ancien = lire();
  Ajout ajout;
  std::error_code faute;
  if (!ancien && std::filesystem::exists(std::filesystem::symlink_status(fichier_, faute))) {
    const std::filesystem::path ecarte = fichier_.string() + ".illisible";
    std::filesystem::rename(fichier_, ecarte, faute);
    if (faute) {
      errno = faute.value();
      return refus();
    }
    ajout.plainte =
        "Le coût du jour était illisible : il repart de zéro, et l'ancien fichier est mis de côté dans " +
        nomme(ecarte) + ".";
  }
  ajout.cumul = ancien.value_or(CumulVoixDuJour{}).ajoutant(dollars, le, calendrier_);
  const auto texte = EcritureJSON::compacte(ajout.cumul.json());
  if (!texte || !ecrireFichierPrive(fichier_, *texte + "\n")) return refus();
  return ajout;
}

std::optional<std::string> CoutDuJour::ligne(Instant le) const {
  const auto cumul = lire();
  return cumul ? cumul->ligne(le, calendrier_) : std::nullopt;
}

}  // namespace tarnavelle
