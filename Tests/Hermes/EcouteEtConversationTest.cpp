// The ear and the turn: in a world where time passes at once, then over real sockets.
#include <gtest/gtest.h>

#include <cmath>
#include <deque>

#include "Hermes/Dire.hpp"
#include "HermesReseau/ConversationHermes.hpp"
#include "HermesReseau/EcouteNtfy.hpp"
#include "Reseau/PairTCP.hpp"
#include "Reseau/Restes.hpp"

namespace tarnavelle {
namespace {

using essai::dire;
using essai::PairTCP;
using Lignes = std::vector<std::string>;

/// The failures of an ear and of a turn: a status, a phrase, or a stream of no use.
template <class Echec>
std::string direEchec(const Echec& echec) {
  return std::visit(Selon{[](const typename Echec::http& e) { return std::to_string(e.statut); },
                          [](const typename Echec::transport& e) { return e.phrase; },
                          [](const auto&) -> std::string { return "tronqué"; }},
                    echec.cas);
}

std::string dire(const OreilleNtfy::Fin& issue) {
  using F = OreilleNtfy::Fin;
  if (const auto* f = std::get_if<F::abandonnee>(&issue.cas)) return f->message;
  return std::holds_alternative<F::fermee>(issue.cas) ? "fermee" : "arretee";
}

std::string dire(const IssueTour& issue) {
  const auto* echec = std::get_if<IssueTour::echouee>(&issue.cas);
  if (!echec) return std::holds_alternative<IssueTour::finie>(issue.cas) ? "finie" : "arretee";
  const std::string texte = direEchec(echec->erreur);
  if (!echec->repli) return texte + (echec->erreur.sentLaSessionRefusee() ? ", session refusée" : "");
  return texte + (*echec->repli == RepliApresCoupure::Decision::rejouerEnCLI ? ", rejouer" : ", annoncer");
}

/// One connection: what the server answers, then what comes and after how many seconds.
struct Ouverture {
  Resultat<int, ErreurReseau> reponse;
  std::deque<std::pair<double, LectureFlux>> suite = {};
};

std::pair<double, LectureFlux> ligne(double apres, std::string_view texte) {
  return {apres, {LectureFlux::ligne{texte}}};
}

class MondeFlux final : public FluxLignes {
 public:
  /// Once the script is over, the stream is interrupted.
  explicit MondeFlux(std::vector<Ouverture> script) : script_(script.begin(), script.end()) {}

  std::vector<std::string> journal;
  std::vector<RequeteHTTP> requetes;
  double secondes = 0;

  void noter(const std::string& fait) { journal.push_back(std::to_string(std::lround(secondes)) + " " + fait); }

  Resultat<int, ErreurReseau> ouvrir(const RequeteHTTP& requete) override {
    if (script_.empty()) return Sinon{ErreurReseau::annulee};
    noter(requete.methode + requete.url.substr(std::min(requete.url.find('?'), requete.url.size())));
    requetes.push_back(requete);
    ouverte_ = std::move(script_.front());
    script_.pop_front();
    dernier_ = secondes;
    return ouverte_.reponse;
  }

  LectureFlux suivante(std::optional<std::chrono::milliseconds> attente) override {
    auto& suite = ouverte_.suite;
    if (suite.empty() && !attente) return {LectureFlux::perte{ErreurReseau::delaiDepasse}};
    const double terme = attente ? secondes + std::chrono::duration<double>(*attente).count() : HUGE_VAL;
    if (suite.empty() || dernier_ + suite.front().first > terme) {
      secondes = terme;
      return {LectureFlux::attente{}};
    }
    secondes = dernier_ += suite.front().first;
    const LectureFlux lue = suite.front().second;
    suite.pop_front();
    return lue;
  }

  void fermer() override { ouverte_ = {Sinon{ErreurReseau::autre}}; }
  void pauser(std::chrono::milliseconds duree) override {
    secondes += std::chrono::duration<double>(duree).count();
  }
  void interrompre() override { script_.clear(); }
  bool interrompu() const override { return script_.empty(); }

 private:
  std::deque<Ouverture> script_;
  Ouverture ouverte_{Sinon{ErreurReseau::autre}};
  double dernier_ = 0;  ///< when the last of what came did
};

const std::string topic = "abcdefghijklmnopqrst-_";
const ReglageNtfy reglage{"https://h", " " + topic + " ", "tk"};

#define ICI R"(,"topic":"abcdefghijklmnopqrst-_"})"
constexpr std::string_view open = R"(data: {"event":"open")" ICI;
constexpr std::string_view vie = R"(data:{"event":"keepalive")" ICI;
constexpr std::string_view a = R"(data: {"event":"message","id":"a","message":"A")" ICI;
constexpr std::string_view b = R"(data: {"event":"message","id":"b","message":"B")" ICI;
constexpr std::string_view etrangere = R"(data: {"event":"keepalive","topic":"autre"})";

constexpr LectureFlux fin{LectureFlux::fin{}};
constexpr LectureFlux tropLongue{LectureFlux::tropLongue{}};
constexpr LectureFlux illisible{LectureFlux::illisible{}};
constexpr LectureFlux perdue{LectureFlux::perte{ErreurReseau::connexionPerdue}};

/// Listens to the end of the script, or to the end of the ear: what happened, and when.
Lignes vivre(MondeFlux& monde, const ReglageNtfy& r = reglage, const OreilleNtfy::Cockpit& cockpit = {},
             int fois = 1) {
  using E = OreilleNtfy::Etat;
  const auto surEtat = [&](const E& etat) {
    if (std::holds_alternative<E::ouverte>(etat.cas)) monde.noter("ouverte");
    if (std::holds_alternative<E::ligneSautee>(etat.cas)) monde.noter("sautée");
    if (const auto* e = std::get_if<E::attente>(&etat.cas))
      monde.noter(direEchec(e->echec) + ", " + std::to_string(std::lround(e->recul.count())));
  };
  OreilleNtfy oreille(monde, [&] { return OreilleNtfy::Secondes(monde.secondes); },
                      {[&](const MessageNtfy& m) { monde.noter(m.texte); }, surEtat});
  while (fois-- > 0) monde.noter(dire(oreille.ecouter(r, cockpit)));
  return monde.journal;
}

TEST(OreilleNtfy, VitCommeLaPolitiqueLeDit) {
  const std::string demande = "L'oreille d'Hermès se tait : le serveur refuse la demande.";
  const std::string acces = "L'oreille d'Hermès se tait : le serveur refuse l'accès à ce canal.";
  const std::tuple<const char*, std::vector<Ouverture>, Lignes> cas[] = {
      {"opened afresh every hour, waiting for nothing; no notice twice",
       {{200, {ligne(0, open), ligne(3590, vie)}},
        {201, {ligne(3599.5, a), ligne(1, b)}},
        {200, {ligne(0, a)}},
        {200}},
       {"0 GET", "0 ouverte", "3600 GET?since=25s", "7200 ouverte", "7200 A", "7200 GET?since=30m",
        "7200 ouverte", "10800 GET?since=30m", "14400 arretee"}},
      {"a refused catch-up is tried once plainly; another failure of that does not count against the next",
       {{200, {ligne(0, open), {0, fin}}}, {400}, {500}, {400}, {400}},
       {"0 GET", "0 ouverte", "0 tronqué, 2", "2 GET?since=17s", "2 400, 0", "2 GET", "2 500, 4",
        "6 GET?since=21s", "6 400, 0", "6 GET", "6 " + demande}},
      {"an hour without a sign of life is no refusal",
       {{400}, {200}, {400}},
       {"0 GET", "0 400, 0", "0 GET", "3600 GET?since=30m", "3600 400, 0", "3600 arretee"}},
      {"whatever else fails, what was missed is asked for; 403 ends it",
       {{200, {ligne(0, open), {0, fin}}}, {429}, {500}, {Sinon{ErreurReseau::delaiDepasse}}, {403}},
       {"0 GET", "0 ouverte", "0 tronqué, 2", "2 GET?since=17s", "2 429, 60", "62 GET?since=2m", "62 500, 4",
        "66 GET?since=2m", "66 le serveur n'a plus rien dit, 8", "74 GET?since=2m", "74 " + acces}},
      {"what is too long is passed over once; a keep-alive event ends a catch-up",
       {{200, {ligne(0, open), ligne(0, a), ligne(9, vie), {1, tropLongue}, ligne(1, b), {0, perdue}}},
        {200, {ligne(0, open), ligne(45, vie), {0, fin}}},
        {403}},
       {"0 GET", "0 ouverte", "0 A", "10 sautée", "11 B", "11 la liaison réseau a été coupée, 2",
        "13 GET?since=17s", "13 ouverte", "58 tronqué, 2", "60 GET?since=17s", "60 " + acces}},
      {"redirects are not followed; 401 ends it",
       {{302}, {401}},
       {"0 GET", "0 302, 2", "2 GET?since=13s", "2 " + acces}},
      {"back-off grows until the server gives a sign of life, which an answer alone is not",
       {{Sinon{ErreurReseau::hoteIntrouvable}},
        {Sinon{ErreurReseau::racineInconnue}},
        {500},
        {200, {ligne(0, etrangere), {0, fin}}},
        {200, {{0, illisible}}},
        {503},
        {503},
        {200, {ligne(0, vie), {0, perdue}}}},
       {"0 GET", "0 le serveur ntfy est injoignable, 2", "2 GET?since=13s", "2 la liaison chiffrée a échoué, 2",
        "4 GET?since=15s", "4 500, 4", "8 GET?since=19s", "8 tronqué, 8", "16 GET?since=31s", "16 tronqué, 16",
        "32 GET?since=47s", "32 503, 32", "64 GET?since=2m", "64 503, 60", "124 GET?since=3m", "124 ouverte",
        "124 la liaison réseau a été coupée, 2", "126 arretee"}},
  };
  for (const auto& [nom, script, attendu] : cas) {
    MondeFlux monde(script);
    EXPECT_EQ(vivre(monde), attendu) << nom;
    for (const auto& requete : monde.requetes) {
      EXPECT_TRUE(requete.url.starts_with("https://h/abcdefghijklmnopqrst-_/sse")) << requete.url;
      EXPECT_EQ(requete.entetes.back(), (EnteteHTTP{"Authorization", "Bearer tk"}));
    }
  }
}

TEST(OreilleNtfy, NOuvreQueSIlLeFautEtRepartANeuf) {
  MondeFlux monde({{500}, {500}, {401}, {500}});
  vivre(monde, {"http://h", reglage.topic, ""});
  vivre(monde, reglage, {.headless = true});
  vivre(monde, reglage, {.demo = true});
  EXPECT_EQ(vivre(monde, reglage, {}, 2),
            (Lignes{"0 fermee", "0 fermee", "0 fermee", "0 GET", "0 500, 2", "2 GET?since=13s", "2 500, 2",
                    "4 GET?since=15s", "4 L'oreille d'Hermès se tait : le serveur refuse l'accès à ce canal.",
                    "4 GET", "4 500, 2", "6 arretee"}));
}

TEST(OreilleNtfy, NAnnonceRienApresUnArret) {
  MondeFlux monde({{500}, {500}});
  int connexions = 0;
  OreilleNtfy oreille(monde, [&] { return OreilleNtfy::Secondes(monde.secondes); },
                      {{}, [&](const OreilleNtfy::Etat& etat) {
                         connexions += std::holds_alternative<OreilleNtfy::Etat::connexion>(etat.cas);
                         if (std::holds_alternative<OreilleNtfy::Etat::attente>(etat.cas)) monde.interrompre();
                       }});
  EXPECT_EQ(dire(oreille.ecouter(reglage, {})), "arretee");
  EXPECT_EQ(connexions, 1);
}

TEST(OreilleNtfy, UneAutreReprendOuElleEnEtait) {
  MondeFlux monde(
      {{200, {ligne(0, open), ligne(5, a), {0, fin}}}, {200, {ligne(0, open), ligne(0, a), ligne(0, b)}}});
  const auto horloge = [&] { return OreilleNtfy::Secondes(monde.secondes); };
  OreilleNtfy::Souvenir souvenir;
  OreilleNtfy oreille(monde, horloge, {[&](const auto&) { souvenir = oreille.souvenir(); }, {}});
  oreille.ecouter(reglage, {}, {.age = OreilleNtfy::Secondes(20), .ids = {"b"}});
  EXPECT_EQ(monde.requetes.front().url, "https://h/abcdefghijklmnopqrst-_/sse?since=31s");
  EXPECT_EQ(souvenir, (OreilleNtfy::Souvenir{.age = OreilleNtfy::Secondes(25), .ids = {"b", "a"}}));
}

constexpr auto texte = R"(data: {"choices":[{"delta":{"content":"a"}}]})";
constexpr auto outil = R"(data: {"type":"tool.start","name":"n"})";
constexpr auto texteEtOutil =
    R"(data: {"choices":[{"delta":{"content":"a","tool_calls":[{"function":{"name":"n"}}]}}]})";
constexpr auto outilSansNom = R"(data: {"choices":[{"delta":{"tool_calls":[{"index":0}]}}]})";
constexpr auto erreur = R"(data: {"error":"e"})";
constexpr auto outilFini = R"(data: {"type":"tool.end","name":"n"})";
constexpr auto demande = R"(data: {"type":"approval.request","id":"i"})";
constexpr auto feuVert = R"(data: {"type":"approval.responded","id":"i","approved":true})";
constexpr auto feuOrange = R"(data: {"type":"approval.responded","id":"i","decision":"later"})";
constexpr auto feuRouge = R"(data: {"type":"approval.responded","id":"i","approved":false})";

TEST(TourHermes, LivreLesEvenementsEtFinitUneFois) {
  const struct {
    Ouverture ouverture;
    std::string attendu;
    bool feuVertDIci = false;
  } cas[] = {
      {{200,
        {ligne(0, ": x"), ligne(0, texte), ligne(0, ""), ligne(0, "data: {}"), ligne(0, "data:  "),
         ligne(0, outil), ligne(0, R"(data:{"error":"e"})"), ligne(0, R"( data: {"error":"e"})"),
         ligne(0, R"(Data: {"error":"e"})"), ligne(0, "data: [DONE]x"), ligne(0, texte),
         ligne(0, "data:\t[DONE] \u00A0"), ligne(0, texte)}},
       "texte|a; outil|n|∅; erreur|e; texte|a; finie"},
      {{400}, "400, session refusée"},
      {{404}, "404, session refusée"},
      {{422}, "422, session refusée"},
      {{500}, "500"},
      {{Sinon{ErreurReseau::certificatPerime}}, "la liaison chiffrée a échoué, rejouer"},
      {{Sinon{ErreurReseau::hoteIntrouvable}}, "la passerelle d'Hermès est injoignable, rejouer"},
      {{Sinon{ErreurReseau::annulee}}, "arretee"},
      {{200, {ligne(0, texte), ligne(0, outil), {0, fin}}}, "texte|a; outil|n|∅; tronqué, annoncer"},
      {{200, {ligne(0, texte), {0, fin}}}, "texte|a; tronqué, rejouer"},
      // What may have been done already is not asked for again elsewhere.
      {{200, {ligne(0, texteEtOutil), {0, perdue}}},
       "texte|a; outil|n|∅; la liaison réseau a été coupée, annoncer"},
      {{200, {ligne(0, outilSansNom), {0, fin}}}, "tronqué, annoncer"},
      {{200, {ligne(0, outilFini), {0, fin}}}, "outilFini|n; tronqué, annoncer"},
      {{200, {{0, illisible}}}, "tronqué, annoncer"},
      {{200, {{0, tropLongue}, ligne(0, texte), {0, fin}}}, "tronqué, annoncer"},
      {{200, {ligne(0, erreur), {0, fin}}}, "erreur|e; tronqué, annoncer"},
      {{200, {ligne(0, feuOrange), {0, fin}}}, "tronqué, annoncer"},
      // A gateway that does not stream.
      {{200,
        {ligne(0, ""),
         ligne(0, R"({"session_id":"s","choices":[{"message":)"),
         ligne(0, R"( {"content":"a","tool_calls":[{"function":{"name":"n"}}]}}]})"),
         {0, fin}}},
       "session|s; texte|a; outil|n|∅; finie"},
      {{200, {ligne(0, R"({"error":{"message":"e"}})"), {0, fin}}}, "erreur|e; finie"},
      {{200, {ligne(0, R"({"choices":[{"message":{"content":"a"}}])"), {0, fin}}}, "tronqué, annoncer"},
      {{200, {ligne(0, "{"), {0, perdue}}}, "la liaison réseau a été coupée, annoncer"},
      {{200, {ligne(0, "<html>"), ligne(0, "{}"), {0, fin}}}, "tronqué, rejouer"},
      {{200, {ligne(0, demande), {0, fin}}}, "approbation|i|||∅|∅; tronqué, rejouer"},
      {{200, {ligne(0, demande), {0, fin}}}, "approbation|i|||∅|∅; tronqué, annoncer", true},
      {{200, {ligne(0, feuRouge), {0, perdue}}}, "tranchee|i|non; la liaison réseau a été coupée, rejouer"},
      {{200, {ligne(0, feuVert), {0, perdue}}}, "tranchee|i|oui; la liaison réseau a été coupée, annoncer"},
  };
  const RequeteGateway::Tour demandee{.base = "http://h/v1", .message = "m", .modele = "hermes", .cle = "k"};
  for (const auto& joue : cas) {
    MondeFlux monde({joue.ouverture});
    std::string vu;
    TourHermes tour(monde);
    const auto issue = tour.jouer(demandee, [&](const EvenementGateway& evenement) {
      vu += dire(evenement) + "; ";
      if (joue.feuVertDIci) tour.donnerFeuVert();
    });
    EXPECT_EQ(vu + dire(issue), joue.attendu);
    EXPECT_EQ(monde.requetes, std::vector{RequeteGateway::chat(demandee)});
  }
}

// Over real sockets.

TEST(HermesReel, EntendEtConverse) {
  std::string dit = "HTTP/1.1 200 OK\r\n\r\n";
  for (const std::string_view l : {open, a, std::string_view(texte), std::string_view("data: [DONE]")})
    dit.append(l).append("\n");
  PairTCP pair({PairTCP::envoyer(dit, true)});
  std::string entendu;
  EcouteNtfy ecoute({[&](const MessageNtfy& m) { entendu += m.texte, ecoute.arreter(); }, {}});
  EXPECT_EQ(dire(ecoute.ecouter({pair.url(), topic, ""}, {})), "arretee");
  EXPECT_EQ(entendu, "A");
  const auto issue = ConversationHermes().jouer({.base = pair.url(), .message = "m", .modele = "m"},
                                                [&](const auto& e) { entendu += ", " + dire(e); });
  EXPECT_EQ(entendu + ", " + dire(issue), "A, texte|a, finie");
}

TEST(HermesReel, DeuxCentsDepartsNeLaissentRien) {
  const auto fils = essai::compter("task"), descripteurs = essai::compter("fd");
  {
    PairTCP pair({PairTCP::envoyer("HTTP/1.1 200 OK\r\n\r\n", true)});
    for (int i = 0; i < 200; ++i) {
      EcouteNtfy ecoute({});
      ConversationHermes conversation;
      std::thread oreille([&] { EXPECT_EQ(dire(ecoute.ecouter({pair.url(), topic, "tk"}, {})), "arretee"); });
      std::thread tour([&] { EXPECT_EQ(dire(conversation.jouer({pair.url(), "m", "m"}, {})), "arretee"); });
      std::this_thread::sleep_for(std::chrono::microseconds(i % 40 * 100));
      ecoute.arreter();
      conversation.arreter();
      oreille.join();
      tour.join();
    }
  }
  EXPECT_LE(essai::retomber("task", fils), fils);
  EXPECT_LE(essai::retomber("fd", descripteurs), descripteurs);
}

}  // namespace
}  // namespace tarnavelle
