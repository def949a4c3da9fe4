#include "BaseSQLite.hpp"

#include <cerrno>

#include "Registre/Registre.hpp"

namespace tarnavelle::Plateau {
namespace {

Avarie avarie(int code, int erreurSysteme) {
  using Cas = Avarie::Cas;
  const bool sansPlace = erreurSysteme == ENOSPC || erreurSysteme == EDQUOT || erreurSysteme == EFBIG;
  switch (code & 0xff) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED: return {Cas::occupe, "Le registre est occupé par un autre programme."};
    case SQLITE_IOERR:
      if (!sansPlace) break;
      [[fallthrough]];
    case SQLITE_FULL:
      return {Cas::plein,
              "Le registre ne peut plus rien noter : le disque est plein, ou il a atteint sa taille limite."};
    case SQLITE_ERROR:  // no statement of ours is wrong: the tables are not those that the version says
    case SQLITE_MISMATCH:
    case SQLITE_CONSTRAINT:
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB: return {Cas::illisible, "Le registre est endommagé."};
    default: break;
  }
  return {Cas::inaccessible,
          "Le registre ne peut être ni lu ni écrit : son dossier, ses droits ou son disque sont à "
          "vérifier (SQLite " +
              std::to_string(code) + ")."};
}

}  // namespace

std::string Ligne::texte() {
  const auto* octets = reinterpret_cast<const char*>(sqlite3_column_text(requete_, colonne_));
  const auto taille = static_cast<std::size_t>(sqlite3_column_bytes(requete_, colonne_++));
  return octets ? std::string(octets, taille) : std::string();
}

std::vector<std::string> Ligne::mots() {
  std::vector<std::string> mots;
  const std::string tous = texte();
  for (std::size_t debut = 0; debut < tous.size(); debut += mots.back().size() + 1)
    mots.push_back(tous.substr(debut, tous.find('\0', debut) - debut));
  return mots;
}

Garde<std::unique_ptr<BaseSQLite>> BaseSQLite::ouvrir(const std::string& chemin, std::optional<Verrou> verrou) {
  sqlite3* connexion = nullptr;
  // Sittings keep threads apart: SQLite need not.
  const int code = sqlite3_open_v2(
      chemin.c_str(), &connexion, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
  std::unique_ptr<BaseSQLite> base(new BaseSQLite(connexion, std::move(verrou)));
  if (code != SQLITE_OK) return Sinon{avarie(code, connexion ? sqlite3_system_errno(connexion) : 0)};
  // A file from elsewhere may hold hostile triggers and views: none of them runs.
  sqlite3_db_config(connexion, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_db_config(connexion, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  sqlite3_db_config(connexion, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
  sqlite3_db_config(connexion, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
  return base;
}

BaseSQLite::~BaseSQLite() { sqlite3_close(connexion_); }

std::optional<Verrou> BaseSQLite::abandonner(std::unique_ptr<BaseSQLite> base) {
  sqlite3_db_config(base->connexion_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  return std::exchange(base->verrou_, std::nullopt);
}

Seance::~Seance() {
  requete_.reset();
  // SQLite may have undone it already, where there was no room.
  if (transaction_ && !sqlite3_get_autocommit(base_.connexion_))
    sqlite3_exec(base_.connexion_, "ROLLBACK", nullptr, nullptr, nullptr);
}

void Seance::commencer() {
  executer("BEGIN IMMEDIATE");
  transaction_ = !avarie_;
}

void Seance::terminer(const char* sql) {
  executer(sql);
  if (!avarie_) transaction_ = false;
}

void Seance::derouler(const char* sql) {
  if (!avarie_) verifier(sqlite3_exec(base_.connexion_, sql, nullptr, nullptr, nullptr));
}

void Seance::refuser(Avarie::Cas cas, std::string phrase) {
  if (!avarie_) avarie_ = {cas, std::move(phrase)};
}

void Seance::exigerChange(std::string_view quoi) {
  if (!avarie_ && changees() == 0)
    refuser(Avarie::Cas::absent, std::string(quoi) + " n'est plus dans le registre.");
}

void Seance::exigerPlace(const char* sqlCompte, std::int64_t maximum) {
  if (entier(sqlCompte) >= maximum)
    refuser(Avarie::Cas::borne, "Le plateau est plein : " + std::to_string(maximum) + " fiches au plus.");
}

void Seance::preparer(const char* sql) {
  if (avarie_) return;
  sqlite3_stmt* requete = nullptr;
  verifier(sqlite3_prepare_v3(base_.connexion_, sql, -1, 0, &requete, nullptr));
  requete_.reset(requete);
}

bool Seance::avancer() {
  if (avarie_) return false;
  const int code = sqlite3_step(requete_.get());
  if (code == SQLITE_ROW) return true;
  if (code != SQLITE_DONE) verifier(code);
  return false;
}

void Seance::verifier(int code) {
  if (code == SQLITE_OK || avarie_) return;
  avarie_ = avarie(code, sqlite3_system_errno(base_.connexion_));
}

void Seance::lier(std::string_view texte) {
  ++rang_;
  if (avarie_) return;
  if (texte.size() > Registre::texteMax)
    return refuser(Avarie::Cas::borne, "Un texte de plus de " + std::to_string(Registre::texteMax / 1024) +
                                           " Kio n'entre pas dans le registre.");
  verifier(sqlite3_bind_text(requete_.get(), rang_, texte.empty() ? "" : texte.data(),
                             static_cast<int>(texte.size()), SQLITE_TRANSIENT));
}

void Seance::lier(std::int64_t nombre) {
  ++rang_;
  if (!avarie_) verifier(sqlite3_bind_int64(requete_.get(), rang_, nombre));
}

void Seance::lier(const std::vector<std::string>& mots) {
  std::string tous;
  for (const std::string& mot : mots) tous.append(mot).push_back('\0');
  lier(std::string_view(tous));
}

}  // namespace tarnavelle::Plateau
