// The values and the conditions. That parsers of other makers read them alike is proven by the client's tests.
#include "Agents/InjectionPorte.hpp"

#include <gtest/gtest.h>

namespace tarnavelle {
namespace {

using namespace InjectionPorte;

const Porte complete{.url = "http://127.0.0.1:4242/", .token = "jé\"ton", .nodeId = "tuile\n7"};

TEST(InjectionPorte, Arguments) {
  const std::string config = "/tmp/l'atelier/mcp.json";
  const std::string pont = "/opt/mon pont";
  const std::string commande = R"(mcp_servers.tarnavelle.command="/opt/mon pont")";
  const std::string url = R"(mcp_servers.tarnavelle.env.TARNAVELLE_CONTROL_URL="http://127.0.0.1:4242/")";
  const std::string token = R"(mcp_servers.tarnavelle.env.TARNAVELLE_CONTROL_TOKEN="jé\"ton")";
  const std::string noeud = R"(mcp_servers.tarnavelle.env.TARNAVELLE_NODE_ID="tuile\n7")";
  Porte sansJeton = complete;
  sansJeton.token.clear();
  const std::pair<Lancement, std::vector<std::string>> cas[] = {
      {{AgentCLI::claude(), true, config, pont, complete}, {"--mcp-config", config}},
      {{AgentCLI::claude(), true, "", pont, complete}, {}},
      {{AgentCLI::codex(), true, "", pont, complete}, {"-c", commande, "-c", url, "-c", token, "-c", noeud}},
      {{AgentCLI::codex(), true, config, pont, sansJeton}, {"-c", commande, "-c", url, "-c", noeud}},
      {{AgentCLI::codex(), true, config, "", complete}, {}},
      {{AgentCLI::codex(), false, config, pont, complete}, {}},
      {{AgentCLI::grok(), true, config, pont, complete}, {}},
  };
  for (const auto& [c, attendus] : cas)
    EXPECT_EQ(arguments(c), attendus) << c.cli.id << " " << c.actif << " " << c.cheminConfig;
}

TEST(InjectionPorte, Variables) {
  const Environnement toutes = {{"TARNAVELLE_CONTROL_TOKEN", complete.token},
                                {"TARNAVELLE_CONTROL_URL", complete.url},
                                {"TARNAVELLE_NODE_ID", complete.nodeId}};
  EXPECT_EQ(envPipe(complete), toutes);
  EXPECT_EQ(envPipe({.url = "u"}), (Environnement{{"TARNAVELLE_CONTROL_URL", "u"}}));
  EXPECT_EQ(envPipe({.etendu = true}), (Environnement{{"TARNAVELLE_MCP_ETENDU", "1"}}));
  for (const AgentCLI& cli : AgentCLI::tous()) {
    const bool parle = cli.id == "claude" || cli.id == "codex";
    EXPECT_EQ(parleMCP(cli), parle) << cli.id;
    EXPECT_EQ(environnement(cli, true, complete), parle ? toutes : Environnement{}) << cli.id;
    EXPECT_EQ(environnement(cli, false, complete), Environnement{}) << cli.id;
  }
}

TEST(InjectionPorte, FichierDeConfiguration) {
  EXPECT_EQ(configLigne("/opt/l'é \"pont\"", complete), R"({
  "mcpServers" : {
    "tarnavelle" : {
      "args" : [],
      "command" : "/opt/l'é \"pont\"",
      "env" : {
        "TARNAVELLE_CONTROL_TOKEN" : "jé\"ton",
        "TARNAVELLE_CONTROL_URL" : "http://127.0.0.1:4242/",
        "TARNAVELLE_NODE_ID" : "tuile\n7"
      }
    }
  }
})");
  EXPECT_EQ(configLigne("/pont\xFF", complete), "{}");
}

}  // namespace
}  // namespace tarnavelle
