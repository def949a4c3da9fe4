#include "Etats/Suivi.hpp"

#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "EcranEnregistre.hpp"

namespace tarnavelle::Plateau {
namespace {

using namespace std::chrono_literals;

const std::map<std::string, Crochet::Genre> genres = {{"demarre", Crochet::Genre::demarre},
                                                      {"consigne", Crochet::Genre::consigne},
                                                      {"outil", Crochet::Genre::outil},
                                                      {"outilfini", Crochet::Genre::outilFini},
                                                      {"permission", Crochet::Genre::permission},
                                                      {"attention", Crochet::Genre::attention},
                                                      {"fini", Crochet::Genre::fini},
                                                      {"echec", Crochet::Genre::echec},
                                                      {"coupe", Crochet::Genre::interrompu},
                                                      {"adieu", Crochet::Genre::sorti},
                                                      {"rompu", Crochet::Genre::rompu},
                                                      {"renoue", Crochet::Genre::renoue},
                                                      {"perdu", Crochet::Genre::perdu}};

/// An agent, told in words what happens: "@1.5" sets the time in seconds, "consigne:A" is a hook of turn A
/// ("consigne:A/x": that tells the text x), "=repos" a screen ("=repos|T": titled T), ">x" an instruction of
/// ours, "!esc" a key, "?etat" an expectation ("?repos.": the turn is over, too; "?etat~": keys went to its
/// dialog), "+" that our instruction was seen to be submitted, "-" that it was not.
class Histoire {
 public:
  explicit Histoire(const std::string& programme)
      : programme_(programme), suivi_(CatalogueRegles("").de(programme), programme + " 1.0", Instant{}) {}

  std::string echecs;

  void jouer(const std::string& mots) {
    std::istringstream suite(mots);
    for (std::string mot; suite >> mot;) un(mot);
  }

  Suivi& suivi() { return suivi_; }
  Instant maintenant() const { return Instant{} + quand_; }

 private:
  void un(const std::string& mot) {
    const std::string reste = mot.substr(1);
    if (mot[0] == '@') {
      quand_ = std::chrono::milliseconds(static_cast<int>(std::stod(reste) * 1000 + 0.5));
    } else if (mot[0] == '=') {
      const auto barre = reste.find('|');
      Ecran ecran = ecranEnregistre(programme_ + "/" + reste.substr(0, barre));
      if (barre != reste.npos) ecran.titre = reste.substr(barre + 1);
      suivi_.ecran(ecran, maintenant());
    } else if (mot[0] == '>') {
      suivi_.consigne(reste, maintenant());
    } else if (mot[0] == '!') {
      suivi_.touches({reste}, maintenant());
    } else if (mot == "+" || mot == "-") {
      if (suivi_.soumise() != (mot == "+"))
        echecs += " à " + std::to_string(quand_.count()) + " ms pas " + mot + ";";
    } else if (mot == "mort") {
      suivi_.termine(1, maintenant());
    } else if (mot == "partie") {
      suivi_.partie(false, maintenant());
    } else if (mot == "declare") {
      suivi_.declarerFini(maintenant());
    } else if (mot == "bloque") {
      suivi_.declarerBloque("il manque une clé", maintenant());
    } else if (mot[0] == '?') {
      const std::string lu = std::string(nom(suivi_.situation().etat)) + (suivi_.repose() ? "." : "") +
                             (suivi_.repondu() ? "~" : "");
      if (lu != reste)
        echecs += " à " + std::to_string(quand_.count()) + " ms " + lu + " au lieu de " + reste + ";";
    } else {
      const auto deux = mot.find(':');
      const std::string nom = mot.substr(0, deux);
      const std::string tour = deux == mot.npos ? "" : mot.substr(deux + 1);
      const auto barre = std::min(tour.find('/'), tour.size());
      suivi_.crochet({.genre = genres.at(nom),
                      .nom = nom,
                      .tour = tour.substr(0, barre),
                      .texte = tour.substr(std::min(barre + 1, tour.size()))},
                     maintenant());
    }
  }

  std::string programme_;
  Suivi suivi_;
  std::chrono::milliseconds quand_{0};
};

struct Cas {
  std::string nom;
  std::string programme;
  std::string mots;
};

const Cas cas[] = {
    {"rien ne prouve rien", "claude", "?inconnu @5 =sorti @6 =sorti ?inconnu"},
    {"prêt à l'écran : deux regards calmes", "claude",
     "demarre @1 =repos ?inconnu @1.1 =repos ?inconnu @1.2 =repos ?inconnu @1.4 =repos ?inconnu @1.5 =repos "
     "?repos."},
    {"un dialogue au lancement", "claude", "demarre @1 =lancement ?inconnu @1.2 =lancement ?besoin"},
    {"des touches répondent au dialogue : il faut revoir", "claude",
     "@1 =dialogue @1.3 =dialogue ?besoin !entree ?besoin~ @1.6 =dialogue ?besoin~ @2.4 =dialogue ?besoin"},
    {"un autre après la consigne qui suivit ces touches", "claude",
     "@1 =dialogue @1.3 =dialogue ?besoin !esc >/model @1.6 =dialogue ?besoin"},
    {"une consigne partie dont rien ne vient", "claude",
     "@1 =repos @1.3 =repos @1.7 =repos ?repos. > ?repos partie ?travaille @2 =repos @2.4 =repos ?travaille "
     "@5.1 =repos ?repos."},
    {"une consigne partie dont le crochet tarde", "claude",
     "demarre @1 =repos @1.3 =repos @1.7 =repos ?repos. > partie @2 =repos @9 =repos ?travaille consigne:A "
     "fini:A "
     "?repos. @10 > partie @10.5 !esc =repos @11 =repos @14.1 =repos ?repos."},
    {"un lien rompu cache ce qui se passe derrière", "claude",
     "> consigne:A rompu ?rompue =repos @1 =repos @2 =repos ?rompue fini:A ?rompue renoue ?repos. consigne:B "
     "rompu declare ?rompue renoue ?fini"},
    {"des crochets que plus personne ne lit", "claude",
     "> consigne:A fini:A ?repos. perdu @1 =travaille ?travaille @9 =repos @9.2 =repos @9.5 =repos ?repos."},
    {"un tour par ses crochets", "claude",
     "> ?inconnu - consigne:A ?travaille + outil:A outilfini:A ?travaille fini:A ?repos."},
    {"la consigne n'est pas encore un tour", "claude",
     "consigne:A fini:A ?repos. @1 > ?repos consigne:B ?travaille fini:B ?repos."},
    {"le crochet d'une autre consigne ne prouve rien de la nôtre", "claude",
     ">une consigne:A/une + >deux consigne:A/elle ?travaille - fini:A ?travaille @1 consigne:B/deux + "
     "@2 =repos @2.2 =repos @5 =repos ?repos."},
    {"le crochet en retard de celle d'avant non plus", "claude",
     ">une >deux consigne:A/une - consigne:A/deux + fini:A ?travaille fini:B ?repos."},
    {"une consigne coupée à un caractère de plusieurs octets", "claude",
     ">aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaé consigne:A/aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaé + fini:A "
     "?repos."},
    {"un texte en file fait un autre tour", "claude",
     "> consigne:A > consigne:A fini:A ?travaille @1 =file ?travaille @3 fini:B ?repos."},
    {"un texte en file fondu dans le tour", "codex",
     "> consigne:A > consigne:A fini:A ?travaille @1 =repos ?travaille @1.2 =repos @1.5 =repos ?repos."},
    {"un texte en file dans un tour au numéro inconnu", "claude",
     "consigne:A consigne:A fini:A ?travaille consigne:B fini:B ?travaille @1 =repos @1.2 =repos @1.5 =repos "
     "?repos."},
    {"un texte en file que le programme ne dit pas", "gemini",
     "> consigne @1 > fini ?travaille @1.1 =repos @1.3 consigne ?travaille @4 fini ?repos."},
    {"et dont le tour se fait attendre", "gemini",
     "> consigne @1 > fini @1.1 =repos @1.3 =repos @1.7 =repos ?travaille @2 =travaille ?travaille"},
    {"la fin d'un vieux tour ne finit rien", "claude",
     "consigne:A !esc @1 consigne:B fini:A ?travaille fini:B ?repos."},
    {"un tour que rien n'a annoncé", "claude", "consigne:A fini:A outil:C ?travaille fini:C ?repos."},
    {"un outil fini en retard", "claude", "consigne:A outil:A fini:A outilfini:A ?repos."},
    {"un crochet retient le tour", "claude", "consigne:A fini:A ?repos. outil:A ?travaille"},
    {"une permission, accordée", "claude",
     "consigne:A outil:A permission:A ?besoin outilfini:A ?travaille fini:A ?repos."},
    {"un dialogue pas encore dessiné", "codex",
     "consigne:A permission:A @0.1 =travaille ?besoin @5 =dialogue @5.2 =dialogue ?besoin @8 =travaille "
     "?travaille"},
    {"une permission refusée sans crochet", "claude",
     "consigne:A permission:A @1 !esc =refuse ?besoin~ @1.2 =refuse ?besoin~ @1.5 =refuse ?repos."},
    {"Esc sans crochet", "claude",
     "> consigne:A @2 !esc =travaille ?travaille @2.3 =interrompu @2.5 =interrompu ?travaille @2.8 =interrompu "
     "?repos."},
    {"Esc trop tôt rend la consigne au brouillon", "claude",
     "> consigne:A @0.3 !esc @0.5 =interrompu-tot @0.7 =interrompu-tot @1 =interrompu-tot ?repos."},
    {"l'écran ne contredit les crochets qu'à la longue", "claude",
     "consigne:A @1 =repos @1.3 =repos @1.7 =repos ?travaille @3.1 =repos ?repos."},
    {"le travail qui se voit l'emporte", "claude",
     "consigne:A @1 =repos @1.9 =travaille @3.1 =repos @3.4 =repos ?travaille"},
    {"une coupure dite par son crochet", "codex", "> consigne:A coupe:A ?repos. fini:A ?repos."},
    {"une conversation close n'est pas le repos", "claude",
     "consigne:A fini:A adieu ?inconnu mort ?sorti consigne:B ?sorti"},
    {"sans crochets : l'écran seul", "opencode",
     "@1 =repos @1.2 =repos @1.5 =repos ?repos. > ?repos @2 =travaille ?travaille @3 =repos ?travaille @3.2 "
     "=repos @3.5 =repos ?repos."},
    {"sans crochets : le titre prouve le travail", "gemini",
     "@1 =repos|✦ ?travaille @2 =repos|✦ @3 =repos|◇ @3.3 =repos|◇ @3.6 =repos|◇ ?repos. demarre @4 =repos|✦ "
     "?repos."},
    {"sans crochets : un tour que nul n'a vu", "opencode",
     "@1 =repos @1.2 =repos @1.5 =repos > @2 =repos @3 =repos ?repos @5.1 =repos ?repos. -"},
    {"sans crochets : la consigne est restée dans la boîte", "opencode",
     "@1 =repos @1.2 =repos @1.5 =repos > @2 =brouillon @3 =brouillon @9 =brouillon ?repos -"},
    {"sans crochets : le travail d'avant ne prouve rien, la file si", "opencode",
     "@1 =travaille @2 > @2.5 =travaille - @3 =file + ?travaille @9 =repos @9.2 =repos @9.6 =repos ?travaille "
     "@12.3 "
     "=repos ?repos."},
    {"sans crochets : un dialogue n'est cru qu'au calme", "opencode",
     "@1 =travaille @2 =dialogue ?travaille @2.1 =dialogue ?travaille @2.2 =dialogue ?besoin"},
    {"déclaré fini", "claude",
     "consigne:A declare ?fini outil:A ?fini fini:A ?fini. > ?repos consigne:B ?travaille"},
    {"un dialogue passe avant ce qui fut déclaré", "claude",
     "consigne:A declare permission:A ?besoin outilfini:A ?fini"},
    {"déclaré bloqué", "claude", "consigne:A bloque ?besoin fini:A ?besoin. consigne:B ?travaille"},
};

TEST(Suivi, Histoires) {
  for (const auto& [nom, programme, mots] : cas) {
    Histoire histoire(programme);
    histoire.jouer(mots);
    EXPECT_EQ(histoire.echecs, "") << nom;
  }
}

TEST(Suivi, DitPourquoi) {
  Histoire histoire("claude");
  histoire.jouer("@2 consigne:A @3 outil:A @4 permission:A");
  EXPECT_EQ(histoire.suivi().situation().preuve, (Preuve{Source::crochet, "permission", "", "claude 1.0"}));
  EXPECT_EQ(histoire.suivi().situation().depuis, Instant{} + 4s);
  histoire.jouer("!esc @5 =interrompu @5.2 =interrompu @5.5 =interrompu");
  EXPECT_EQ(histoire.suivi().situation().preuve, (Preuve{Source::ecran, "❯", "boite", "claude 1.0"}));
  histoire.jouer("mort");
  EXPECT_EQ(histoire.suivi().situation().preuve, (Preuve{Source::processus, "statut 1", "", "claude 1.0"}));
}

/// When the next look is wanted, from now; "jamais".
std::string regard(Histoire& histoire, bool quelquUnAttend) {
  const auto quand = histoire.suivi().prochainRegard(quelquUnAttend);
  return quand ? std::to_string((*quand - histoire.maintenant()) / 1ms) : "jamais";
}

TEST(Suivi, NeRegardeQueCeQueLesCrochetsTaisent) {
  const struct {
    std::string nom;
    std::string programme;
    std::string mots;
    std::string sansAttente;
    std::string avecAttente;
  } attentes[] = {
      {"au repos", "claude", "@1 consigne:A fini:A", "jamais", "jamais"},
      {"au travail", "claude", "@1 consigne:A", "10000", "2000"},
      {"au travail, Esc", "claude", "@1 consigne:A !esc", "200", "200"},
      {"consigne dont le crochet tarde", "claude", "@1 consigne:A fini:A @2 >", "1500", "1500"},
      {"un travail que nul crochet ne dit", "claude", "consigne:A fini:A demarre @1 =travaille", "2000", "500"},
      {"un dialogue", "claude", "@1 consigne:A permission:A @2 =dialogue @2.2 =dialogue", "5000", "500"},
      {"un texte en file", "claude", "@1 consigne:A consigne:A fini:A", "200", "200"},
      {"sans crochets, au repos", "opencode", "@1 =repos @1.2 =repos @1.5 =repos", "2000", "500"},
      {"sans crochets, au travail depuis longtemps", "opencode", "@1 =travaille @21 =travaille", "5000", "500"},
      {"et plus encore", "opencode", "@1 =travaille @900 =travaille", "10000", "500"},
      {"un doute qui dure", "claude", "demarre @1 =sorti @9 =sorti", "2000", "500"},
      {"sorti", "claude", "mort", "jamais", "jamais"},
  };
  for (const auto& [nom, programme, mots, sans, avec] : attentes) {
    Histoire histoire(programme);
    histoire.jouer(mots);
    EXPECT_EQ(regard(histoire, false), sans) << nom;
    EXPECT_EQ(regard(histoire, true), avec) << nom;
  }
}

}  // namespace
}  // namespace tarnavelle::Plateau
