// One connection to an SQLite file, and the sittings in which it is asked. A sitting holds the connection's
// lock from its birth to its end, and remembers its first failure: what follows one does nothing, and
// `conclure` gives it.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "Registre/Avarie.hpp"
#include "Socle/Date.hpp"
#include "Verrou.hpp"

namespace tarnavelle::Plateau {

/// The row that a statement stands on, its columns read from left to right.
class Ligne {
 public:
  explicit Ligne(sqlite3_stmt* requete) : requete_(requete) {}

  std::string texte();
  std::int64_t entier() { return sqlite3_column_int64(requete_, colonne_++); }
  int petit() { return sqlite3_column_int(requete_, colonne_++); }
  bool vrai() { return entier() != 0; }
  Date::Instant instant() { return Date::Instant(std::chrono::milliseconds(entier())); }
  std::vector<std::string> mots();
  /// An enumeration's case by its rank; `dernier` for what is none of them.
  template <class Enumeration>
  Enumeration cas(Enumeration dernier) {
    const std::int64_t rang = entier();
    const auto fin = static_cast<std::int64_t>(dernier);
    return static_cast<Enumeration>(rang < 0 || rang > fin ? fin : rang);
  }
  /// Nothing for NULL: `facultatif(&Ligne::instant)`.
  template <class T>
  std::optional<T> facultatif(T (Ligne::*lire)()) {
    if (sqlite3_column_type(requete_, colonne_) != SQLITE_NULL) return (this->*lire)();
    ++colonne_;
    return std::nullopt;
  }

 private:
  sqlite3_stmt* requete_;
  int colonne_ = 0;
};

class BaseSQLite {
 public:
  /// ":memory:" for one without a file. The file is made by the caller, who knows for whom; what SQLite adds
  /// beside it has the same rights.
  static Garde<std::unique_ptr<BaseSQLite>> ouvrir(const std::string& chemin, std::optional<Verrou> verrou);

  BaseSQLite(const BaseSQLite&) = delete;
  BaseSQLite& operator=(const BaseSQLite&) = delete;
  ~BaseSQLite();

  /// Leaves the file and its log as they are when it closes; gives the lock back.
  static std::optional<Verrou> abandonner(std::unique_ptr<BaseSQLite> base);

 private:
  friend class Seance;
  explicit BaseSQLite(sqlite3* connexion, std::optional<Verrou> verrou)
      : verrou_(std::move(verrou)), connexion_(connexion) {}

  std::optional<Verrou> verrou_;  ///< let go once the connection is closed
  sqlite3* connexion_;
  std::mutex exclusion_;
};

class Seance {
 public:
  explicit Seance(BaseSQLite& base) : base_(base), exclusion_(base.exclusion_) {}
  Seance(const Seance&) = delete;
  Seance& operator=(const Seance&) = delete;
  /// What was not concluded is undone.
  ~Seance();

  /// From here on every change comes about with the others, when concluded, or none does.
  void commencer();

  /// Runs one statement, its parameters bound in order.
  template <class... Valeurs>
  void executer(const char* sql, const Valeurs&... valeurs) {
    lignes([](Ligne&) { return true; }, sql, valeurs...);
  }
  /// Runs the statements of a text, without parameters.
  void derouler(const char* sql);

  /// Each row of the answer, as `fiche` reads it.
  template <class Fiche, class... Valeurs>
  auto lignes(Fiche fiche, const char* sql, const Valeurs&... valeurs) {
    std::vector<std::invoke_result_t<Fiche, Ligne&>> lues;
    preparer(sql);
    rang_ = 0;
    (lier(valeurs), ...);
    while (avancer()) {
      Ligne ligne(requete_.get());
      lues.push_back(fiche(ligne));
    }
    requete_.reset();
    return lues;
  }
  /// The first row, where there is one.
  template <class Fiche, class... Valeurs>
  auto ligne(Fiche fiche, const char* sql, const Valeurs&... valeurs) {
    auto lues = lignes(fiche, sql, valeurs...);
    return lues.empty() ? std::nullopt : std::optional(std::move(lues.front()));
  }
  /// The first row's first column; 0 where there is no row.
  template <class... Valeurs>
  std::int64_t entier(const char* sql, const Valeurs&... valeurs) {
    return ligne([](Ligne& l) { return l.entier(); }, sql, valeurs...).value_or(0);
  }

  std::int64_t dernierNumero() const { return sqlite3_last_insert_rowid(base_.connexion_); }
  /// Rows that the last statement changed.
  int changees() const { return sqlite3_changes(base_.connexion_); }

  bool enEchec() const { return avarie_.has_value(); }
  void refuser(Avarie::Cas cas, std::string phrase);
  /// Refuses when the last statement changed nothing.
  void exigerChange(std::string_view quoi);
  /// Refuses one more row than that.
  void exigerPlace(const char* sqlCompte, std::int64_t maximum);

  template <class T>
  Garde<T> conclure(T valeur) {
    if (!avarie_ && transaction_) terminer("COMMIT");
    if (avarie_) return Sinon{*avarie_};
    return valeur;
  }

 private:
  struct Finir {
    void operator()(sqlite3_stmt* requete) const { sqlite3_finalize(requete); }
  };

  void preparer(const char* sql);
  bool avancer();
  void verifier(int code);
  void terminer(const char* sql);

  void lier(std::string_view texte);
  void lier(const std::string& texte) { lier(std::string_view(texte)); }
  void lier(std::int64_t nombre);
  void lier(int nombre) { lier(std::int64_t{nombre}); }
  void lier(bool vrai) { lier(std::int64_t{vrai}); }
  template <class Enumeration>
  requires std::is_enum_v<Enumeration>
  void lier(Enumeration cas) { lier(static_cast<std::int64_t>(cas)); }
  void lier(Date::Instant instant) { lier(std::int64_t{instant.time_since_epoch().count()}); }
  void lier(const std::vector<std::string>& mots);
  template <class T>
  void lier(const std::optional<T>& valeur) {
    if (valeur)
      lier(*valeur);
    else
      ++rang_;
  }

  BaseSQLite& base_;
  std::lock_guard<std::mutex> exclusion_;
  std::unique_ptr<sqlite3_stmt, Finir> requete_;
  int rang_ = 0;
  bool transaction_ = false;
  std::optional<Avarie> avarie_;
};

/// A sitting that changes something.
class Ecriture : public Seance {
 public:
  explicit Ecriture(BaseSQLite& base) : Seance(base) { commencer(); }
};

}  // namespace tarnavelle::Plateau
