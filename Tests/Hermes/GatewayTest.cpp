#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "Hermes/Dire.hpp"
#include "Hermes/EvenementGateway.hpp"
#include "Hermes/RequeteGateway.hpp"
#include "Hermes/ReveilGateway.hpp"
#include "Socle/EcritureJSON.hpp"

namespace tarnavelle {
namespace {

using essai::dire;

TEST(EvenementGateway, Lire) {
  const std::pair<const char*, const char*> cas[] = {
      {"[]", "rien"},
      // Errors come before everything else.
      {R"({"error":"x","choices":[{"delta":{"content":"a"}}]})", "erreur|x"},
      {R"({"error":{"message":"y","code":400},"type":"text","text":"a"})", "erreur|y"},
      {R"({"error":false})", "erreur|erreur sans message"},
      {R"({"error":null,"choices":[{"delta":{"content":"a"}}]})", "texte|a"},
      {R"({"choices":[{"delta":{"content":"é\n"}},{"delta":{"content":"b"}}]})", "texte|é\n"},
      {R"({"choices":[{"delta":{}}],"session_id":"s"})", "session|s"},
      {R"({"choices":[],"type":"tool_call","name":"n"})", "outil|n|∅"},
      {R"({"choices":[{"delta":{"content":"a","tool_calls":[{"function":{"name":"f"}}]}}]})", "texte|a"},
      {R"({"choices":[{"delta":{"tool_calls":[{"function":{"name":null}},{"id":1},{"function":{"name":"g",
         "arguments":"{\"path\":\"/p\"}"}}]}}]})",
       "outil|g|/p"},
      {R"({"choices":[{"delta":{"tool_calls":[{"function":{"name":"f","arguments":"{\"path\": \"."}}]}}]})",
       "outil|f|∅"},
      {R"({"choices":[{"delta":{"tool_calls":[]}}],"session_id":"s"})", "rien"},
      // A text of its own comes before the calls of a delta.
      {R"({"type":"text","text":"t","choices":[{"delta":{"tool_calls":[]}}]})", "texte|t"},
      {R"({"type":"text","text":null,"content":"c"})", "texte|c"},
      {R"({"type":"text","text":"\ud83c"})", "texte|\uFFFD"},
      {R"({"type":"text","text":"","content":"c","conversation_id":"k"})", "session|k"},
      {R"({"type":null,"event":"text","text":"t"})", "texte|t"},
      {R"({"type":"tool.start","tool":"lire","input":{"file_path":"/a","path":"/b"}})", "outil|lire|/a"},
      {R"({"type":"tool_use","name":"","tool_name":"n","args":"{\"file\":\"f\"}"})", "outil|n|f"},
      {R"({"type":"tool_call","function":{"name":"f"},"parameters":{"filePath":"","notebook_path":"/n"}})",
       "outil|f|/n"},
      {R"({"type":"tool_call","name":"n","input":null,"arguments":"x","args":{"filename":"f"}})", "outil|n|f"},
      {R"({"type":"tool_call","name":"n","input":{},"arguments":{"path":"/a"}})", "outil|n|∅"},
      {R"({"type":"tool_call","name":null,"session":{"id":"s"}})", "session|s"},
      {R"({"sessionId":"","hermes_session_id":"h","session":{"id":"s"}})", "session|h"},
      {R"({"type":"approval_request","name":"n"})", "rien"},
      {R"({"event":"run_approval_request","id":"e","approval":{"approval_id":"a","tool":"t","title":"T","command":"c",
         "expires_at":1700000000}})",
       "approbation|e|t|T|c|1700000000000"},
      {R"({"type":"approval.request","approval":{"id":""},"request":{"approvalId":"r","reason":"R"},"data":{"id":"d",
         "function":{"name":"f"},"title":"D","args":"A"}})",
       "approbation|r|f|R|A|∅"},
      {R"({"type":"approval.request","id":"i","approval":"a","arguments":{"command":"c"},"details":"d"})",
       "approbation|i|||d|∅"},
      // Arguments that are no text show what they would do.
      {R"({"type":"approval.request","id":"i","tool":"t","arguments":{"path":"/p","command":"c"}})",
       "approbation|i|t||c|∅"},
      {R"({"type":"approval.request","data":{"id":"i","command":["rm","-rf","/"]}})",
       "approbation|i|||rm -rf /|∅"},
      {R"({"type":"approval.request","id":"i","input":{},"request":{"args":{"command":7,"file_path":"/f"}}})",
       "approbation|i|||/f|∅"},
      {R"({"type":"approval.request","id":"i","function":{"name":"f","arguments":"{\"url\":\"u\"}"}})",
       "approbation|i|f||{\"url\":\"u\"}|∅"},
      {R"({"type":"approval.request","id":"i","choices":[{"delta":{"content":"a"}}]})", "approbation|i|||∅|∅"},
      {R"({"type":"approval_responded","id":"i","approved":true,"decision":"approve","status":"done",
         "data":{"arguments":{"action":"refuse","allowed":false}}})",
       "tranchee|i|oui"},
      {R"({"type":"approval.response","id":"i","approved":"yes","status":"pending","action":"DeNied"})",
       "tranchee|i|non"},
      {R"({"type":"approval_response","data":{"id":"i","verdict":"Approuver"}})", "tranchee|i|oui"},
      {R"({"event":"run_approval_response","request":{"id":"i"},"response":{"accepted":true}})",
       "tranchee|i|oui"},
      // Nothing is decided when one word is a no and the other a yes, nor by a word that is neither.
      {R"({"type":"approval_responded","id":"i","approved":false,"decision":"approve"})", "rien"},
      {R"({"type":"approval.responded","id":"i","result":"no","data":{"allowed":true}})", "rien"},
      {R"({"type":"approval.responded","id":"i","approved":true,"data":{"approved":false}})", "rien"},
      {R"({"type":"approval.responded","id":"i","approved":true,"suite":[{"x":{"status":"Denied"}}]})", "rien"},
      {R"({"type":"approval.responded","id":"i","approved":true,"data":{"accepted":0}})", "rien"},
      {R"({"type":"approval.responded","id":"i","decision":"later","data":{"approved":true}})", "rien"},
      {R"({"type":"approval.responded","id":"i","status":"pending","action":"approve"})", "rien"},
      {R"({"type":"approval.responded","id":"i","request":{"approved":true}})", "rien"},
      {R"({"type":"approval.responded","approved":true})", "rien"},
  };
  for (const auto& [charge, dit] : cas) EXPECT_EQ(dire(EvenementGateway::lire(charge)), dit) << charge;
}

TEST(EvenementGateway, Expiration) {
  const std::pair<std::string, std::string> cas[] = {
      {R"("expires_at":100000000000)", "100000000000000"},
      {R"("expires_at":100000000001)", "100000000001"},
      {R"("expires_at":0,"expiresAt":-5,"expiration":null,"expires":true,"deadline":7)", "7000"},
      {R"("expires_at":"demain","expiresAt":" 1700000000\n")", "1700000000000"},
      {R"("expiration":" 2023-11-14T23:43:20.25+01:30 ")", "1700000000250"},
      {R"("deadline":"x","request":{"expires_at":9})", "9000"},
  };
  for (const auto& [membres, attendue] : cas)
    EXPECT_EQ(dire(EvenementGateway::lire(R"({"type":"approval.request","id":"i",)" + membres + "}")),
              "approbation|i|||∅|" + attendue)
        << membres;
}

TEST(RequeteGateway, Tour) {
  const RequeteGateway::Tour tour{"http://127.0.0.1:9/v1", "dis \"é\"\xFF", "m", "k", "s1"};
  EXPECT_EQ(RequeteGateway::chat(tour),
            (RequeteHTTP{
                .methode = "POST",
                .url = "http://127.0.0.1:9/v1/chat/completions",
                .entetes = {{"Content-Type", "application/json"},
                            {"Accept", "text/event-stream"},
                            {"X-Hermes-Session-Key", "k"},
                            {"Authorization", "Bearer k"},
                            {"X-Hermes-Session-Id", "s1"}},
                .corps = R"({"messages":[{"content":"dis \"é\"�","role":"user"}],"model":"m","stream":true})",
                .delai = std::chrono::minutes(15)}));
  EXPECT_EQ(RequeteGateway::chat({.base = "http://h/", .message = "", .modele = ""}).url,
            "http://h/chat/completions");

  EXPECT_EQ(RequeteGateway::entetes("", "s1").size(), 3u);
  EXPECT_EQ(RequeteGateway::entetes("k\n", "\x7F").size(), 2u);
}

TEST(RequeteGateway, ModeleEtVerdict) {
  EXPECT_EQ(RequeteGateway::modele({" gpt ", "  "}), "gpt");
  EXPECT_EQ(RequeteGateway::modele({"gpt", "\n moi\t"}), "moi");
  EXPECT_EQ(RequeteGateway::modele({"\r\n", {}}), "hermes");
  EXPECT_EQ(EcritureJSON::compacte(RequeteGateway::corpsVerdict("a", DecisionApprobation::rejeter)),
            R"({"approval_id":"a","approved":false,"decision":"reject","type":"run_approval_response"})");
}

TEST(ReveilGateway, UneDecisionParObservation) {
  using namespace ReveilGateway;
  using E = EchecGateway;
  const auto abandon = [](auto echec) { return Geste{Geste::abandonner{{echec}}}; };
  const Geste sonder{Geste::sonderProcessus{}}, debout{Geste::rienAFaire{}}, lancer{Geste::lancer{}},
      attendre{Geste::attendreSante{6}}, refusee = abandon(E::refusee{}), liaison = abandon(E::liaison{"h"});

  EXPECT_EQ(apresEnv({.cle = "k"}), E{E::serveurDesactive{}});
  EXPECT_EQ(apresEnv({.serveurActif = true, .cle = ""}), E{E::cleIntrouvable{}});
  EXPECT_EQ(apresEnv({.serveurActif = true, .cle = "k"}), std::nullopt);

  const std::pair<std::optional<int>, Geste> sondes[] = {
      {{}, sonder}, {199, sonder}, {200, debout}, {299, debout}, {300, sonder}, {401, refusee}, {403, refusee}};
  for (const auto& [code, attendu] : sondes) EXPECT_EQ(apresSante(code), attendu) << code.value_or(0);

  const std::tuple<std::optional<std::int32_t>, Geste, Geste> sorties[] = {
      {{}, liaison, liaison},
      {0, attendre, attendre},
      {1, lancer, liaison},
      {127, liaison, abandon(E::binaireAbsent{"pas là"})}};
  for (const auto& [ec, pgrep, lancement] : sorties) {
    EXPECT_EQ(apresPgrep(ec, true, "h"), pgrep) << ec.value_or(-1);
    EXPECT_EQ(apresPgrep(ec, false, "h"), liaison) << ec.value_or(-1);
    EXPECT_EQ(apresLancement({ec, " pas là\n", "h"}), lancement) << ec.value_or(-1);
  }
  EXPECT_EQ(apresLancement({127, " \n", "h"}), abandon(E::binaireAbsent{"h"}));
}

}  // namespace
}  // namespace tarnavelle
