-- A registry as its first version wrote it. It stays as it is: later versions must read it.
PRAGMA application_id = 0x5461726E;
PRAGMA user_version = 1;
PRAGMA journal_mode = WAL;
BEGIN;
CREATE TABLE scenes(numero INTEGER PRIMARY KEY AUTOINCREMENT, nom TEXT NOT NULL, replie TEXT NOT NULL UNIQUE,
  dossier TEXT NOT NULL, au_regard TEXT NOT NULL DEFAULT '', visible INTEGER NOT NULL) STRICT;
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
CREATE TABLE taches(numero INTEGER PRIMARY KEY AUTOINCREMENT, agent TEXT NOT NULL, nom_agent TEXT NOT NULL,
  prompt TEXT NOT NULL, verify TEXT NOT NULL, exemplaire INTEGER NOT NULL, nombre INTEGER NOT NULL,
  etat INTEGER NOT NULL, note TEXT NOT NULL, sortie TEXT NOT NULL, pondue INTEGER NOT NULL, close INTEGER) STRICT;

INSERT INTO scenes VALUES (4, 'Atelier', 'atelier', '/atelier', 'a1', 1);
INSERT INTO noms VALUES ('merlin', 'Merlin', 'a1', 0), ('le front', 'le Front', 'a1', 1);
INSERT INTO agents VALUES ('a1', 'claude', '/atelier', '', 4, 1, 'noeud-1', CAST(x'636C61756465002D2D7600' AS TEXT),
  'c-1', 42, '123', 'boot-1', 'tarn_claude', '%3', 1000, 'repos', 2000, 0, 'cbf29ce484222325', 'relance', 1500);
INSERT INTO notes(texte, scene, auteur, quand) VALUES ('La démo est jeudi', 4, 'Merlin', 1200);
INSERT INTO taches VALUES (7, 'a1', 'Merlin', 'range', 'make test', 1, 1, 0, '', '', 1300, NULL);
COMMIT;
