#include "BaseSQLite.hpp"
#include "Registre/Registre.hpp"

namespace tarnavelle::Plateau {
namespace {

using Etat = FicheTache::Etat;

constexpr std::string_view cetteTache = "Cette tâche";

const std::string tachesLues =
    "SELECT numero, agent, nom_agent, prompt, verify, exemplaire, nombre, etat, note, rapportee, sortie, "
    "pondue, close, issue FROM taches";

FicheTache tacheLue(Ligne& l) {
  return {.numero = l.entier(),
          .agent = l.texte(),
          .nomAgent = l.texte(),
          .prompt = l.texte(),
          .verify = l.texte(),
          .exemplaire = l.petit(),
          .nombre = l.petit(),
          .etat = l.cas(Etat::unknown),
          .note = l.texte(),
          .rapportee = l.facultatif(&Ligne::instant),
          .sortie = l.texte(),
          .pondue = l.instant(),
          .close = l.facultatif(&Ligne::instant),
          .issue = l.texte()};
}

/// The last `Registre::sortieMax` bytes, from the start of a character on.
std::string_view fin(std::string_view sortie) {
  if (sortie.size() <= Registre::sortieMax) return sortie;
  sortie.remove_prefix(sortie.size() - Registre::sortieMax);
  while (!sortie.empty() && (static_cast<unsigned char>(sortie.front()) & 0xC0) == 0x80)
    sortie.remove_prefix(1);
  return sortie;
}

}  // namespace

Garde<std::int64_t> Registre::pondre(const FicheTache& t) {
  Ecriture ecriture(*base_);
  ecriture.executer(
      "DELETE FROM taches WHERE numero = (SELECT min(numero) FROM taches WHERE etat <> ?) "
      "AND (SELECT count(*) FROM taches) >= ?",
      Etat::enCours, fichesMax);
  ecriture.exigerPlace("SELECT count(*) FROM taches", fichesMax);
  ecriture.executer(
      "INSERT INTO taches(agent, nom_agent, prompt, verify, exemplaire, nombre, etat, note, rapportee, sortie, "
      "pondue, close, issue) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
      t.agent, t.nomAgent, t.prompt, t.verify, t.exemplaire, t.nombre, t.etat, t.note, t.rapportee,
      fin(t.sortie), t.pondue, t.close, t.issue);
  return ecriture.conclure(ecriture.dernierNumero());
}

Garde<Fait> Registre::rapporter(std::int64_t numero, std::string_view note, Date::Instant quand) {
  Ecriture ecriture(*base_);
  ecriture.executer(
      "UPDATE taches SET note = ?, rapportee = ?, etat = ?, sortie = '', issue = '', close = NULL "
      "WHERE numero = ? AND etat <> ?",
      note, quand, Etat::enCours, numero, Etat::done);
  ecriture.exigerChange(cetteTache);
  return ecriture.conclure(Fait{});
}

Garde<Fait> Registre::juger(std::int64_t numero, const Jugement& jugement, Date::Instant quand) {
  Ecriture ecriture(*base_);
  ecriture.executer("UPDATE taches SET etat = ?, sortie = ?, issue = ?, close = ? WHERE numero = ?",
                    jugement.etat, fin(jugement.sortie), jugement.issue, quand, numero);
  ecriture.exigerChange(cetteTache);
  return ecriture.conclure(Fait{});
}

Garde<std::vector<FicheTache>> Registre::taches() const {
  Seance seance(*base_);
  return seance.conclure(seance.lignes(tacheLue, (tachesLues + " ORDER BY numero").c_str()));
}

Garde<std::vector<FicheTache>> Registre::tachesCloses() const {
  Seance seance(*base_);
  return seance.conclure(seance.lignes(
      tacheLue,
      "SELECT numero, agent, nom_agent, substr(prompt, 1, ?1), '', exemplaire, nombre, etat, "
      "substr(note, 1, ?1), rapportee, '', pondue, close, issue FROM taches WHERE etat <> ?2 ORDER BY numero",
      static_cast<std::int64_t>(champMax), Etat::enCours));
}

Garde<std::vector<FicheTache>> Registre::tachesAJuger() const {
  Seance seance(*base_);
  return seance.conclure(seance.lignes(
      tacheLue, (tachesLues + " WHERE etat = ? AND rapportee IS NOT NULL ORDER BY numero").c_str(),
      Etat::enCours));
}

}  // namespace tarnavelle::Plateau
