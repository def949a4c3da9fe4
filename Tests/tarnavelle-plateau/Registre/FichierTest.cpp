// The registry's file: who may read it, who has it, what becomes of an old, damaged, foreign or full one, and
// what a board that is killed leaves in it.
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "DossierTemporaire.hpp"
#include "Registre/Registre.hpp"
#include "Socle/Fichiers.hpp"

namespace tarnavelle::Plateau {
namespace {

using Cas = Avarie::Cas;
using std::chrono::milliseconds;

Date::Instant a(int millisecondes) { return Date::Instant(milliseconds(millisecondes)); }

class RegistreFichier : public testing::Test {
 protected:
  Garde<Registre> ouvrir(std::int64_t taille = Registre::octetsMax) {
    return Registre::ouvrir(
        {.chemin = chemin, .maintenant = *Date::lireISO("2026-03-09T12:34:56Z"), .taille = taille});
  }
  /// What another program does to the file.
  void executer(const std::string& sql) {
    sqlite3* base = nullptr;
    ASSERT_EQ(sqlite3_open(chemin.c_str(), &base), SQLITE_OK);
    const std::unique_ptr<sqlite3, int (*)(sqlite3*)> fermeture(base, sqlite3_close);
    ASSERT_EQ(sqlite3_exec(base, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(base);
  }
  int droits(const std::filesystem::path& fichier) {
    struct stat etat {};
    return ::stat(fichier.c_str(), &etat) == 0 ? static_cast<int>(etat.st_mode & 0777) : -1;
  }

  DossierTemporaire dossier;
  std::filesystem::path chemin = dossier.chemin() / "etats" / "tarnavelle" / "plateau.db";
};

TEST_F(RegistreFichier, EstASonProprietaireSeul) {
  const auto masque = ::umask(0);
  {
    auto registre = ouvrir();
    ASSERT_TRUE(registre);
    EXPECT_EQ(registre->avis(), "");
    ASSERT_TRUE(registre->noter({.texte = "note"}));
    EXPECT_EQ(droits(chemin.parent_path()), 0700);
    for (const char* suite : {"", "-wal", ".verrou"}) EXPECT_EQ(droits(chemin.string() + suite), 0600) << suite;
    EXPECT_EQ(droits(chemin.string() + "-shm"), -1);
  }
  ::chmod(chemin.c_str(), 0644);
  ASSERT_TRUE(ouvrir());
  EXPECT_EQ(droits(chemin), 0600);
  ::umask(masque);
}

TEST_F(RegistreFichier, SeTrouveOuLeSystemeRangeLesEtats) {
#if !defined(__APPLE__)
  EXPECT_EQ(Registre::cheminUsuel({{"XDG_STATE_HOME", "/s"}, {"HOME", "/h"}}), "/s/tarnavelle/plateau.db");
  for (const char* choisi : {"", "relatif"})
    EXPECT_EQ(Registre::cheminUsuel({{"XDG_STATE_HOME", choisi}, {"HOME", "/h"}}),
              "/h/.local/state/tarnavelle/plateau.db")
        << choisi;
#endif
}

TEST_F(RegistreFichier, UneVersion1EstReprise) {
  std::filesystem::create_directories(chemin.parent_path());
  executer(*lireFichier(VERSION_1, 1 << 16));
  for (int fois = 0; fois < 2; ++fois) {  // brought up to date, then opened as it is
    auto registre = ouvrir();
    ASSERT_TRUE(registre) << registre.raison().phrase;
    EXPECT_EQ(registre->avis(), "");
    EXPECT_EQ(*registre->agents(),
              std::vector<FicheAgent>{(FicheAgent{.id = "a1",
                                                  .nom = "Merlin",
                                                  .etiquettes = {"le Front"},
                                                  .programme = "claude",
                                                  .dossier = "/atelier",
                                                  .hote = "",
                                                  .scene = 4,
                                                  .ouvert = true,
                                                  .noeud = "noeud-1",
                                                  .mots = {"claude", "--v"},
                                                  .conversation = "c-1",
                                                  .session = "tarn_claude",
                                                  .terminal = "%3",
                                                  .ouverture = a(1000),
                                                  .etat = "repos",
                                                  .depuis = a(2000),
                                                  .termine = false,
                                                  .consigne = {empreinteTexte(""), "relance", a(1500)},
                                                  .entamee = true})});
    EXPECT_EQ(*registre->scenes(), (std::vector<FicheScene>{{4, "Atelier", "/atelier", "a1", true}}));
    EXPECT_EQ(*registre->rappeler({.requete = "demo", .scene = 4}),
              (std::vector<FicheNote>{{1, "La démo est jeudi", 4, "Merlin", a(1200)}}));
    EXPECT_EQ(*registre->taches(), std::vector<FicheTache>{(FicheTache{.numero = 7,
                                                                       .agent = "a1",
                                                                       .nomAgent = "Merlin",
                                                                       .prompt = "range",
                                                                       .verify = "make test",
                                                                       .note = "",
                                                                       .rapportee = {},
                                                                       .sortie = "",
                                                                       .pondue = a(1300),
                                                                       .close = {}})});
    EXPECT_TRUE(registre->inscrire({.verbe = "etat"}));
    EXPECT_EQ(*registre->entendre({.id = "n1", .avis = {.texte = "t"}, .canal = "c", .jusque = {}}), fois == 0);
  }
}

TEST_F(RegistreFichier, CeQuiNePeutServirEstMisDeCote) {
  const struct {
    const char* sql;  // what happens to a sound file; nothing: it is overwritten in its middle
    const char* avis;
    const char* ecart;
  } cas[] = {
      {"PRAGMA user_version = 99", "Le registre vient d'une version plus récente de Tarnavelle.", "version99"},
      {"PRAGMA application_id = 5", "Le registre est le fichier d'un autre programme.", "etranger"},
      {"PRAGMA user_version = -1", "Le registre est le fichier d'un autre programme.", "etranger"},
      {"DROP TABLE messages; PRAGMA user_version = 1", "Le registre est endommagé.", "endommage"},
      {nullptr, "Le registre est endommagé.", "endommage"},
  };
  for (const auto& c : cas) {
    SCOPED_TRACE(c.ecart);
    std::filesystem::remove_all(chemin.parent_path());
    {
      auto registre = ouvrir();
      ASSERT_TRUE(registre);
      for (int i = 0; i < 100; ++i) ASSERT_TRUE(registre->noter({.texte = std::string(1000, 'x')}));
    }
    if (c.sql)
      executer(c.sql);
    else
      for (const auto page : {4096, 2 * 4096, 12 * 4096}) {
        const int fd = ::open(chemin.c_str(), O_WRONLY);
        const std::string bruit(4096, '\xA5');
        EXPECT_EQ(::pwrite(fd, bruit.data(), bruit.size(), page), 4096);
        ::close(fd);
      }
    const auto avant = lireFichier(chemin, 1 << 24);
    for (const char* rang : {"", "-2"}) {
      const std::string cote = chemin.string() + "." + c.ecart + "-20260309-123456" + rang;
      auto registre = ouvrir();
      ASSERT_TRUE(registre) << registre.raison().phrase;
      EXPECT_EQ(registre->avis(),
                std::string(c.avis) + " Il est mis de côté sous « " + cote + " », et un nouveau commence.");
      EXPECT_TRUE(registre->noter({.texte = "neuve"}));
      EXPECT_EQ(lireFichier(cote, 1 << 24), avant);
      registre = Sinon{Avarie{}};
      std::filesystem::copy_file(cote, chemin, std::filesystem::copy_options::overwrite_existing);
    }
  }
  chemin = dossier.ecrire("texte.db", "ceci n'est pas une base");
  ASSERT_TRUE(ouvrir());
  EXPECT_EQ(lireFichier(chemin.string() + ".endommage-20260309-123456", 100), "ceci n'est pas une base");
}

TEST_F(RegistreFichier, UnJournalQuiAttendPartAvecSonFichier) {
  std::filesystem::create_directories(chemin.parent_path());
  const pid_t enfant = ::fork();
  if (enfant == 0) {  // a newer board, killed: its last changes are in the log alone
    sqlite3* base = nullptr;
    sqlite3_open(chemin.c_str(), &base);
    sqlite3_exec(base,
                 "PRAGMA journal_mode = WAL; PRAGMA application_id = 0x5461726E; PRAGMA user_version = 99;"
                 "CREATE TABLE futur(x); INSERT INTO futur VALUES (12)",
                 nullptr, nullptr, nullptr);
    ::kill(::getpid(), SIGKILL);
  }
  ::waitpid(enfant, nullptr, 0);
  ASSERT_TRUE(std::filesystem::exists(chemin.string() + "-wal"));
  ASSERT_TRUE(ouvrir());
  chemin += ".version99-20260309-123456";
  EXPECT_TRUE(std::filesystem::exists(chemin.string() + "-wal"));
  executer("CREATE TABLE temoin(x NOT NULL); INSERT INTO temoin SELECT nullif(sum(x), 0) FROM futur");
}

TEST_F(RegistreFichier, UnSeulPlateauLeTient) {
  int tube[2];
  ASSERT_EQ(::pipe(tube), 0);
  const pid_t enfant = ::fork();
  if (enfant == 0) {
    auto registre = ouvrir();
    EXPECT_EQ(::write(tube[1], registre ? "1" : "0", 1), 1);
    ::pause();
    ::_exit(0);
  }
  char pris = 0;
  ASSERT_EQ(::read(tube[0], &pris, 1), 1);
  ASSERT_EQ(pris, '1');
  const auto second = ouvrir();
  EXPECT_EQ(second ? Avarie{} : second.raison(),
            (Avarie{Cas::occupe, "Un autre plateau est déjà ouvert (processus " + std::to_string(enfant) +
                                     ") : deux ne peuvent pas tenir le même registre."}));
  ::kill(enfant, SIGKILL);
  ::waitpid(enfant, nullptr, 0);
  ::close(tube[0]);
  ::close(tube[1]);
  EXPECT_TRUE(ouvrir());
}

TEST_F(RegistreFichier, CeQuiNeSOuvrePasEstDit) {
  {
    ASSERT_TRUE(ouvrir());
    sqlite3* curieux = nullptr;
    sqlite3_open(chemin.c_str(), &curieux);
    sqlite3_exec(curieux, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
    const auto registre = ouvrir();
    EXPECT_EQ(registre ? Avarie{} : registre.raison(),
              (Avarie{Cas::occupe, "Le registre est occupé par un autre programme."}));
    sqlite3_close(curieux);
    EXPECT_TRUE(ouvrir());
  }
  const auto fichier = dossier.ecrire("fichier", "");
  std::filesystem::create_symlink(fichier, dossier.chemin() / "lien");
  std::filesystem::create_directory(dossier.chemin() / "dossier");
  for (const char* nom : {"fichier/plateau.db", "lien", "dossier"}) {
    chemin = dossier.chemin() / nom;
    const auto registre = ouvrir();
    ASSERT_FALSE(registre) << nom;
    EXPECT_EQ(registre.raison().cas, Cas::inaccessible) << nom;
    EXPECT_EQ(registre.raison().phrase.find("Le registre « " + chemin.string() + " » n"), 0U)
        << registre.raison().phrase;
  }
}

TEST_F(RegistreFichier, CeQuiEtaitPrisALaFinEstDouteux) {
  ASSERT_TRUE(ouvrir()->souffler({.destinataire = "a", .texte = "un"}));
  ASSERT_TRUE(*ouvrir()->prendreMessage("a"));
  auto registre = ouvrir();
  ASSERT_TRUE(registre);
  EXPECT_EQ(registre->messages()->front().etat, FicheMessage::Etat::douteux);
  EXPECT_EQ(*registre->prendreMessage("a"), std::nullopt);
}

TEST_F(RegistreFichier, PleinIlNePerdRienDeCeQuIlAvait) {
  auto registre = ouvrir(2 * 4096);
  EXPECT_EQ(registre ? Cas{} : registre.raison().cas, Cas::plein);
  registre = ouvrir(64 * 4096);
  ASSERT_TRUE(registre);
  const std::string texte(10000, 'x');
  std::int64_t notes = 0;
  Garde<std::int64_t> essai = std::int64_t{0};
  while ((essai = registre->noter({.texte = texte}))) ASSERT_LT(++notes, 64);
  EXPECT_EQ(essai.raison(), (Avarie{Cas::plein,
                                    "Le registre ne peut plus rien noter : le disque est plein, ou il a "
                                    "atteint sa taille limite."}));
  EXPECT_EQ(registre->rappeler({.requete = "", .limite = 100})->size(), static_cast<std::size_t>(notes));
  registre = Sinon{Avarie{}};
  registre = ouvrir();
  ASSERT_TRUE(registre);
  EXPECT_EQ(*registre->noter({.texte = texte}), notes + 1);
}

/// What a board does that may be killed at any moment; tells of each thing done, once it is done.
[[noreturn]] void vivre(Garde<Registre> registre, int tube) {
  const auto dire = [&](char quoi, std::int64_t numero) {
    const std::string ligne = quoi + std::to_string(numero) + "\n";
    if (!ecrireTout(tube, ligne)) ::_exit(1);
  };
  if (!registre || !registre->avis().empty()) ::_exit(1);
  for (int tour = 0;; ++tour) {
    std::vector<std::string> etiquettes;
    for (int i = 0; i < 5; ++i) etiquettes.push_back("e" + std::to_string(tour) + "-" + std::to_string(i));
    registre->garderAgent(
        {.id = "a", .nom = "n" + std::to_string(tour), .etiquettes = etiquettes, .scene = tour});
    const auto souffle = registre->souffler({.destinataire = "a", .texte = "m"});
    if (souffle) dire('s', *souffle);
    if (const auto pris = registre->prendreMessage("a"); pris && *pris) {
      dire('t', (*pris)->numero);  // here it is typed
      registre->retirerMessage((*pris)->numero);
    }
  }
}

TEST_F(RegistreFichier, TueNImporteQuandIlResteEntierEtNeDonneRienDeuxFois) {
  std::mt19937 hasard(20260309);
  std::map<std::int64_t, int> tapes;
  std::set<std::int64_t> souffles;
  for (int vie = 0; vie < 12; ++vie) {
    int tube[2];
    ASSERT_EQ(::pipe(tube), 0);
    const pid_t enfant = ::fork();
    if (enfant == 0) vivre(ouvrir(), tube[1]);
    ::close(tube[1]);
    std::string dit;
    char octet = 0;
    for (auto reste = 1 + hasard() % 400; reste > 0 && ::read(tube[0], &octet, 1) == 1; --reste) dit += octet;
    ::kill(enfant, SIGKILL);
    while (::read(tube[0], &octet, 1) == 1) dit += octet;
    ::waitpid(enfant, nullptr, 0);
    ::close(tube[0]);
    std::istringstream lignes(dit);
    ASSERT_NE(dit, "");
    for (std::string ligne; std::getline(lignes, ligne);) {
      const std::int64_t numero = std::stoll(ligne.substr(1));
      if (ligne[0] == 's')
        souffles.insert(numero);
      else
        ++tapes[numero];
    }
  }
  for (const auto& [numero, fois] : tapes) EXPECT_EQ(fois, 1) << numero;
  {
    auto registre = ouvrir();
    ASSERT_TRUE(registre);
    EXPECT_EQ(registre->avis(), "");
    std::set<std::int64_t> listes;
    const auto messages = registre->messages();
    for (const FicheMessage& message : *messages) listes.insert(message.numero);
    for (const std::int64_t numero : souffles)
      EXPECT_TRUE(listes.contains(numero) || tapes.contains(numero)) << numero;
    const auto agents = registre->agents();
    ASSERT_EQ(agents->size(), 1U);
    const std::string tour = std::to_string(agents->front().scene);
    EXPECT_EQ(agents->front().nom, "n" + tour);
    EXPECT_EQ(agents->front().etiquettes.size(), 5U);
    EXPECT_EQ(agents->front().etiquettes.back(), "e" + tour + "-4");
  }
  executer(
      "CREATE TEMP TABLE sain(x CHECK (x = 'ok')); INSERT INTO sain SELECT * FROM pragma_integrity_check;"
      "INSERT INTO notes(notes) VALUES ('integrity-check')");
}

}  // namespace
}  // namespace tarnavelle::Plateau
