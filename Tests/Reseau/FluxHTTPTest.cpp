#include "Reseau/FluxHTTP.hpp"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <future>

#include "Liaison/LecteurLignesFlux.hpp"
#include "Reseau/NomLent.hpp"
#include "Reseau/PairTCP.hpp"
#include "Reseau/Restes.hpp"
#include "Socle/Selon.hpp"

namespace tarnavelle {
namespace {

using essai::Connexion;
using essai::PairTCP;
using namespace std::chrono_literals;
using Horloge = std::chrono::steady_clock;

RequeteHTTP demander(const std::string& url, std::chrono::milliseconds delai = 5s) {
  return {.methode = "GET", .url = url, .entetes = {}, .corps = "", .delai = delai};
}

std::string dire(ErreurReseau erreur) { return std::string(description(erreur)); }

/// Everything that comes, to the end: status, lines, how it ended.
std::string suivre(FluxHTTP& flux, const RequeteHTTP& requete) {
  const auto reponse = flux.ouvrir(requete);
  if (!reponse) return dire(reponse.raison());
  std::string tout = std::to_string(*reponse) + " ";
  for (bool fini = false; !fini;)
    std::visit(Selon{[&](const LectureFlux::ligne& l) { tout.append(l.texte.substr(0, 20)).append("|"); },
                     [](const LectureFlux::attente&) {}, [&](const LectureFlux::tropLongue&) { tout += "…|"; },
                     [&](const LectureFlux::fin&) { tout += "fin", fini = true; },
                     [&](const LectureFlux::illisible&) { tout += "illisible", fini = true; },
                     [&](const LectureFlux::perte& p) { tout += dire(p.erreur), fini = true; }},
               flux.suivante().cas);
  return tout;
}

/// One byte after the other, each of them after that pause.
PairTCP::Script unParUn(std::string octets, std::chrono::microseconds pause, bool garder = false) {
  return [=](Connexion& c) {
    c.lireRequete();
    for (const char octet : octets) {
      std::this_thread::sleep_for(pause);
      if (!c.envoyer({&octet, 1})) return;
    }
    if (garder) c.attendreFermeture();
  };
}

const std::string ok = "HTTP/1.1 200 OK\r\n", chunked = ok + "Transfer-Encoding: chunked\r\n\r\n";

TEST(FluxHTTP, DonneLesLignesEtDitCommentCelaFinit) {
  const std::string coupee = "la connexion a été coupée", echouee = "la connexion a échoué";
  const std::string longue(LecteurLignesFlux::ligneMax + 1, 'x');
  const std::pair<std::string, std::string> cas[] = {
      {ok + "\r\na\r\nb", "200 a|b|fin"},
      {ok + "Content-Length: 4\r\n\r\na\rb\nc", "200 a|b|fin"},
      {ok + "Content-Length: 4\r\n\r\na\nb", "200 a|" + coupee},
      {chunked + "1\r\na\r\n3;x=y\r\nb\nc\r\n1\r\n\n\r\n0\r\nT: v\r\n\r\n", "200 ab|c|fin"},
      {chunked + "0\r\n\r\n", "200 fin"},
      {chunked + "3\r\na\nb\r\nzz\r\n", "200 a|illisible"},
      {"HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 103 Hints\r\nLink: x\r\n\r\n" + ok + "\r\na\n", "200 a|fin"},
      {ok + "Content-Encoding: gzip\r\n\r\n\x1f\x8b\n", "200 illisible"},
      {ok + "Content-Encoding: identity\r\n\r\na\n", "200 a|fin"},
      {ok + "Transfer-Encoding: gzip, chunked\r\n\r\n1\r\na\r\n0\r\n\r\n", "200 illisible"},
      {ok + "\r\na\n" + longue + "\nb", "200 a|…|b|fin"},
      {"", coupee},
      {"n'importe quoi\r\n\r\n", echouee},
      {ok + "X: " + std::string(100'000, 'y') + "\r\n\r\n", echouee},
      {chunked + "1;" + std::string(300'000, 'y') + "\r\na\r\n0\r\n\r\n", "200 illisible"},
  };
  for (const auto& [octets, attendu] : cas) {
    // Whole, then so that each byte is read alone; long ones whole again.
    PairTCP pair(
        {PairTCP::envoyer(octets), octets.size() < 1000 ? unParUn(octets, 100us) : PairTCP::envoyer(octets)});
    for (int fois = 1; fois <= 2; ++fois) {
      FluxHTTP flux;
      EXPECT_EQ(suivre(flux, demander(pair.url())), attendu) << octets.substr(0, 100) << ' ' << fois;
      EXPECT_EQ(pair.connexions(), fois);
    }
  }
}

TEST(FluxHTTP, EnvoieLaRequeteTelleQuelleOuRien) {
  std::promise<std::string> recue;
  PairTCP pair({[&](Connexion& c) { recue.set_value(c.lireRequete()); }});
  FluxHTTP flux;
  RequeteHTTP requete{
      .methode = "POST", .url = pair.url() + "?a=b", .entetes = {{"X-A", "é"}}, .corps = "{}", .delai = 5s};
  flux.ouvrir(requete);
  EXPECT_EQ(recue.get_future().get(),
            "POST /action?a=b HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(pair.port()) +
                "\r\nX-A: é\r\nAccept-Encoding: identity\r\nContent-Length: 2\r\n\r\n{}");
  EXPECT_EQ(suivre(flux, demander("ftp://127.0.0.1/")), "la connexion a échoué");
  requete.entetes[0].valeur += "\r\nX: y";
  EXPECT_EQ(suivre(flux, requete), "la connexion a échoué");
  EXPECT_EQ(pair.connexions(), 1);
  EXPECT_EQ(flux.suivante(), (LectureFlux{LectureFlux::perte{ErreurReseau::autre}}));
  flux.interrompre();  // or whoever tries again would never know
  EXPECT_EQ(suivre(flux, requete), "la connexion a été annulée");
}

TEST(FluxHTTP, UnOctetSuffitARompreLeSilence) {
  // Not even one of a line.
  PairTCP pair({unParUn(chunked + "00000002;abcdefgh\r\na\n", 20ms, true)});
  FluxHTTP flux;
  const auto debut = Horloge::now();
  EXPECT_EQ(suivre(flux, demander(pair.url(), 250ms)), "200 a|le serveur ne répond pas");
  EXPECT_GT(Horloge::now() - debut, 400ms);
}

TEST(FluxHTTP, RendLaMainQuandLAttenteEstFinie) {
  PairTCP pair({[](Connexion& c) {
    PairTCP::envoyer(ok + "\r\na\nb")(c);
    std::this_thread::sleep_for(1300ms);
    c.couperNet();
  }});
  FluxHTTP flux;
  ASSERT_EQ(flux.ouvrir(demander(pair.url())), (Resultat<int, ErreurReseau>(200)));
  EXPECT_EQ(flux.suivante(), (LectureFlux{LectureFlux::ligne{"a"}}));
#if defined(RUSAGE_THREAD)
  constexpr auto duFil = RUSAGE_THREAD;
#else
  constexpr auto duFil = RUSAGE_SELF;  // the peer's thread sleeps meanwhile
#endif
  rusage avant{}, apres{};
  ::getrusage(duFil, &avant);
  for (const auto attente : {1100ms, 0ms, -1ms})
    EXPECT_EQ(flux.suivante(attente), (LectureFlux{LectureFlux::attente{}}));
  ::getrusage(duFil, &apres);
  EXPECT_LE(apres.ru_nvcsw - avant.ru_nvcsw, 1) << "waiting is one sleep, however long";
  EXPECT_EQ(flux.suivante(), (LectureFlux{LectureFlux::perte{ErreurReseau::connexionPerdue}}));
}

TEST(FluxHTTP, SArreteAToutMoment) {
  std::atomic<bool> termine = false;
  PairTCP sourd({[&](Connexion&) {
    while (!termine) std::this_thread::sleep_for(10ms);
  }});
  PairTCP muet({PairTCP::envoyer("", true)}), entame({PairTCP::envoyer(ok + "\r\na\nb", true)});
  PairTCP bavard({[&](Connexion& c) {
    c.lireRequete();
    c.envoyer(ok + "\r\n");
    while (c.envoyer(std::string(100'000, '\n'))) continue;
  }});
  const auto fils = essai::compter("task");
  auto enorme = demander(sourd.url());
  enorme.corps.assign(16 << 20, 'x');
  const std::pair<const char*, RequeteHTTP> moments[] = {
      {"name look-up", demander("http://lent.example/")},
      {"TLS handshake", demander("https" + sourd.url().substr(4))},
      {"sending", enorme},
      {"waiting for the answer", demander(muet.url())},
      {"waiting for a line", demander(entame.url())},
      {"lines that never stop", demander(bavard.url())},
      {"pause", demander("")}};
  for (const auto& [nom, requete] : moments) {
    auto meilleure = Horloge::duration::max();  // of three: this machine may have more to do
    for (int essai = 0; essai < 3; ++essai) {
      Horloge::time_point arret;
      std::string issue;
      {
        FluxHTTP flux;
        std::thread fil([&, &demande = requete] {
          if (demande.url.empty()) flux.pauser(10s);
          issue = suivre(flux, demande);
        });
        std::this_thread::sleep_for(100ms);  // to reach that moment
        arret = Horloge::now();
        flux.interrompre();
        fil.join();
      }
      meilleure = std::min(meilleure, Horloge::now() - arret);
      EXPECT_TRUE(issue.ends_with("la connexion a été annulée")) << nom << ' ' << issue.substr(0, 100);
    }
    EXPECT_LT(meilleure, 1s) << nom;
  }
  termine = true;
  EXPECT_GE(essai::recherchesLentes, 1);
  EXPECT_LE(essai::retomber("task", fils), fils) << "the look-ups end by themselves";
}

}  // namespace
}  // namespace tarnavelle
