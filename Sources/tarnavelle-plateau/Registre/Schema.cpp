#include "Schema.hpp"

#include <iterator>
#include <string>

#include "BaseSQLite.hpp"

namespace tarnavelle::Plateau::Schema {
namespace {

// Each step stays as it was published: a change is a new step. Texts are never NULL; instants are milliseconds.
constexpr const char* etapes[] = {
    // 1
    R"(
CREATE TABLE scenes(numero INTEGER PRIMARY KEY AUTOINCREMENT, nom TEXT NOT NULL, replie TEXT NOT NULL UNIQUE,
  dossier TEXT NOT NULL, au_regard TEXT NOT NULL DEFAULT '', visible INTEGER NOT NULL) STRICT;

-- What agents and windows are called: the name has rank 0, labels follow.
CREATE TABLE noms(replie TEXT PRIMARY KEY, texte TEXT NOT NULL, porteur TEXT NOT NULL, rang INTEGER NOT NULL)
  STRICT, WITHOUT ROWID;
CREATE INDEX noms_porteur ON noms(porteur, rang);

CREATE TABLE agents(id TEXT PRIMARY KEY, programme TEXT NOT NULL, dossier TEXT NOT NULL, hote TEXT NOT NULL,
  scene INTEGER NOT NULL, ouvert INTEGER NOT NULL, noeud TEXT NOT NULL, mots TEXT NOT NULL,
  conversation TEXT NOT NULL, pid INTEGER NOT NULL, debut TEXT NOT NULL, boot TEXT NOT NULL, session TEXT NOT NULL,
  terminal TEXT NOT NULL, ouverture INTEGER NOT NULL, etat TEXT NOT NULL, depuis INTEGER NOT NULL,
  termine INTEGER NOT NULL, consigne_empreinte TEXT NOT NULL, consigne_extrait TEXT NOT NULL,
  consigne_quand INTEGER NOT NULL) STRICT;

CREATE TABLE fenetres(id TEXT PRIMARY KEY, commande TEXT NOT NULL, dossier TEXT NOT NULL, scene INTEGER NOT NULL,
  pid INTEGER NOT NULL, debut TEXT NOT NULL, boot TEXT NOT NULL, session TEXT NOT NULL, terminal TEXT NOT NULL,
  ouverture INTEGER NOT NULL, termine INTEGER NOT NULL, statut INTEGER) STRICT;

CREATE TABLE indicatifs(rang INTEGER PRIMARY KEY, nom TEXT NOT NULL) STRICT;

CREATE VIRTUAL TABLE notes USING fts5(texte, scene UNINDEXED, auteur UNINDEXED, quand UNINDEXED,
  tokenize = 'unicode61 remove_diacritics 2');

CREATE TABLE postits(numero INTEGER PRIMARY KEY AUTOINCREMENT, texte TEXT NOT NULL, scene INTEGER NOT NULL,
  quand INTEGER NOT NULL) STRICT;

-- etat: 0 en cours, 1 done, 2 unknown.
CREATE TABLE taches(numero INTEGER PRIMARY KEY AUTOINCREMENT, agent TEXT NOT NULL, nom_agent TEXT NOT NULL,
  prompt TEXT NOT NULL, verify TEXT NOT NULL, exemplaire INTEGER NOT NULL, nombre INTEGER NOT NULL,
  etat INTEGER NOT NULL, note TEXT NOT NULL, sortie TEXT NOT NULL, pondue INTEGER NOT NULL, close INTEGER) STRICT;
)",
    // 2
    R"(
ALTER TABLE taches ADD COLUMN rapportee INTEGER;

-- etat: 0 attend, 1 pris, 2 douteux, 3 perdu.
CREATE TABLE messages(numero INTEGER PRIMARY KEY AUTOINCREMENT, expediteur TEXT NOT NULL,
  destinataire TEXT NOT NULL, nom_destinataire TEXT NOT NULL, texte TEXT NOT NULL, quand INTEGER NOT NULL,
  etat INTEGER NOT NULL) STRICT;

CREATE TABLE relais(numero INTEGER PRIMARY KEY AUTOINCREMENT, agent TEXT NOT NULL, evenement TEXT NOT NULL,
  destinataire TEXT NOT NULL, texte TEXT NOT NULL, quand INTEGER NOT NULL) STRICT;

CREATE TABLE journal(numero INTEGER PRIMARY KEY AUTOINCREMENT, quand INTEGER NOT NULL, qui TEXT NOT NULL,
  verbe TEXT NOT NULL, cible TEXT NOT NULL, issue TEXT NOT NULL) STRICT;
)",
    // 3
    R"(
-- What the operator was alerted of, and need not be again.
CREATE TABLE alertes(numero INTEGER PRIMARY KEY AUTOINCREMENT, sujet TEXT NOT NULL UNIQUE) STRICT;
INSERT INTO alertes(sujet) SELECT 'tache ' || numero FROM taches WHERE etat <> 0 ORDER BY numero;
)",
    // 4
    R"(
-- Which process it is, the terminals tell.
ALTER TABLE agents DROP COLUMN pid;
ALTER TABLE agents DROP COLUMN debut;
ALTER TABLE agents DROP COLUMN boot;
ALTER TABLE fenetres DROP COLUMN pid;
ALTER TABLE fenetres DROP COLUMN debut;
ALTER TABLE fenetres DROP COLUMN boot;

-- Whether something was said in the conversation; before, nobody noted it.
ALTER TABLE agents ADD COLUMN entamee INTEGER NOT NULL DEFAULT 0;
UPDATE agents SET entamee = 1 WHERE conversation <> '';
)",
    // 5
    R"(
ALTER TABLE taches ADD COLUMN issue TEXT NOT NULL DEFAULT '';
)",
    // 6
    R"(
-- What Hermès published; the ids of all that was heard, shown or not; and up to when it was.
CREATE TABLE avis(numero INTEGER PRIMARY KEY AUTOINCREMENT, titre TEXT NOT NULL, texte TEXT NOT NULL,
  quand INTEGER NOT NULL, lu INTEGER NOT NULL) STRICT;
CREATE TABLE entendus(numero INTEGER PRIMARY KEY AUTOINCREMENT, id TEXT NOT NULL UNIQUE) STRICT;
CREATE TABLE ecoutes(canal TEXT PRIMARY KEY, jusque INTEGER NOT NULL) STRICT, WITHOUT ROWID;
)",
};

}  // namespace

const std::int64_t version = std::ssize(etapes);

void migrer(Seance& seance, std::int64_t depuis) {
  for (auto etape = depuis; etape < version; ++etape) seance.derouler(etapes[etape]);
  seance.derouler(("PRAGMA application_id = " + std::to_string(application)).c_str());
  seance.derouler(("PRAGMA user_version = " + std::to_string(version)).c_str());
}

}  // namespace tarnavelle::Plateau::Schema
