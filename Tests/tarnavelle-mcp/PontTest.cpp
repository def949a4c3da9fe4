// The bridge against doors that misbehave: its loop in this process, and the real executable where the
// end of the process matters.
#include "Boucle.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <future>
#include <string>
#include <thread>

#include "Reseau/PairTCP.hpp"

extern char** environ;

namespace tarnavelle {
namespace {

using essai::Connexion;
using essai::PairTCP;
using namespace std::chrono_literals;

constexpr BornesHTTP breves{.attente = 150ms, .vie = 3s, .corpsMax = 1 << 20};

/// A world whose environment is a table that the test may change between calls.
struct Monde {
  Environnement table;
  Repartiteur repartiteur{
      {.environnement = [this] { return Variables(table); }, .binaireMCP = "/pont", .bornes = breves}};

  std::string appeler(std::string_view outil, Json arguments = Json::object()) {
    const auto ligne =
        repartiteur.traiter({{"id", 1},
                             {"method", "tools/call"},
                             {"params", {{"name", outil}, {"arguments", std::move(arguments)}}}});
    const auto contenu = Json::parse(ligne.value())["result"];
    return (contenu["isError"] ? "KO " : "ok ") + contenu["content"][0]["text"].get<std::string>();
  }
};

PairTCP::Script repondre(int statut, std::string corps) {
  return [=](Connexion& c) {
    while (!c.lireRequete().empty())
      c.envoyer("HTTP/1.1 " + std::to_string(statut) + " X\r\nContent-Length: " + std::to_string(corps.size()) +
                "\r\n\r\n" + corps);
  };
}

TEST(Pont, RendLaReponseDeLaPorteTelleQuelle) {
  const struct {
    int statut;
    std::string corps;
    std::string attendu;
  } cas[] = {
      {200, R"({"ok" : true, "spoken_text":"é/"})", R"(ok {"ok" : true, "spoken_text":"é/"})"},
      {500, R"({"ok":true})", R"(ok {"ok":true})"},
      {401, R"({"ok":false,"error":"non"})", R"(KO {"ok":false,"error":"non"})"},
      {200, R"({"ok":"true"})", R"(KO {"ok":"true"})"},
      {200, R"({"data":{"ok":true}})", R"(KO {"data":{"ok":true}})"},
      {200, R"([{"ok":true}])", R"(KO [{"ok":true}])"},
      {200, "bonjour\n", "KO bonjour\n"},
      {200, "", "KO "},
      {503, "\xff\xfe", R"(KO {"error":"La porte n'a pas répondu (HTTP 503).","ok":false})"},
  };
  for (const auto& c : cas) {
    PairTCP porte({repondre(c.statut, c.corps)});
    Monde monde{{{"TARNAVELLE_CONTROL_URL", porte.url()}}};
    EXPECT_EQ(monde.appeler("trv_etat"), c.attendu);
  }
}

TEST(Pont, PosteLeVerbeLesArgumentsEtLePorteur) {
  std::promise<std::string> recue;
  PairTCP porte({[&](Connexion& c) {
    recue.set_value(c.lireRequete());
    c.envoyer("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}");
  }});
  Monde monde{{{"TARNAVELLE_CONTROL_URL", porte.url()}, {"TARNAVELLE_NODE_ID", "  merlin "}}};
  monde.appeler("trv_Pipe-Done", {{"note", "a/é"}, {"action", "fermer"}});
  const auto texte = recue.get_future().get();
  EXPECT_NE(texte.find("\r\nAuthorization: Bearer \r\n"), std::string::npos) << texte;
  EXPECT_NE(texte.find("\r\nContent-Type: application/json\r\n"), std::string::npos) << texte;
  EXPECT_EQ(texte.substr(texte.find("\r\n\r\n") + 4), R"({"action":"fini","agent":"merlin","note":"a/é"})");
}

TEST(Pont, TrouveUnCockpitReparti) {
  const std::string sansReponse = R"(KO {"error":"La porte n'a pas répondu (HTTP -1).","ok":false})";
  Monde monde;
  EXPECT_EQ(monde.appeler("trv_etat"),
            R"(KO {"error":"Porte introuvable : l'app Tarnavelle tourne-t-elle, la porte de commande est-elle )"
            R"(ouverte ?","ok":false})");
  {
    PairTCP porte({repondre(200, R"({"ok":true,"n":1})")});
    monde.table = {{"TARNAVELLE_CONTROL_URL", porte.url()}};
    EXPECT_EQ(monde.appeler("etat"), R"(ok {"ok":true,"n":1})");
    monde.table["TARNAVELLE_CONTROL_TOKEN"] = "a\nb";
    EXPECT_EQ(monde.appeler("etat"), sansReponse);
    monde.table.erase("TARNAVELLE_CONTROL_TOKEN");
    monde.table["TARNAVELLE_CONTROL_URL"] = "http://127.0.0.1:1";
  }
  EXPECT_EQ(monde.appeler("etat"), sansReponse);
  PairTCP porte({repondre(200, R"({"ok":true,"n":2})")});
  monde.table = {{"TARNAVELLE_CONTROL_URL", porte.url()}};
  EXPECT_EQ(monde.appeler("etat"), R"(ok {"ok":true,"n":2})");
}

TEST(Pont, UneReponseTardiveNeGenePasLAppelSuivant) {
  PairTCP porte({[](Connexion& c) {
                   c.lireRequete();
                   std::this_thread::sleep_for(300ms);
                   c.envoyer("HTTP/1.1 200 OK\r\nContent-Length: 7\r\n\r\ntardive");
                 },
                 repondre(200, R"({"ok":true})")});
  Monde monde{{{"TARNAVELLE_CONTROL_URL", porte.url()}}};
  EXPECT_EQ(monde.appeler("etat"), R"(KO {"error":"La porte n'a pas répondu (HTTP -1).","ok":false})");
  EXPECT_EQ(monde.appeler("etat"), R"(ok {"ok":true})");
  std::this_thread::sleep_for(300ms);
  EXPECT_EQ(monde.appeler("etat"), R"(ok {"ok":true})");
}

/// The real bridge, started with one environment variable and a throw-away home. `drapeaux` are those of
/// its own ends of the pipes.
class Processus {
 public:
  explicit Processus(const std::string& url, int drapeaux = 0) {
    std::signal(SIGPIPE, SIG_IGN);
    int entree[2];
    int sortie[2];
    EXPECT_EQ(::pipe2(entree, O_CLOEXEC), 0);
    EXPECT_EQ(::pipe2(sortie, O_CLOEXEC), 0);
    ::fcntl(entree[0], F_SETFL, drapeaux);
    ::fcntl(sortie[1], F_SETFL, O_WRONLY | drapeaux);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, entree[0], 0);
    posix_spawn_file_actions_adddup2(&actions, sortie[1], 1);
    std::string variable = "TARNAVELLE_CONTROL_URL=" + url;
    std::string home = "HOME=/nulle/part";
    char* env[] = {variable.data(), home.data(), nullptr};
    std::string chemin = TARNAVELLE_PONT;
    char* argv[] = {chemin.data(), nullptr};
    EXPECT_EQ(::posix_spawn(&pid_, chemin.c_str(), &actions, nullptr, argv, env), 0);
    posix_spawn_file_actions_destroy(&actions);
    ::close(entree[0]);
    ::close(sortie[1]);
    entree_ = entree[1];
    sortie_ = sortie[0];
  }
  ~Processus() {
    fermerEntree();
    fermerSortie();
    if (pid_ > 0) {
      ::kill(pid_, SIGKILL);
      ::waitpid(pid_, nullptr, 0);
    }
  }

  void ecrire(std::string_view texte) {
    while (!texte.empty()) {
      const auto n = ::write(entree_, texte.data(), texte.size());
      if (n <= 0) return;
      texte.remove_prefix(static_cast<std::size_t>(n));
    }
  }
  std::string lireLigne() {
    std::string ligne;
    char c = 0;
    while (::read(sortie_, &c, 1) == 1 && c != '\n') ligne += c;
    return ligne;
  }
  void fermerEntree() { fermer(entree_); }
  void fermerSortie() { fermer(sortie_); }
  /// Exit status, or -1 when the process is still there after `delai`.
  int attendre(std::chrono::milliseconds delai) {
    const auto fin = std::chrono::steady_clock::now() + delai;
    int statut = 0;
    while (::waitpid(pid_, &statut, WNOHANG) == 0) {
      if (std::chrono::steady_clock::now() > fin) return -1;
      std::this_thread::sleep_for(2ms);
    }
    pid_ = -1;
    return WIFEXITED(statut) ? WEXITSTATUS(statut) : 128 + WTERMSIG(statut);
  }

 private:
  static void fermer(int& fd) {
    if (fd >= 0) ::close(fd);
    fd = -1;
  }
  pid_t pid_ = -1;
  int entree_ = -1;
  int sortie_ = -1;
};

const char* const ping = "{\"id\":1,\"method\":\"ping\"}\n";
const char* const appel = "{\"id\":2,\"method\":\"tools/call\",\"params\":{\"name\":\"trv_etat\"}}\n";

TEST(PontReel, SortAvecZeroEnFinDEntree) {
  Processus pont("http://127.0.0.1:1");
  pont.ecrire(ping);
  EXPECT_EQ(pont.lireLigne(), R"({"id":1,"jsonrpc":"2.0","result":{}})");
  pont.ecrire(R"({"id":3,"method":"ping"})");
  pont.fermerEntree();
  EXPECT_EQ(pont.lireLigne(), R"({"id":3,"jsonrpc":"2.0","result":{}})");
  EXPECT_EQ(pont.attendre(5s), 0);
}

TEST(PontReel, SertAussiDesDescripteursNonBloquants) {
  Processus pont("http://127.0.0.1:1", O_NONBLOCK);
  std::string requetes;
  for (int i = 0; i < 20; ++i) requetes += "{\"id\":1,\"method\":\"tools/list\"}\n";
  pont.ecrire(requetes);
  std::this_thread::sleep_for(50ms);  // the pipe is full, and empty on the other side
  for (int i = 0; i < 20; ++i) EXPECT_TRUE(Json::accept(pont.lireLigne())) << i;
  pont.ecrire(ping);
  EXPECT_EQ(pont.lireLigne(), R"({"id":1,"jsonrpc":"2.0","result":{}})");
}

TEST(PontReel, UneSortieFermeeNArretePasLeService) {
  std::promise<void> recu;
  PairTCP porte({[&](Connexion& c) {
    if (!c.lireRequete().empty()) recu.set_value();
    c.envoyer("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}");
  }});
  Processus pont(porte.url());
  pont.fermerSortie();
  pont.ecrire(ping);
  pont.ecrire(appel);
  EXPECT_EQ(recu.get_future().wait_for(5s), std::future_status::ready);
  pont.fermerEntree();
  EXPECT_EQ(pont.attendre(5s), 0);
}

TEST(PontReel, UneGrandeReponsePasseEntiereParUnTubePlein) {
  const std::string corps = R"({"ok":true,"data":")" + std::string(3 << 20, 'd') + "\"}";
  PairTCP porte({repondre(200, corps)});
  Processus pont(porte.url());
  pont.ecrire(appel);
  pont.ecrire(ping);
  std::this_thread::sleep_for(50ms);  // the pipe is full, the bridge waits in its write
  const auto ligne = Json::parse(pont.lireLigne());
  EXPECT_TRUE(ligne["result"]["content"][0]["text"] == corps);
  EXPECT_EQ(pont.lireLigne(), R"({"id":1,"jsonrpc":"2.0","result":{}})");
}

}  // namespace
}  // namespace tarnavelle
