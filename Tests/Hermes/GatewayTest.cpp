#include <gtest/gtest.h>

#include <string>

#include "Hermes/Dire.hpp"
#include "Hermes/EvenementGateway.hpp"
#include "Hermes/FluxGateway.hpp"
#include "Hermes/FluxSSE.hpp"
#include "Hermes/RequeteGateway.hpp"
#include "Hermes/ReveilGateway.hpp"
#include "Socle/EcritureJSON.hpp"

namespace tarnavelle {
namespace {

using essai::dire;

TEST(FluxSSE, Lire) {
  const struct {
    std::string ligne, attendu;
  } cas[] = {
      {"data: {}", "charge|{}"},         {"data:{}", "charge|{}"},    {"data: \t a b \u00A0", "charge|a b"},
      {"data: [DONE]", "fin"},           {"data:[DONE] ", "fin"},     {"data: [DONE]x", "charge|[DONE]x"},
      {"data: [done]", "charge|[done]"}, {"data:", "ignorer"},        {"data:    ", "ignorer"},
      {": keep-alive", "ignorer"},       {"event: error", "ignorer"}, {"", "ignorer"},
      {" data: {}", "ignorer"},          {"Data: {}", "ignorer"},     {"data", "ignorer"},
      {"data : {}", "ignorer"},
  };
  for (const auto& c : cas) EXPECT_EQ(dire(FluxSSE::lire(c.ligne)), c.attendu) << c.ligne;
}

const struct {
  std::string charge, attendu;
} evenements[] = {
    {"[]", "rien"},
    {R"({"choices":)", "rien"},
    {"{}", "rien"},
    // Errors come before everything else.
    {R"({"error":"x","choices":[{"delta":{"content":"a"}}]})", "erreur|x"},
    {R"({"error":{"message":"y","code":400},"type":"text","text":"a"})", "erreur|y"},
    {R"({"error":{"message":null}})", "erreur|erreur sans message"},
    {R"({"error":false})", "erreur|erreur sans message"},
    {R"({"error":null,"choices":[{"delta":{"content":"a"}}]})", "texte|a"},
    // Chat completions
    {R"({"choices":[{"delta":{"content":"é\n"}},{"delta":{"content":"b"}}],"object":"c","n":1.5})",
     "texte|é\n"},
    {R"({"choices":[{"delta":{"content":null}}]})", "rien"},
    {R"({"choices":[{"delta":{"content":[{"type":"text","text":"a"}]}}]})", "rien"},
    {R"({"choices":[{"delta":{}}],"session_id":"s"})", "session|s"},
    {R"({"choices":[],"type":"text","text":"t"})", "texte|t"},
    {R"({"choices":[],"type":"tool_call","name":"n"})", "outil|n|∅"},
    {R"({"choices":[{"delta":{"content":"a","tool_calls":[{"function":{"name":"f"}}]}}]})", "texte|a"},
    {R"({"choices":[{"delta":{"tool_calls":[{"function":{"name":null}},{"id":1},{"function":{"name":"g",
         "arguments":"{\"path\":\"/p\"}"}}]}}]})",
     "outil|g|/p"},
    {R"({"choices":[{"delta":{"tool_calls":[{"function":{"name":"f","arguments":{"path":"/q"}}}]}}]})",
     "outil|f|/q"},
    {R"({"choices":[{"delta":{"tool_calls":[{"function":{"name":"f","arguments":"{\"path\": \"."}}]}}]})",
     "outil|f|∅"},
    {R"({"choices":[{"delta":{"tool_calls":[{"function":{"name":"null"}}]}}]})", "outil|null|∅"},
    {R"({"choices":[{"delta":{"tool_calls":[]}}],"session_id":"s"})", "rien"},
    {R"({"choices":[{"delta":{"tool_calls":[{"function":{"arguments":"x"}}]}}],"session_id":"s"})", "rien"},
    {R"({"choices":[{"delta":{"tool_calls":null}}],"session_id":"s"})", "session|s"},
    // A text of its own comes before the calls of a delta.
    {R"({"type":"text","text":"t","choices":[{"delta":{"tool_calls":[]}}]})", "texte|t"},
    {R"({"type":"text","text":null,"content":"c"})", "texte|c"},
    {R"({"type":"text","text":"","conversation_id":"k"})", "session|k"},
    {R"({"type":null,"event":"text","text":"t"})", "texte|t"},
    {R"({"type":"x","event":"text","text":"t"})", "rien"},
    // Tools
    {R"({"type":"tool.start","tool":"lire","input":{"file_path":"/a","path":"/b"}})", "outil|lire|/a"},
    {R"({"type":"tool_use","name":"","tool_name":"n","args":"{\"file\":\"f\"}"})", "outil|n|f"},
    {R"({"type":"tool_call","function":{"name":"f"},"parameters":{"filePath":"","notebook_path":"/n"}})",
     "outil|f|/n"},
    {R"({"type":"tool_call","name":"n","input":null,"arguments":"x","args":{"filename":"f"}})", "outil|n|f"},
    {R"({"type":"tool_call","name":"n","input":{},"arguments":{"path":"/a"}})", "outil|n|∅"},
    {R"({"type":"tool_call","name":null,"session":{"id":"s"}})", "session|s"},
    {R"({"type":"tool_result","name":"n"})", "outilFini|n"},
    {R"({"type":"tool_call_result","function":{"name":"f"}})", "outilFini|f"},
    // Sessions
    {R"({"sessionId":"","hermes_session_id":"h","session":{"id":"s"}})", "session|h"},
    {R"({"session":{"id":"s"}})", "session|s"},
    // Requests for approval
    {R"({"type":"approval.request","id":"i"})", "approbation|i|||∅|∅"},
    {R"({"type":"approval_request","name":"n"})", "rien"},
    {R"({"event":"run_approval_request","id":"e","approval":{"approval_id":"a","tool":"t","title":"T","command":"c",
         "expires_at":1700000000}})",
     "approbation|e|t|T|c|1700000000000"},
    {R"({"type":"approval.request","approval":{"id":""},"request":{"approvalId":"r","reason":"R"},"data":{"id":"d",
         "function":{"name":"f"},"title":"D","args":"A"}})",
     "approbation|r|f|R|A|∅"},
    {R"({"type":"approval.request","id":"i","approval":"a","arguments":{"command":"c"},"details":"d"})",
     "approbation|i|||d|∅"},
    {R"({"type":"approval.request","id":"i","choices":[{"delta":{"content":"a"}}]})", "approbation|i|||∅|∅"},
    // Approvals settled
    {R"({"type":"approval_responded","id":"i","approved":false,"decision":"approve"})", "tranchee|i|non"},
    {R"({"type":"approval.response","id":"i","approved":"yes","status":"pending","action":"DeNied"})",
     "tranchee|i|non"},
    {R"({"type":"approval_response","data":{"id":"i","verdict":"Approuver"}})", "tranchee|i|oui"},
    {R"({"event":"run_approval_response","request":{"id":"i"},"response":{"accepted":true}})",
     "tranchee|i|oui"},
    {R"({"type":"approval.responded","id":"i","result":"no","data":{"allowed":true}})", "tranchee|i|non"},
    {R"({"type":"approval.responded","id":"i","request":{"approved":true}})", "rien"},
    {R"({"type":"approval.responded","id":"i","decision":"maybe"})", "rien"},
    {R"({"type":"approval.responded","approved":true})", "rien"},
};

TEST(EvenementGateway, Lire) {
  for (const auto& c : evenements) EXPECT_EQ(dire(EvenementGateway::lire(c.charge)), c.attendu) << c.charge;
}

TEST(EvenementGateway, Expiration) {
  const struct {
    std::string membres, attendu;
  } cas[] = {
      {R"("expires_at":1700000000.5)", "1700000000500"},
      {R"("expires_at":100000000000)", "100000000000000"},
      {R"("expires_at":100000000001)", "100000000001"},
      {R"("expires_at":1e300)", "9223372036854775807"},
      {R"("expires_at":0,"expiresAt":-5,"expiration":null,"expires":true,"deadline":7)", "7000"},
      {R"("expires_at":"demain","expiresAt":" 1700000000\n")", "1700000000000"},
      {R"("expires":"1700000000123")", "1700000000123"},
      {R"("expiration":"2023-11-14T22:13:20Z")", "1700000000000"},
      {R"("expiration":" 2023-11-14T23:43:20.25+01:30 ")", "1700000000250"},
      {R"("expiration":"2023-11-14T22:13:20")", "∅"},
      {R"("deadline":"x","request":{"expires_at":9})", "9000"},
  };
  for (const auto& c : cas)
    EXPECT_EQ(dire(EvenementGateway::lire(R"({"type":"approval.request","id":"i",)" + c.membres + "}")),
              "approbation|i|||∅|" + c.attendu)
        << c.membres;
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
  const struct {
    std::optional<std::string> annonce, surcharge;
    std::string modele;
  } cas[] = {{" gpt ", "  ", "gpt"}, {"gpt", "\n moi\t", "moi"}, {{}, {}, "hermes"}, {"\r\n", {}, "hermes"}};
  for (const auto& c : cas) EXPECT_EQ(RequeteGateway::modele({c.annonce, c.surcharge}), c.modele);
  EXPECT_EQ(EcritureJSON::compacte(RequeteGateway::corpsVerdict("a", DecisionApprobation::rejeter)),
            R"({"approval_id":"a","approved":false,"decision":"reject","type":"run_approval_response"})");
}

TEST(FluxGateway, SessionRefuseeEtRepli) {
  using E = ErreurFluxGateway;
  for (const int statut : {399, 400, 401, 403, 404, 405, 422, 429, 500})
    EXPECT_EQ(E{E::http{statut}}.sentLaSessionRefusee(), statut == 400 || statut == 404 || statut == 422)
        << statut;
  EXPECT_FALSE((E{E::transport{"x"}}.sentLaSessionRefusee()));
  using D = RepliApresCoupure::Decision;
  EXPECT_EQ(RepliApresCoupure::decider({.aVuDuTexte = true}), D::rejouerEnCLI);
  EXPECT_EQ(RepliApresCoupure::decider({.aVuUnOutil = true}), D::annoncerSeulement);
  EXPECT_EQ(RepliApresCoupure::decider({.aVuUnFeuVert = true}), D::annoncerSeulement);
}

TEST(ReveilGateway, UneDecisionParObservation) {
  using namespace ReveilGateway;
  const auto env = [](bool actif, std::optional<std::string> cle) {
    const auto echec = apresEnv({.serveurActif = actif, .cle = std::move(cle)});
    return echec ? dire(*echec) : "";
  };
  EXPECT_EQ(env(false, {}), "serveurDesactive");
  EXPECT_EQ(env(true, {}), "cleIntrouvable");
  EXPECT_EQ(env(true, ""), "cleIntrouvable");
  EXPECT_EQ(env(true, "k"), "");

  const std::pair<std::optional<int>, const char*> sondes[] = {{{}, "sonder"},      {199, "sonder"},
                                                               {200, "rienAFaire"}, {299, "rienAFaire"},
                                                               {300, "sonder"},     {403, "refusee"}};
  for (const auto& [code, attendu] : sondes) EXPECT_EQ(dire(apresSante(code)), attendu) << code.value_or(0);

  const struct {
    std::optional<std::int32_t> ec;
    std::string pgrep, lancement;
  } sorties[] = {{{}, "liaison|h", "liaison|h"},
                 {0, "sante|6", "sante|6"},
                 {1, "lancer", "liaison|h"},
                 {127, "liaison|h", "binaireAbsent|pas là"},
                 {255, "liaison|h", "liaison|h"}};
  for (const auto& c : sorties) {
    EXPECT_EQ(dire(apresPgrep(c.ec, true, "h")), c.pgrep) << c.ec.value_or(-1);
    EXPECT_EQ(dire(apresPgrep(c.ec, false, "h")), "liaison|h") << c.ec.value_or(-1);
    EXPECT_EQ(dire(apresLancement({c.ec, " pas là\n", "h"})), c.lancement) << c.ec.value_or(-1);
  }
  EXPECT_EQ(dire(apresLancement({127, " \n", "h"})), "binaireAbsent|h");
}

}  // namespace
}  // namespace tarnavelle
