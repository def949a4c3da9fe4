// What a voice session does when: its queues, what the speaker still has to say, when it starts again.
#include <gtest/gtest.h>

#include <cmath>
#include <thread>

#include "Voix/FenetreLecture.hpp"
#include "Voix/FileAnnoncesVoix.hpp"
#include "Voix/FileAppelsRealtime.hpp"
#include "Voix/ReconnexionRealtime.hpp"

namespace tarnavelle {
namespace {

using namespace std::chrono_literals;

TEST(FileAnnoncesVoix, GardeLesDernieres) {
  FileAnnoncesVoix file;
  for (const char* texte : {" a\n", "a", "", "\t\u2028", "b", "a", "c", "d", "e"}) file.enfiler(texte);
  EXPECT_EQ(file.attente, (std::deque<std::string>{"b", "a", "c", "d", "e"}));
  file.remettre("z");
  EXPECT_EQ(file.attente, (std::deque<std::string>{"z", "b", "a", "c", "d"}));
}

TEST(FileAnnoncesVoix, LivreQuandLaConversationEstLibre) {
  using Conversation = FileAnnoncesVoix::Conversation;
  FileAnnoncesVoix file{{"a", "b"}};
  for (const Conversation& occupee : {Conversation{},
                                      {.connecte = true, .reponseActive = true},
                                      {.connecte = true, .appelEnCours = true},
                                      {.connecte = true, .feuVertEnAttente = true}})
    EXPECT_FALSE(file.prochaine(occupee));
  for (const char* attendue : {"a", "b"}) EXPECT_EQ(file.prochaine({.connecte = true}), attendue);
  EXPECT_FALSE(file.prochaine({.connecte = true}));
}

TEST(FileAppelsRealtime, UnAppelALaFois) {
  using Appel = FileAppelsRealtime::Appel;
  const Appel a{"etat", "{}", "1"}, c{"lire", "{}", "3"};  // the same call twice is two calls
  FileAppelsRealtime file;
  EXPECT_FALSE(file.terminer());
  EXPECT_EQ(file.enfiler(a), a);
  for (const Appel& suivant : {a, c}) EXPECT_FALSE(file.enfiler(suivant));
  EXPECT_EQ(file.callIDsEnVol(), (std::vector<std::string>{"1", "1", "3"}));
  EXPECT_EQ(file.terminer(), a);
  EXPECT_EQ(file.terminer(), c);
  EXPECT_FALSE(file.terminer());
  EXPECT_TRUE(file.vide());
  file.enfiler(a);
  file.enfiler(a);
  file.vider();
  EXPECT_EQ(file, FileAppelsRealtime{.executes = 3});
}

TEST(FenetreLecture, LeSonSeMetEnFile) {
  FenetreLecture f;
  EXPECT_FALSE(f.audible(-1s));
  for (int i = 0; i < 2; ++i) EXPECT_EQ(f.planifier(24000, 100s, 24000), 24000);
  EXPECT_EQ(f.restantSecondes(101.5s), 0.5s);
  EXPECT_TRUE(f.audible(102.34s));
  EXPECT_FALSE(f.audible(102.35s));

  for (const double frequence : {.5, -1., std::nan("")}) EXPECT_EQ(f.planifier(5, 110s, frequence), 5);
  f.planifier(-5, 110s, 24000);
  EXPECT_EQ(f.finDeLecture, 102s);
  f.planifier(1, 110s, 1);
  EXPECT_EQ(f.finDeLecture, 111s);
}

// 24 kHz, on the real clock.
TEST(FenetreHautParleur, SertDeuxFils) {
  FenetreHautParleur f;
  const auto planifier = [&] {
    for (int i = 0; i < 500; ++i) EXPECT_TRUE(f.planifier(2400) == 2400 && f.parleEncore());
  };
  std::thread lecteur(planifier);
  planifier();
  lecteur.join();
  EXPECT_NEAR(f.restantSecondes().count(), 100, 30);
  f.vider();
  EXPECT_FALSE(f.parleEncore());
}

TEST(ReconnexionRealtime, Decide) {
  using D = ReconnexionRealtime::Decision;
  const D credit{D::abandonner{"La voix s'arrête : le compte du fournisseur n'a plus de crédit."}};
  const D cle{D::abandonner{"La voix s'arrête : la clé du fournisseur est refusée."}};
  const D session{D::abandonner{"La voix s'arrête : le fournisseur refuse la session."}};
  const D encore{D::reconnecter{1s, 1}};
  using Refus = RefusRealtime;
  const std::string_view mauvaiseCle =
      R"({"code":"Client specified an invalid argument","error":"Incorrect API key provided. You can obtain)";
  const std::pair<ReconnexionRealtime::Fermeture, D> cas[] = {
      {{.fermetureVoulue = true, .message = "invalid_api_key"}, {D::rien{}}},
      {{.superviseurEnCours = true, .message = "code invalid_api_key."}, cle},
      {{.message = "account_deactivated"}, cle},
      {{.message = "error: insufficient_quota"}, credit},
      {{.message = "billing_hard_limit_reached"}, credit},
      {{.superviseurEnCours = true, .message = "coupure"}, {D::rien{}}},
      {{.message = "Invalid_Api_Key", .tentative = 3}, {D::reconnecter{3s, 3}}},
      {{.tentative = 11}, {D::reconnecter{10s, 11}}},
      {{.tentative = 0}, encore},
      {{.fermetureVoulue = true, .refus = Refus{.http = 401}}, {D::rien{}}},
      {{.superviseurEnCours = true, .refus = Refus{.http = 401}}, cle},
      {{.message = "invalid_api_key", .refus = Refus{.http = 402}}, cle},
      {{.refus = Refus{.code = "credit_balance_exhausted", .genre = "insufficient_quota"}}, credit},
      {{.refus = Refus{.code = "invalid_api_key", .genre = "invalid_request_error"}}, cle},
      {{.refus = Refus{.code = "session_expired", .message = "insufficient_quota API key credits"}}, encore},
      {{.refus = Refus::deConnexion(400, mauvaiseCle)}, cle},
      {{.refus = Refus::deConnexion(403, R"({"error":"Your team has used all available credits"})")}, credit},
      {{.refus = Refus::deConnexion(429, R"({"error":{"code":"insufficient_quota"}})")}, credit},
      {{.refus = Refus::deConnexion(429, "either used all available credits or")}, credit},
      {{.refus = Refus::deConnexion(429, "Too many requests")}, encore},
      {{.refus = Refus{429, "rate_limit_exceeded", "requests", "Add credits to raise it."}}, encore},
      {{.refus = Refus::deConnexion(403, "<html>Attention Required!</html>")}, encore},
      {{.refus = Refus{.http = 402}}, credit},
      {{.refus = Refus{.http = 404}}, session},
      {{.refus = Refus{.http = 503, .message = "no credits, no API key"}}, encore},
  };
  for (const auto& [fermeture, attendue] : cas)
    EXPECT_EQ(ReconnexionRealtime::decision(fermeture), attendue)
        << fermeture.message.value_or("") << fermeture.tentative
        << (fermeture.refus ? fermeture.refus->code + fermeture.refus->message : "");
}

TEST(InactiviteConversation, VidePuisRaccroche) {
  using enum InactiviteConversation::Geste;
  using InactiviteConversation::geste;
  EXPECT_EQ(geste({.silenceDepuis = 299.9s}), rien);
  EXPECT_EQ(geste({.silenceDepuis = 300s}), viderHistorique);
  EXPECT_EQ(geste({.silenceDepuis = 899.9s, .historiqueVide = true}), rien);
  EXPECT_EQ(geste({.silenceDepuis = 900s, .historiqueVide = true}), raccrocher);
  EXPECT_EQ(geste({.silenceDepuis = 900s, .reponseActive = true}), rien);
  EXPECT_EQ(geste({.silenceDepuis = 900s, .appelEnCours = true}), rien);
}

TEST(FinDActiviteDurable, AnnonceLaFinDUnLongTravail) {
  using FinDActiviteDurable::merite;
  EXPECT_TRUE(merite({.travaillaitAvant = true, .travailDepuis = 20s}));
  EXPECT_FALSE(merite({.travaillaitAvant = true, .travailDepuis = 19.9s}));
  EXPECT_FALSE(merite({.travaillaitAvant = true, .travailleMaintenant = true, .travailDepuis = 60s}));
  EXPECT_FALSE(merite({.travailDepuis = 60s}));
}

}  // namespace
}  // namespace tarnavelle
