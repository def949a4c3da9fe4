#include "Hotes/HotesConnus.hpp"

#include <gtest/gtest.h>

#include "DossierTemporaire.hpp"
#include "Hotes/Barriere.hpp"
#include "Hotes/Carnet.hpp"
#include "Hotes/PanneSSH.hpp"
#include "Socle/Fichiers.hpp"

namespace tarnavelle::Plateau {
namespace {

TEST(HotesConnus, LesNomsSansMotifDeChaqueFichier) {
  const DossierTemporaire d;
  d.ecrire(
      "moi/.ssh/config",
      "# Host commentaire\nHost un \"deux\" *.motif !sauf que? # pas celui-ci\n\tHOST=trois\nHostName quatre\n"
      "Include conf.d/*.conf ~/ailleurs /nulle/part\nMatch host cinq\nHost -six x;y `z` a\x01z \xff un\r\nhost "
      "= "
      "\"sept huit\"\n");
  d.ecrire("moi/.ssh/conf.d/a.conf", "Host neuf\nInclude config\n");  // without end
  d.ecrire("moi/.ssh/conf.d/b.autre", "Host jamais\n");
  d.ecrire("moi/ailleurs", "Host dix\nuser x\nHost onze");
  const auto noms = HotesConnus::lire(d.chemin() / "moi/.ssh/config", d.chemin() / "moi");
  EXPECT_EQ(noms, (std::vector<std::string>{"un", "deux", "trois", "neuf", "dix", "onze"}));
}

TEST(HotesConnus, OuMeneUnNom) {
  struct Cas {
    std::string dit;
    std::optional<std::string> mene;
  } const cas[] = {
      {"host x\nuser moi\nhostname 10.0.0.1\nport 22\nproxyjump none\n", "moi@10.0.0.1:22"},
      {"user a\x1b[2Jb\nhostname ::1\nport 2222\nproxyjump un,deux", "a[2Jb@[::1]:2222 par un,deux"},
      {"user moi\nhostname\nport 22\n", std::nullopt},
      {std::string("\0\xff", 2), std::nullopt},
  };
  for (const auto& c : cas) EXPECT_EQ(HotesConnus::destination(c.dit), c.mene) << testing::PrintToString(c.dit);
}

TEST(PanneSSH, CeQueSshDit) {
  using Cause = PanneSSH::Cause;
  const std::string changee =
      "La clé de « x » n'est plus celle que ssh connaît : la machine a été réinstallée, ou quelqu'un s'est mis "
      "entre elle et toi. Vérifie-la, puis : ssh-keygen ";
  const std::string coupe = "Le lien avec « x » est coupé.";
  const std::string avertit = "WARNING: REMOTE HOST IDENTIFICATION HAS CHANGED!\n  remove with:\n  ssh-keygen ";
  struct Cas {
    std::string dit;
    Cause cause;
    std::string phrase;
  } const cas[] = {
      {avertit + "-f \"/h/known hosts\" -R \"[::1]:2\"\nHost key verification failed.\n", Cause::cleChangee,
       changee + "-f \"/h/known hosts\" -R \"[::1]:2\"."},
      {avertit + "-f \"/h/`id`\" -R x\n", Cause::cleChangee, changee + "-R x."},
      {"Received disconnect from 10.0.0.1 port 22:2: " + avertit + "-R x\nencore\n", Cause::autre,
       "ssh n'a pas pu joindre « x » : « Received disconnect from 10.0.0.1 port 22:2: WARNING: REMOTE HOST "
       "IDENTIFICATION HAS CHANGED! »."},
      {"Authenticated to x ([10.0.0.1]:22) using \"publickey\".\nbind: Permission denied\n", Cause::coupe,
       coupe},
      {"/h/config: line 2: Bad configuration option: x\r\n/h/config: terminating, 1 bad configuration "
       "options\r\n",
       Cause::configuration,
       "ssh refuse sa configuration : « /h/config: line 2: Bad configuration option: x »."},
      {"", Cause::coupe, coupe},
      {"un\ndeux\n", Cause::autre, "ssh n'a pas pu joindre « x » : « deux »."},
      {"kex_exchange_identification: Connection closed by remote host\r\nConnection closed by UNKNOWN port "
       "65535\n",
       Cause::passage,
       "Ce qui mène à « x » (ProxyJump ou ProxyCommand) n'y est pas arrivé : essaie une fois à la main (ssh "
       "x)."},
  };
  for (const auto& c : cas) {
    EXPECT_EQ(PanneSSH::lire("x", c.dit).cause, c.cause) << c.dit;
    EXPECT_EQ(PanneSSH::lire("x", c.dit).phrase, c.phrase) << c.dit;
  }
}

TEST(Barriere, CeQuiNEtaitPourPersonneNePassePas) {
  const std::string d = "\x1b[200~", f = "\x1b[201~";
  struct Cas {
    std::string ferme, libre, passent;
  } const cas[] = {{"x\r", "a", "a"},
                   {"", "a" + d + "b\r" + f + "c", "a" + d + "b\r" + f + "c"},
                   {d + "b", "\rc" + f + "d", "d"},
                   {d + "b" + f, d + "c" + f, d + "c" + f},
                   {"\x1b[20", "0~b" + f + "d", "d"},
                   {"", "\x1b[A\x1b", "\x1b[A\x1b"}};
  for (const auto& c : cas) {
    Barriere barriere;
    std::string passent;
    for (const char octet : c.ferme) passent += barriere.passer({&octet, 1}, false);
    for (const char octet : c.libre) passent += barriere.passer({&octet, 1}, true);
    EXPECT_EQ(passent, c.passent) << testing::PrintToString(c.ferme + "|" + c.libre);
  }
  Barriere coupee;
  coupee.passer(d + "moitié", true);
  coupee.couper();
  EXPECT_EQ(coupee.passer("reste\r" + f + "neuf", true), "neuf");
}

TEST(Carnet, ChaqueLigneUneFois) {
  const DossierTemporaire d;
  const auto journal = d.ecrire("j.jsonl", "");
  const auto contenu = [&] { return lireFichier(journal, 1 << 20).value(); };
  Carnet carnet("s", journal);
  EXPECT_EQ(carnet.aLire(0), std::nullopt);
  EXPECT_EQ(carnet.aLire(12), 0);
  EXPECT_TRUE(carnet.noter("{\"a\":1}\n{\"b"));  // the line is still being written
  EXPECT_EQ(carnet.aLire(12), 8);
  EXPECT_EQ(Carnet("s", journal).aLire(12), 8);  // of a door that was killed
  EXPECT_TRUE(
      carnet.noter("{\"b\":\"\\\"hook_event_name\\\":\\\"tarnavelle.x\\\"\"}\n"
                   "{\"hook_event_name\":\"tarnavelle.lien.rompu\"}\n{\"tarnavelle.curseur\":9}\n"));
  EXPECT_EQ(contenu(),
            "{\"a\":1}\n{\"tarnavelle.curseur\":8}\n{\"b\":\"\\\"hook_event_name\\\":\\\"tarnavelle.x\\\"\"}\n"
            "{\"tarnavelle.curseur\":122}\n");
  EXPECT_EQ(carnet.aLire(122), std::nullopt);
  EXPECT_EQ(carnet.aLire(20), 0);  // emptied: a new session
  EXPECT_EQ(Carnet("s", d.chemin() / "aucun").aLire(1'000'000), 1'000'000 - 262'144);
}

}  // namespace
}  // namespace tarnavelle::Plateau
