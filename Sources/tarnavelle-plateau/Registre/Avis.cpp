#include "BaseSQLite.hpp"
#include "Registre/Registre.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::size_t idMax = 100;  ///< bytes; a longer one is told by its fingerprint

std::string cleDe(std::string_view id) { return id.size() > idMax ? empreinteTexte(id) : std::string(id); }

void retenirEcoute(Seance& seance, std::string_view canal, Date::Instant jusque) {
  seance.executer(
      "INSERT INTO ecoutes(canal, jusque) VALUES (?1, ?2) ON CONFLICT(canal) DO UPDATE SET jusque = ?2", canal,
      jusque);
}

}  // namespace

Garde<bool> Registre::entendre(const Entendu& e) {
  Ecriture ecriture(*base_);
  ecriture.executer("INSERT INTO entendus(id) VALUES (?) ON CONFLICT DO NOTHING", cleDe(e.id));
  const bool neuf = !ecriture.enEchec() && ecriture.changees() > 0;
  if (neuf) {
    ecriture.executer(
        "DELETE FROM entendus WHERE numero <= (SELECT numero FROM entendus ORDER BY numero DESC LIMIT 1 OFFSET "
        "?)",
        entendusMax);
    if (e.aMontrer) {
      ecriture.executer(
          "DELETE FROM avis WHERE numero = (SELECT numero FROM avis ORDER BY lu DESC, numero LIMIT 1) AND "
          "(SELECT count(*) FROM avis) >= ?",
          fichesMax);
      ecriture.executer("INSERT INTO avis(titre, texte, quand, lu) VALUES (?, ?, ?, 0)",
                        Texte::tronquer(e.avis.titre, champMax), Texte::tronquer(e.avis.texte, avisMax),
                        e.avis.quand);
    }
  }
  if (e.jusque) retenirEcoute(ecriture, e.canal, *e.jusque);
  return ecriture.conclure(bool{neuf});
}

Garde<Fait> Registre::noterEcoute(std::string_view canal, Date::Instant jusque) {
  Ecriture ecriture(*base_);
  retenirEcoute(ecriture, canal, jusque);
  return ecriture.conclure(Fait{});
}

Garde<Registre::Ecoute> Registre::ecoute(std::string_view canal) const {
  Seance seance(*base_);
  Ecoute ecoute;
  ecoute.jusque =
      seance.ligne([](Ligne& l) { return l.instant(); }, "SELECT jusque FROM ecoutes WHERE canal = ?", canal);
  ecoute.ids = seance.lignes([](Ligne& l) { return l.texte(); }, "SELECT id FROM entendus ORDER BY numero");
  return seance.conclure(std::move(ecoute));
}

Garde<std::vector<FicheAvis>> Registre::avisRecus() const {
  Seance seance(*base_);
  return seance.conclure(seance.lignes(
      [](Ligne& l) {
        return FicheAvis{
            .numero = l.entier(), .titre = l.texte(), .texte = l.texte(), .quand = l.instant(), .lu = l.vrai()};
      },
      "SELECT numero, titre, texte, quand, lu FROM avis ORDER BY numero"));
}

Garde<std::int64_t> Registre::lireAvis(std::int64_t jusquAu) {
  Ecriture ecriture(*base_);
  ecriture.executer("UPDATE avis SET lu = 1 WHERE lu = 0 AND numero <= ?", jusquAu);
  return ecriture.conclure(std::int64_t{ecriture.enEchec() ? 0 : ecriture.changees()});
}

}  // namespace tarnavelle::Plateau
