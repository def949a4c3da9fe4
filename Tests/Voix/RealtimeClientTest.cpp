#include "Voix/RealtimeClient.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <future>
#include <nlohmann/json.hpp>
#include <thread>

#include "Voix/HandlersNotes.hpp"

namespace tarnavelle {
namespace {

using namespace std::chrono_literals;
using essai::Lignes;
using essai::TransportFactice;

/// A session over a false transport and a false timer, and what its handlers were told, in order.
struct Session {
  explicit Session(const RealtimeProvider& provider = RealtimeProvider::openai(),
                   const std::function<void(RealtimeClient::Reglages&)>& ajuster = {}) {
    RealtimeClient::Reglages reglages{.provider = provider,
                                      .voice = "marin",
                                      .contrat = {"Parle.", {}},
                                      .handlers = essai::handlersVers([this](const std::string& ligne) {
                                        lignes.push_back(ligne);
                                        if (ligne == fermerA) client->close();
                                      }),
                                      .cap = RealtimeClient::capSeconds};
    if (ajuster) ajuster(reglages);
    client = RealtimeClient::creer(transport, std::move(reglages), [this](auto delai, auto action) {
      cap = delai;
      echoir = std::move(action);
      return [this] { ++annulations; };
    });
  }

  /// What a frame makes the handlers hear.
  Lignes recevoir(std::string_view trame) {
    lignes.clear();
    transport->rappels.surTexte(trame);
    return lignes;
  }

  std::shared_ptr<TransportFactice> transport = std::make_shared<TransportFactice>();
  Lignes lignes;
  std::string fermerA;  ///< the line on which the owner closes, from inside the handler
  std::chrono::milliseconds cap{};
  std::function<void()> echoir;
  int annulations = 0;
  std::shared_ptr<RealtimeClient> client;
};

constexpr const char* transcription =
    R"({"type":"conversation.item.input_audio_transcription.completed","transcript":"oui","item_id":"i"})";
constexpr const char* termine =
    R"({"type":"response.done","response":{"usage":{"input_token_details":{"cached_tokens":4}}}})";
constexpr const char* accepte = R"({"type":"session.updated"})";

TEST(RealtimeClient, ChaqueTrameAppelleCeQuElleDoitDansLOrdre) {
  const auto &openai = RealtimeProvider::openai(), &grok = RealtimeProvider::grok();
  const struct {
    const RealtimeProvider& provider;
    const char* trame;
    Lignes attendues;
  } cas[] = {
      {openai, R"({"type":"conversation.item.added","item":{"id":"i1"}})", {"item i1", "trame"}},
      {openai, transcription, {"dit oui", "trame"}},
      {grok,
       R"({"type":"conversation.item.input_audio_transcription.completed","transcript":"bonne nuit",)"
       R"("status":"in_progress"})",
       {"trame"}},
      {grok,
       R"({"type":"conversation.item.input_audio_transcription.completed","transcript":"bonne nuit\u0007",)"
       R"("status":"completed"})",
       {"dit bonne nuit", "trame"}},
      {openai, R"({"type":"input_audio_buffer.speech_started"})", {"parle", "trame"}},
      {openai, R"({"type":"response.audio.delta","delta":"AAA="})", {"trame", "son 2"}},
      {openai, termine, {"trame", "usage 4", "fini"}},
      {openai, R"({"type":"response.done"})", {"trame", "fini"}},
      {grok,
       R"({"type":"response.done","response":{"usage":{}},"usage":{"input_token_details":{"cached_tokens":4}}})",
       {"trame", "usage 4", "fini"}},
      {openai,
       R"({"type":"response.done","response":{"status":"failed","status_details":{"error":{"type":"t"}}}})",
       {"trame", "refus 0,,t,", "fini"}},
      {openai, R"({"type":"error","error":{"message":"non"}})", {"trame", "refus 0,,,non", "erreur non"}},
      {openai,
       R"({"type":"error","error":{"code":"c\u0000","message":"\u001b[2J\u202enon\n\tet\u009b non"}})",
       {"trame",
        R"(refus 0,c\u0000,,\u001b[2J\u202enon)"
        "\n\tet\\u009b non",
        R"(erreur \u001b[2J\u202enon)"
        "\n\tet\\u009b non"}},
      {openai, "", {"erreur trame illisible"}},
      {openai, R"({"type":"ping"})", {"trame"}},
      {openai,
       R"({"type":"response.output_item.done","item":{"type":"function_call","name":"lire"}})",
       {"trame", "appel lire{}"}},
      {grok,
       R"({"type":"response.function_call_arguments.done","name":"f","call_id":"c"})",
       {"trame", "appel f{}c"}},
      {openai, accepte, {"trame", "pret"}},
  };
  for (const auto& c : cas) {
    Session session(c.provider);
    EXPECT_EQ(session.recevoir(c.trame), c.attendues) << c.provider.id << " " << c.trame;
    EXPECT_EQ(session.recevoir(c.trame), c.attendues) << "the second time as the first: " << c.trame;
    EXPECT_EQ(session.transport->envoyes, Lignes{});
  }
}

TEST(RealtimeClient, SeConfigureSelonLeDialecteEtLeMicro) {
  for (const auto* provider : {&RealtimeProvider::openai(), &RealtimeProvider::grok()})
    for (const bool conversation : {false, true}) {
      Session session(*provider, [&](RealtimeClient::Reglages& r) {
        if (conversation) r.profil = ProfilEcouteVoix::casque();
        r.effort = "low";
        r.handlers = {};
      });
      const ContratVoix contrat{"Parle.", {}};
      session.recevoir(R"({"type":"session.created"})");
      const Json attendu = conversation
                               ? RealtimeRequest::sessionUpdateConversation(
                                     "marin", provider->dialecte, contrat, ProfilEcouteVoix::casque(), "low")
                               : RealtimeRequest::sessionUpdate("marin", provider->dialecte, contrat, "low");
      EXPECT_EQ(session.transport->envoyes, Lignes{*RealtimeRequest::encoded(attendu)});
      EXPECT_FALSE(session.client->estPrete());
    }
}

TEST(RealtimeClient, NEnvoieRienAvantNiApres) {
  Session session;
  auto& client = *session.client;
  const auto toutEnvoyer = [&] {
    session.transport->envoyes.clear();
    client.appendAudio("AAA=");
    client.commit();
    client.sendToolOutput({.callID = "a", .output = "un\xff"});
    client.sendToolResult({.callID = "b", .output = "deux"});
    client.envoyer({{"type", HUGE_VAL}});
    return session.transport->envoyes;
  };
  const Lignes sansSon = {
      R"({"type":"input_audio_buffer.commit"})", R"({"type":"response.create"})",
      R"({"item":{"call_id":"a","output":"un�","type":"function_call_output"},"type":"conversation.item.create"})",
      R"({"item":{"call_id":"b","output":"deux","type":"function_call_output"},"type":"conversation.item.create"})",
      R"({"type":"response.create"})"};
  EXPECT_EQ(toutEnvoyer(), sansSon);
  session.recevoir(accepte);
  EXPECT_TRUE(client.estPrete());
  Lignes tout = sansSon;
  tout.insert(tout.begin(), R"({"audio":"AAA=","type":"input_audio_buffer.append"})");
  EXPECT_EQ(toutEnvoyer(), tout);
  client.close();
  EXPECT_FALSE(client.estPrete());
  EXPECT_EQ(toutEnvoyer(), Lignes{});
}

TEST(RealtimeClient, FermeUneFoisEtSeTait) {
  // Closing inside a handler keeps the following ones of the same frame from being called.
  for (const auto& [fermerA, trame, attendues] : {
           std::tuple{"dit oui", transcription, Lignes{"dit oui"}},
           {"trame", termine, {"trame"}},
           {"usage 4", termine, {"trame", "usage 4"}},
           {"pret", accepte, {"trame", "pret"}},
       }) {
    Session session;
    session.fermerA = fermerA;
    EXPECT_EQ(session.recevoir(trame), attendues);
    EXPECT_EQ(session.recevoir(trame), Lignes{});
    session.transport->rappels.surChute("coupée");
    session.transport->rappels.surErreurEnvoi("non");
    session.echoir();
    session.client->close();
    EXPECT_EQ(session.lignes, Lignes{});
    EXPECT_EQ(session.transport->fermetures, 1);
    EXPECT_EQ(session.annulations, 1);
  }
}

TEST(RealtimeClient, DitLesPannesDuTransport) {
  Session session;
  session.transport->rappels.surErreurEnvoi("pleine\a");
  session.transport->rappels.surRefus(400, R"({"code":"c","error":"non\u202e"})");
  session.transport->rappels.surRefus(502, "<html>\r");
  session.transport->rappels.surChute("coupée\x7f");
  EXPECT_EQ(session.lignes,
            (Lignes{R"(erreur pleine\u0007)", R"(refus 400,c,,non\u202e)", R"(refus 502,,,<html>\r)",
                    R"(erreur coupée\u007f)", R"(fermeture coupée\u007f)"}));
  EXPECT_EQ(session.transport->fermetures, 0);
  Session ferme;
  ferme.fermerA = "erreur coupée";
  ferme.transport->rappels.surChute("coupée");
  EXPECT_EQ(ferme.lignes, Lignes{"erreur coupée"});
}

TEST(RealtimeClient, SArreteASonPlafond) {
  for (const auto& [cap, ecrit] : {std::pair(90000ms, "90"), {1500ms, "1,5"}, {50ms, "0,05"}}) {
    Session session(RealtimeProvider::openai(), [c = cap](RealtimeClient::Reglages& r) { r.cap = c; });
    EXPECT_EQ(session.cap, cap);
    for (int i = 0; i < 2; ++i) session.echoir();
    EXPECT_EQ(session.lignes, Lignes{std::string("erreur plafond de session (") + ecrit + " s) atteint"});
    EXPECT_EQ(session.transport->fermetures, 1);
  }
  Session sans(RealtimeProvider::openai(), [](RealtimeClient::Reglages& r) { r.cap.reset(); });
  EXPECT_FALSE(sans.echoir);
}

TEST(RealtimeClient, MortNEstPlusTouche) {
  Session session;
  session.client.reset();
  EXPECT_EQ(session.transport->fermetures, 1) << "dying closes";
  EXPECT_EQ(session.annulations, 1);
  EXPECT_EQ(session.recevoir(accepte), Lignes{});
  session.echoir();
  EXPECT_EQ(session.lignes, Lignes{});

  // Let go by its owner inside a handler, it reads the rest of the frame safely.
  Session autre(RealtimeProvider::openai(), [&](RealtimeClient::Reglages& r) {
    r.handlers.onTrame = [&](std::string_view) { autre.client.reset(); };
  });
  EXPECT_EQ(autre.recevoir(termine), (Lignes{"usage 4", "fini"}));
  EXPECT_EQ(autre.transport->fermetures, 1);
}

TEST(Minuterie, AppelleUneFoisOuPas) {
  std::promise<void> echue;
  const auto annuler = minuterieReelle(1ms, [&] { echue.set_value(); });
  EXPECT_EQ(echue.get_future().wait_for(10s), std::future_status::ready);
  annuler();
  const auto jamais = std::make_shared<int>(0);
  for (const auto delai : {std::chrono::milliseconds(1h), std::chrono::milliseconds::max()})
    minuterieReelle(delai, [jamais] { ++*jamais; })();
  for (int i = 0; i < 1000 && jamais.use_count() > 1; ++i) std::this_thread::sleep_for(1ms);
  EXPECT_EQ(jamais.use_count(), 1) << "a timer that is given up ends at once";
  EXPECT_EQ(*jamais, 0);
}

}  // namespace
}  // namespace tarnavelle
