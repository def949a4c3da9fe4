#include "Voix/ConversationVoix.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "Voix/MondeConversation.hpp"

namespace tarnavelle {
namespace {

using namespace std::chrono_literals;
using essai::Lignes;
using essai::MondeConversation;

const std::string abandon(FileAppelsRealtime::sortieAbandon);
const std::string rienCoute = "fin Realtime — 0.0 s · ~0.0000 $";

TEST(ConversationVoix, ExecuteLesAppelsUnParUnPuisDemandeLaSuite) {
  MondeConversation m;
  EXPECT_EQ(m.faire({"commence"}), Lignes{"= connexion"});
  EXPECT_EQ(m.faire({"prête"}), (Lignes{"= écoute", "> session"}));
  // The first is quicker than the end of the response; the third is not executed yet.
  EXPECT_EQ(m.faire({"répond", "appel etat a", "rend a calme", "appel lire b", "appel lire c",
                     "rend c trop tôt", "rend b un"}),
            (Lignes{"appel etat a", "= outil", "= écoute", "appel lire b", "= outil", "appel lire c",
                    "> rend a calme", "> rend b un"}));
  EXPECT_EQ(m.faire({"finit"}), Lignes{});
  EXPECT_EQ(m.faire({"rend c deux", "rend c encore"}),
            (Lignes{"= écoute", "> rend c deux", "> response.create"}));
  // A tool that never returns is given up.
  EXPECT_EQ(m.faire({"répond", "appel lire d", "finit", "attend 180000"}),
            (Lignes{"appel lire d", "= outil", "= écoute",
                    "> rend d Le cockpit n'a pas répondu : dis-le à l'opérateur, sans inventer de résultat.",
                    "> response.create"}));
}

TEST(ConversationVoix, SeTaitQuandLOperateurParle) {
  // Of 24 000 samples a second, how many the player dropped; how long it played; what the service is told.
  const std::tuple<std::optional<std::int64_t>, const char*, Lignes> cas[] = {
      {std::nullopt, "attend 700", {"> tronque i2 200"}},
      {std::nullopt, "attend 300", {"> tronque i2 0", "> tronque i1 300"}},
      {12000, "attend 700", {"> tronque i2 500"}},
      {0, "attend 700", {}},
      {999999, "attend 700", {"> tronque i2 0", "> tronque i1 0"}},
      {std::nullopt, "attend 1600", {}},  // the end is still in the room
  };
  for (const auto& [perdus, passe, tronques] : cas) {
    MondeConversation m;
    m.perdus = perdus;
    m.faire({"commence", "prête", "répond", "son i1 500", "son i2 400", "son i2 600", "appel lire a",
             "appel lire b", passe});
    Lignes attendues{"silence", "abandon a", "= écoute", "joue 480", "= parole"};
    attendues.insert(attendues.end(), tronques.begin(), tronques.end());
    for (const std::string id : {"a", "b", "c"}) attendues.push_back("> rend " + id + " " + abandon);
    // What was on its way comes to nothing.
    EXPECT_EQ(m.faire({"parle", "son i2 100", "appel lire c", "rend a tard", "finit", "répond", "son i3 10"}),
              attendues);
    m.perdus = 999999;
    EXPECT_EQ(m.faire({"tait", "parle"}), (Lignes{"silence", "= écoute", "> tronque i3 0"}));
  }
}

TEST(ConversationVoix, RespecteLeProfil) {
  MondeConversation m(ProfilEcouteVoix::hautParleurs());
  m.faire({"commence", "prête"});
  EXPECT_EQ(m.faire({"répond", "micro 480", "son i 1000", "micro 960", "parle", "tait", "finit", "attend 1349",
                     "micro 960", "attend 1", "micro 2"}),
            (Lignes{"joue 48000", "= parole", "= écoute", "> son 480", "> son 2"}));
  // Who speaks while a tool works, or before its result is told, is answered instead.
  EXPECT_EQ(m.faire({"répond", "appel lire a", "parle", "tait", "appel lire b", "rend b fait", "parle", "tait",
                     "finit"}),
            (Lignes{"appel lire a", "= outil", "abandon a", "= écoute", "appel lire b", "= outil", "= écoute",
                    "> rend a " + abandon, "> rend b fait"}));
  // The operator may still silence it by hand.
  m.faire({"répond", "son j 1000"});
  m.conversation->interrompre();
  m.conversation->changerProfil(ProfilEcouteVoix::casque());
  EXPECT_EQ(m.rendu(), (Lignes{"silence", "= écoute", "> response.cancel", "> tronque j 0", "> écoute"}));
}

TEST(ConversationVoix, ParleQuandOnPousse) {
  MondeConversation m(std::nullopt);
  // The key wakes it, and is heard although nothing is ready.
  EXPECT_EQ(m.faire({"micro 4800", "appuie", "micro 4000", "relâche", "micro 4000", "appuie", "micro 1000",
                     "relâche", "prête", "accepte"}),
            (Lignes{"= connexion", "= écoute", "> session", "> son 4000", "> son 1000",
                    "> input_audio_buffer.commit", "> response.create"}));
  EXPECT_EQ(m.faire({"répond", "son i 1000", "attend 250", "appuie", "micro 4800", "relâche"}),
            (Lignes{"joue 48000", "= parole", "silence", "= écoute", "> response.cancel", "> tronque i 250",
                    "> son 4800", "> input_audio_buffer.commit"}));
  EXPECT_EQ(m.faire({"finit"}), Lignes{"> response.create"});
  // A service that does not say that it has given its response up is not waited for.
  EXPECT_EQ(m.faire({"répond", "appuie", "micro 4800", "relâche", "son i 10", "attend 2000", "son i 10"}),
            (Lignes{"> response.cancel", "> son 4800", "> input_audio_buffer.commit", "> response.create"}));
  EXPECT_EQ(m.faire({"répond", "finit", "appuie", "micro 4798", "relâche"}),
            (Lignes{"> son 4798", "> input_audio_buffer.clear"}))
      << "too short to be a turn";
  EXPECT_EQ(m.faire({"attend 90000"}), (Lignes{"détail : plafond de session (90 s) atteint", "silence",
                                               "fin Realtime — 90.0 s · ~0.0004 $", "= sommeil"}));
  EXPECT_EQ(m.faire({"appuie"}), Lignes{"= connexion"});
}

TEST(ConversationVoix, RecommenceApresUneCoupure) {
  MondeConversation m;
  m.faire({"commence", "prête", "item vieux", "appel dicter a", "appel lire b", "note [tarnavelle] note"});
  EXPECT_EQ(
      m.faire({"chute"}),
      (Lignes{"détail : coupée", "avis : La connexion au service vocal est perdue : nouvel essai dans 1 s.",
              "= connexion"}));
  m.faire({"rend a tapé", "rend b jamais demandé"});
  for (const int attente : {1, 2, 3}) {
    m.passer(std::chrono::seconds(attente) - 1ms);
    EXPECT_EQ(m.transports.size(), static_cast<std::size_t>(attente));
    m.passer(1ms);
    m.transports.front()->rappels.surTexte(R"({"type":"session.updated"})");  // of the one that is over
    EXPECT_EQ(m.faire({"chute"}).at(1), "avis : Le service vocal est injoignable : nouvel essai dans " +
                                            std::to_string(attente + 1) +
                                            " s. Vérifiez que cette machine est reliée au réseau.");
  }
  EXPECT_EQ(m.faire({"attend 4000", "prête"}),
            (Lignes{"= écoute", "> session", "> note [tarnavelle] note", "> response.create"}));
  const Lignes resultat{
      "> note [tarnavelle] Résultat de « dicter », demandé avant une coupure : tapé Dis-le en une phrase "
      "courte.",
      "> response.create"};
  EXPECT_EQ(m.faire({"répond", "finit"}), resultat);
  // The count begins anew once a session is ready; a note that was not taken up keeps its turn.
  m.faire({"chute", "attend 1000"});
  EXPECT_EQ(m.faire({"prête", "répond"}), (Lignes{"= écoute", "> session", resultat[0], resultat[1]}));
  // A service that opens and says nothing.
  m.faire({"chute", "attend 91000"});
  EXPECT_EQ(m.transports.back()->fermetures, 1);
  m.faire({"attend 2000"});
  EXPECT_EQ(m.transports.size(), 8u);
}

TEST(ConversationVoix, AbandonneCeQuiSeraitRefuseEncore) {
  const std::pair<const char*, Lignes> cas[] = {
      {R"({"type":"error","error":{"code":"invalid_api_key","message":"Incorrect"}})",
       {"détail : Incorrect",
        "panne : La voix s'arrête : la clé du fournisseur est refusée. Vérifiez la clé donnée par "
        "OPENAI_API_KEY."}},
      {R"({"type":"response.done","response":{"status":"failed","status_details":{"error":{"code":"insufficient_quota"}}}})",
       {"panne : La voix s'arrête : le compte du fournisseur n'a plus de crédit. Rechargez le compte chez "
        "OpenAI, ou choisissez "
        "un autre service."}},
      {"",
       {"détail : no model",
        "panne : La voix s'arrête : le fournisseur refuse la session. Vérifiez le modèle demandé "
        "(gpt-realtime-2.1-mini) et les "
        "droits de la clé OPENAI_API_KEY."}},
  };
  for (const auto& [trame, dit] : cas) {
    MondeConversation m;
    m.faire({"commence", "prête"});
    if (!*trame) m.transports.back()->rappels.surRefus(403, R"({"error":"no model"})");
    Lignes attendues = dit;
    for (const std::string& ligne : Lignes{"silence", rienCoute, "= raccroché"}) attendues.push_back(ligne);
    EXPECT_EQ(m.faire({*trame ? trame : "chute", "attend 3600000"}), attendues);
    EXPECT_EQ(m.transports.back()->fermetures, 1);
    EXPECT_EQ(m.transports.size(), 1u);
  }
  MondeConversation enPanne;
  enPanne.faire({"commence"});
  enPanne.transports.back()->rappels.surRefus(502, "oups");
  EXPECT_EQ(enPanne.faire({"chute"}),
            (Lignes{"détail : oups",
                    "avis : Le service vocal ne prend pas la connexion (HTTP 502) : nouvel essai dans 1 s. Il "
                    "est peut-être en panne, ou trop demandé."}));
  // What our own housekeeping meets is nobody's trouble.
  MondeConversation m;
  m.faire({"commence", "prête"});
  EXPECT_EQ(m.faire({R"({"type":"error","error":{"code":"response_cancel_not_active","message":"no"}})",
                     R"({"type":"error","error":{"code":"server_error","message":"oups"}})"}),
            Lignes{"détail : oups"});
  MondeConversation sansCle;
  sansCle.refusDOuvrir = "la clé du fournisseur manque";
  const char* const panne =
      "panne : La voix ne peut pas s'ouvrir : la clé du fournisseur manque. La clé du service se donne par "
      "OPENAI_API_KEY.";
  EXPECT_EQ(sansCle.faire({"commence"}), (Lignes{"= connexion", panne, "silence", rienCoute, "= raccroché"}));
}

TEST(ConversationVoix, SEndort) {
  MondeConversation m;
  m.faire({"commence", "prête"});
  EXPECT_EQ(m.faire({"dit bonne nuit les amis",
                     R"({"type":"response.output_audio_transcript.done","transcript":"Oui.\u001b[2J"})",
                     R"({"type":"response.audio_transcript.done","transcript":"Oui."})", "parle",
                     "note en retard", "dit Bonne nuit, Tarnavelle."}),
            (Lignes{"opérateur : bonne nuit les amis", "modèle : Oui.[2J", "modèle : Oui.",
                    "opérateur : Bonne nuit, Tarnavelle.", "avis : La voix s'endort.", "silence", rienCoute,
                    "= sommeil"}));
  EXPECT_EQ(m.faire({"note personne n'écoute", "commence", "prête"}),
            (Lignes{"= connexion", "= écoute", "> session"}));
  m.conversation->raccrocher();
  m.conversation->raccrocher();
  EXPECT_EQ(m.rendu(), (Lignes{"silence", rienCoute, "= raccroché"}));
}

TEST(ConversationVoix, OublieEtRaccrocheQuandPersonneNeParle) {
  const std::string phrase(InactiviteConversation::phraseRaccroche);
  MondeConversation m;
  EXPECT_EQ(
      m.faire({"commence", "prête", "item x", "item y", "attend 299000", "dit un instant", "attend 299000"}),
      (Lignes{"= connexion", "= écoute", "opérateur : un instant", "> session"}));
  EXPECT_EQ(m.faire({"attend 1000"}), (Lignes{"> oublie x", "> oublie y"}));
  // The board's notes are nobody's word.
  EXPECT_EQ(m.faire({"note [tarnavelle] note", "répond", "finit", "attend 600000"}),
            (Lignes{"avis : " + phrase, "> note [tarnavelle] note", "> response.create",
                    "> note [tarnavelle] " + phrase + " Dis exactement cette phrase, et rien d'autre.",
                    "> response.create"}));
  EXPECT_EQ(m.faire({"répond", "son adieu 4000", "finit", "attend 4349"}), (Lignes{"joue 192000", "= parole"}));
  EXPECT_EQ(m.faire({"attend 1"}).back(), "= raccroché");
  // Who speaks meanwhile is not left; and without a connection nothing is said.
  EXPECT_EQ(m.faire({"commence", "prête", "item z", "chute", "attend 1000", "prête", "attend 300000"}).back(),
            "> session");
  m.faire({"attend 600000", "parle", "tait", "attend 100000"});
  EXPECT_EQ(m.transports.back()->fermetures, 0);
  for (int s = 0; s < 900; ++s) m.faire({"chute", "attend 1000"});
  EXPECT_EQ(m.transports.back()->fermetures, 1);
}

TEST(ConversationVoix, AnnonceQuandLaConversationEstLibre) {
  MondeConversation m;
  m.faire({"commence", "prête"});
  const auto travailler = [&](std::chrono::seconds duree) {
    for (const auto attente : {duree, 0s}) {
      m.conversation->activite({.agent = "Merlin", .travaille = true});
      m.passer(attente);
    }
    m.conversation->activite({.agent = "Merlin", .resume = "trois tests"});
    return m.rendu();
  };
  EXPECT_EQ(travailler(19s), Lignes{});
  m.faire({"parle"});
  EXPECT_EQ(travailler(20s), Lignes{});
  EXPECT_EQ(m.faire({"tait"}), Lignes{}) << "the service is about to answer";
  m.conversation->feuVert(true);
  m.faire({"répond", "appel lire a", "finit", "rend a rien", "répond", "finit"});
  EXPECT_EQ(m.faire({"attend 5000"}), Lignes{});
  m.conversation->feuVert(false);
  EXPECT_EQ(
      m.rendu(),
      (Lignes{
          "> note [tarnavelle] Merlin a fini : trois tests Dis-le en une phrase courte et propose la suite.",
          "> response.create"}));
  EXPECT_EQ(m.faire({"répond", "son i 1000", "finit", "note encore", "attend 1349"}),
            (Lignes{"joue 48000", "= parole"}));
  EXPECT_EQ(m.faire({"attend 1"}), (Lignes{"= écoute", "> note encore", "> response.create"}));
  EXPECT_EQ(m.faire({"répond", "son l 1000", "parle", "tait", "note enfin", "attend 3000"}),
            (Lignes{"joue 48000", "= parole", "silence", "= écoute", "> tronque l 0"}));
}

TEST(ConversationVoix, DitLePlateauQuandIlACHange) {
  MondeConversation m;
  m.faire({"commence", "prête"});
  EXPECT_EQ(m.faire({"plateau Merlin arrive", "plateau Merlin travaille", "attend 60000"}), Lignes{});
  EXPECT_EQ(m.faire({"parle", "accepte", "tait", "parle"}), Lignes{"> monde Merlin travaille"});
  m.faire({"répond", "appel ouvrir_agent a", "finit", "plateau Milan arrive"});
  EXPECT_EQ(m.faire({"rend a Milan"}),
            (Lignes{"= écoute", "> rend a Milan", "> monde Milan arrive", "> response.create"}));
}

TEST(ConversationVoix, HuitHeuresSansRienAccumuler) {
  MondeConversation m;
  m.faire({"commence", "prête"});
  for (int tour = 0; tour < 8 * 60; ++tour) {
    m.faire({"parle", "micro 480", "tait", "répond", "item i", "son i 3000", "appel etat a",
             R"({"type":"response.done","response":{"usage":{"output_token_details":{"audio_tokens":100}}}})"});
    EXPECT_EQ(m.faire({"rend a calme", "répond", "finit"}),
              (Lignes{"= parole", "> rend a calme", "> response.create"}));
    if (tour % 60 == 59) m.faire({"chute", "attend 1000", "prête", "attend 59000"});
    m.passer(tour % 60 == 59 ? 0s : 60s);
  }
  EXPECT_LE(m.plusDEcheances, 1u);
  EXPECT_LT(m.reveils, 480 * 8);
  m.rendu();
  m.conversation->raccrocher();
  EXPECT_EQ(m.rendu().at(1), "fin Conversation — 480 min 0 s · 480 tours · ~0.9600 $");
  EXPECT_TRUE(m.echeances.empty());
}

TEST(ConversationVoix, SePartageEntreFils) {
  MondeConversation m;
  m.faire({"commence", "prête"});
  constexpr int fois = 500;
  std::thread micro([&] {
    for (int i = 0; i < fois; ++i) m.conversation->entendre(Octets(480));
  });
  std::thread plateau([&] {
    for (int i = 0; i < fois; ++i) m.conversation->monde({std::to_string(i), {}});
  });
  for (int i = 0; i < fois; ++i) m.unPas("son i 1");
  micro.join();
  plateau.join();
  const Lignes tout = m.rendu();
  for (const char* ligne : {"> son 480", "joue 48"}) EXPECT_EQ(std::ranges::count(tout, ligne), fois) << ligne;
  m.conversation.reset();
  m.transports.back()->rappels.surTexte(R"({"type":"response.created"})");
  m.passer(1h);
  EXPECT_EQ(m.rendu(), Lignes{}) << "destroyed, it says nothing more";
  EXPECT_EQ(m.transports.back()->fermetures, 1);
}

}  // namespace
}  // namespace tarnavelle
