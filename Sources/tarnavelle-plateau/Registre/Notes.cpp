#include <algorithm>

#include "BaseSQLite.hpp"
#include "Registre/Registre.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::size_t motsMax = 32;        ///< words of a request that count
constexpr std::size_t octetsMotMax = 256;  ///< longer ones are no words
constexpr std::size_t debutMin = 3;        ///< characters from which a word also stands for those that begin so

/// The words as an FTS5 expression (https://sqlite.org/fts5.html#full_text_query_syntax). A word is letters and
/// numbers alone, so nothing within its quotes can end them.
std::string expression(std::string_view requete) {
  auto mots = Texte::suitesDeLettres(requete);
  std::erase_if(mots, [](std::string_view mot) { return mot.size() > octetsMotMax; });
  mots.resize(std::min(mots.size(), motsMax));
  return Texte::joindre(mots, " OR ", [](std::string_view mot) {
    return '"' + std::string(mot) + (Texte::caracteres(mot) < debutMin ? "\"" : "\"*");
  });
}

FicheNote noteLue(Ligne& l) {
  return {.numero = l.entier(),
          .texte = l.texte(),
          .scene = l.facultatif(&Ligne::entier),
          .auteur = l.texte(),
          .quand = l.instant()};
}

}  // namespace

Garde<std::int64_t> Registre::noter(const FicheNote& note) {
  Ecriture ecriture(*base_);
  ecriture.exigerPlace("SELECT count(*) FROM notes", fichesMax);
  ecriture.executer("INSERT INTO notes(texte, scene, auteur, quand) VALUES (?, ?, ?, ?)", note.texte,
                    note.scene, note.auteur, note.quand);
  return ecriture.conclure(ecriture.dernierNumero());
}

Garde<std::vector<FicheNote>> Registre::rappeler(const Recherche& recherche) const {
  Seance seance(*base_);
  const std::int64_t limite = std::clamp(recherche.limite, std::int64_t{0}, fichesMax);
  if (Texte::rogner(recherche.requete).empty())
    return seance.conclure(seance.lignes(noteLue,
                                         "SELECT rowid, texte, scene, auteur, quand FROM notes "
                                         "WHERE scene IS NULL OR scene = ? ORDER BY rowid DESC LIMIT ?",
                                         recherche.scene, limite));
  const std::string mots = expression(recherche.requete);
  if (mots.empty()) return std::vector<FicheNote>();
  return seance.conclure(
      seance.lignes(noteLue,
                    "SELECT rowid, texte, scene, auteur, quand FROM notes "
                    "WHERE notes MATCH ? AND (scene IS NULL OR scene = ?) ORDER BY rank, rowid DESC LIMIT ?",
                    mots, recherche.scene, limite));
}

}  // namespace tarnavelle::Plateau
