#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

#include "BaseSQLite.hpp"
#include "Registre/Registre.hpp"
#include "Schema.hpp"
#include "Socle/Fichiers.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::int64_t octetsParPage = 4096;  ///< of a file that SQLite makes

/// A registry ready for use, or why the file is none: `ecart` then names what it is.
struct Essai {
  Garde<std::unique_ptr<BaseSQLite>> base;
  std::string ecart;  ///< part of the name under which it is set aside; empty when it is to stay
};

/// What the file is before anything is changed in it.
struct Nature {
  std::int64_t application = 0;
  std::int64_t version = 0;
  bool vide = false;
};

Essai refus(Avarie avarie) {
  const bool ecarter = avarie.cas == Avarie::Cas::illisible;
  return {Sinon{std::move(avarie)}, ecarter ? "endommage" : ""};
}

Garde<Nature> examiner(BaseSQLite& base) {
  Seance seance(base);
  // Its own from the first reading to the end: no shared memory beside the file, and nobody changes it
  // meanwhile.
  seance.executer("PRAGMA locking_mode = EXCLUSIVE");
  Nature nature{.application = seance.entier("PRAGMA application_id"),
                .version = seance.entier("PRAGMA user_version"),
                .vide = seance.entier("SELECT count(*) FROM sqlite_schema") == 0};
  return seance.conclure(nature);
}

Garde<Fait> mettreAJour(BaseSQLite& base, std::int64_t version, std::int64_t taille) {
  {
    Seance seance(base);
    if (version > 0 && seance.ligne([](Ligne& l) { return l.texte(); }, "PRAGMA quick_check(1)") != "ok")
      seance.refuser(Avarie::Cas::illisible, "Le registre est endommagé.");
    // A file that holds nothing yet need not wait for the disk: that would be most of a first start.
    seance.executer(version > 0 ? "PRAGMA synchronous = NORMAL" : "PRAGMA synchronous = OFF");
    seance.executer("PRAGMA journal_mode = WAL");
    seance.executer("PRAGMA journal_size_limit = 4194304");
    seance.executer(("PRAGMA max_page_count = " + std::to_string(taille / octetsParPage)).c_str());
    if (auto fait = seance.conclure(Fait{}); !fait) return fait;
  }
  {
    Ecriture ecriture(base);
    if (version < Schema::version) Schema::migrer(ecriture, version);
    // Taken by a board that is no more: nobody knows how far it came.
    ecriture.executer("UPDATE messages SET etat = ? WHERE etat = ?", FicheMessage::Etat::douteux,
                      FicheMessage::Etat::pris);
    if (auto fait = ecriture.conclure(Fait{}); !fait) return fait;
  }
  Seance seance(base);
  seance.executer("PRAGMA synchronous = NORMAL");
  return seance.conclure(Fait{});
}

Essai essayer(const std::string& chemin, std::optional<Verrou>& verrou, std::int64_t taille) {
  auto base = BaseSQLite::ouvrir(chemin, std::exchange(verrou, std::nullopt));
  if (!base) return {Sinon{base.raison()}, ""};
  const auto rendre = [&](Essai essai) {
    verrou = BaseSQLite::abandonner(std::move(*base));
    return essai;
  };
  const auto nature = examiner(**base);
  if (!nature) return rendre(refus(nature.raison()));
  const bool vierge = nature->vide && nature->application == 0 && nature->version == 0;
  if (!vierge && (nature->application != Schema::application || nature->version < 1))
    return rendre({Sinon{Avarie{Avarie::Cas::illisible, "Le registre est le fichier d'un autre programme."}},
                   "etranger"});
  if (nature->version > Schema::version)
    return rendre(
        {Sinon{Avarie{Avarie::Cas::illisible, "Le registre vient d'une version plus récente de Tarnavelle."}},
         "version" + std::to_string(nature->version)});
  if (auto fait = mettreAJour(**base, nature->version, taille); !fait) return rendre(refus(fait.raison()));
  return {std::move(*base), ""};
}

/// Sees to it that a file of its owner's alone stands there. One that does is never opened: closing it would
/// let go of the locks that this process may have on it.
bool preparerFichier(const std::filesystem::path& chemin) {
  struct stat etat {};
  if (::lstat(chemin.c_str(), &etat) == 0)
    return S_ISREG(etat.st_mode) && ((etat.st_mode & 0777) == 0600 || ::chmod(chemin.c_str(), 0600) == 0);
  const int neuf = ::open(chemin.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  return neuf >= 0 && ::close(neuf) == 0;
}

/// Gives the file, and what goes with it, a name that is not taken; nothing when that cannot be done. The logs
/// go first: a database without its log is found again, a log without its database is thrown away by SQLite.
std::optional<std::filesystem::path> ecarter(const std::filesystem::path& chemin, const std::string& ecart,
                                             Date::Instant maintenant) {
  const Calendrier utc;
  std::string jour = utc.jour(maintenant), heure = utc.heure(maintenant);
  std::erase(jour, '-');
  std::erase(heure, ':');
  const std::string nom = chemin.string() + "." + ecart + "-" + jour + "-" + heure;
  std::filesystem::path cible = nom;
  struct stat etat {};
  for (int rang = 2; ::lstat(cible.c_str(), &etat) == 0; ++rang) cible = nom + "-" + std::to_string(rang);
  for (const char* suite : {"-wal", "-journal", ""}) {
    const std::string de = chemin.string() + suite;
    if (std::rename(de.c_str(), (cible.string() + suite).c_str()) != 0 && errno != ENOENT) return std::nullopt;
  }
  std::remove((chemin.string() + "-shm").c_str());  // says nothing that the log does not
  return cible;
}

}  // namespace

std::filesystem::path Registre::cheminUsuel(const Variables& environnement) {
  return dossierEtats(environnement) / "tarnavelle" / nomUsuel;
}

Registre::Registre(std::unique_ptr<BaseSQLite> base) : base_(std::move(base)) {}
Registre::Registre(Registre&&) noexcept = default;
Registre& Registre::operator=(Registre&&) noexcept = default;
Registre::~Registre() = default;

Garde<Registre> Registre::ouvrir(const Ouverture& ouverture) {
  const std::filesystem::path& chemin = ouverture.chemin;
  const auto inaccessible = [&](const char* pourquoi) {
    return Sinon{Avarie{Avarie::Cas::inaccessible, "Le registre « " + chemin.string() + " » " + pourquoi}};
  };
  if (!creerDossierPrive(chemin.parent_path())) return inaccessible("n'a pas de dossier où tenir.");
  auto pris = Verrou::prendre(chemin.string() + ".verrou");
  if (!pris) return Sinon{pris.raison()};
  std::optional<Verrou> verrou(std::move(*pris));

  std::string avis;
  while (true) {
    if (!preparerFichier(chemin)) return inaccessible("ne peut pas être créé, ou n'est pas un fichier à vous.");
    Essai essai = essayer(chemin.string(), verrou, ouverture.taille);
    if (essai.base) {
      Registre registre(std::move(*essai.base));
      registre.avis_ = std::move(avis);
      return registre;
    }
    // What was made anew just now is no better: setting it aside again would lead nowhere.
    if (essai.ecart.empty() || !avis.empty()) return Sinon{essai.base.raison()};
    const auto mis = ecarter(chemin, essai.ecart, ouverture.maintenant);
    if (!mis) return inaccessible("est à mettre de côté, et ne peut pas l'être.");
    avis = essai.base.raison().phrase + " Il est mis de côté sous « " + mis->string() +
           " », et un nouveau commence.";
  }
}

Garde<Registre> Registre::enMemoire() {
  std::optional<Verrou> aucun;
  Essai essai = essayer(":memory:", aucun, octetsMax);
  if (!essai.base) return Sinon{essai.base.raison()};
  return Registre(std::move(*essai.base));
}

}  // namespace tarnavelle::Plateau
