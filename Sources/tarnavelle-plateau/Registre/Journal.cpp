#include <algorithm>

#include "BaseSQLite.hpp"
#include "Registre/Registre.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

FicheJournal ligneLue(Ligne& l) {
  return {.numero = l.entier(),
          .quand = l.instant(),
          .qui = l.texte(),
          .verbe = l.texte(),
          .cible = l.texte(),
          .issue = l.texte()};
}

std::string champ(std::string_view texte) { return Texte::tronquer(texte, Registre::champMax); }

}  // namespace

Garde<Fait> Registre::inscrire(const FicheJournal& ligne) {
  Ecriture ecriture(*base_);
  ecriture.executer("INSERT INTO journal(quand, qui, verbe, cible, issue) VALUES (?, ?, ?, ?, ?)", ligne.quand,
                    champ(ligne.qui), champ(ligne.verbe), champ(ligne.cible), champ(ligne.issue));
  ecriture.executer("DELETE FROM journal WHERE numero <= ?", ecriture.dernierNumero() - journalMax);
  return ecriture.conclure(Fait{});
}

Garde<std::vector<FicheJournal>> Registre::journal(std::int64_t limite) const {
  Seance seance(*base_);
  return seance.conclure(seance.lignes(
      ligneLue, "SELECT numero, quand, qui, verbe, cible, issue FROM journal ORDER BY numero DESC LIMIT ?",
      std::clamp(limite, std::int64_t{0}, journalMax)));
}

}  // namespace tarnavelle::Plateau
