#include "Porte/GuideAgent.hpp"

#include <gtest/gtest.h>

#include <string>

#include "Porte/CommandeControle.hpp"
#include "Porte/PorteMCP.hpp"
#include "Socle/Fichiers.hpp"

namespace tarnavelle {
namespace {

using GuideAgent::Contexte;

const Contexte complet{.urlControle = "http://127.0.0.1:5000",
                       .binaireCtl = "/opt/tarnavellectl",
                       .binaireMCP = "/opt/tarnavelle-mcp",
                       .nodeId = "merlin",
                       .scene = "Atelier",
                       .cheminGuide = "/tmp/guide-7.md",
                       .cheminConfigMCP = "/tmp/mcp.json"};

// The golden document is the whole guide, the tools' lines apart: they come from the table.
TEST(GuideAgent, DocumentEntier) {
  std::string attendu = lireFichier(GUIDE_ATTENDU, 1 << 20).value();
  std::string outils;
  for (const OutilVoix& verbe : CommandeControle::outilsPorte())
    outils += "- `trv_" + verbe.nom + "` : " + verbe.description + "\n";
  const std::string repere = "{un outil par ligne}\n";
  attendu.replace(attendu.find(repere), repere.size(), outils);
  EXPECT_EQ(GuideAgent::markdown(complet), attendu);
}

TEST(GuideAgent, SansRien) {
  std::string attendu = GuideAgent::markdown(complet);
  const auto oter = [&](const std::string& morceau, const std::string& remplace = "") {
    ASSERT_NE(attendu.find(morceau), std::string::npos) << morceau;
    attendu.replace(attendu.find(morceau), morceau.size(), remplace);
  };
  oter(" La scène courante s'appelle « Atelier ».");
  oter("\nLa même config est déjà écrite dans `$TARNAVELLE_MCP_CONFIG`.");
  oter("- `TARNAVELLECTL=/opt/tarnavellectl`\n");
  oter("- `TARNAVELLE_MCP_SERVER=/opt/tarnavelle-mcp`\n");
  oter("- `TARNAVELLE_NODE_ID=merlin`\n");
  oter("- `TARNAVELLE_AGENT_GUIDE=/tmp/guide-7.md`\n");
  oter("- `TARNAVELLE_MCP_CONFIG=/tmp/mcp.json`\n");
  oter("- `TARNAVELLE_CONTROL_URL=http://127.0.0.1:5000`\n",
       "- (aucune variable de contrôle dans cet environnement : la porte est fermée, ou tu n'as pas été lancé "
       "par "
       "le cockpit.)\n");
  EXPECT_EQ(GuideAgent::markdown({}), attendu);
}

TEST(GuideAgent, ContexteDeLEnvironnement) {
  const Environnement tout = {{"TARNAVELLE_CONTROL_URL", " http://127.0.0.1:5000/action "},
                              {"TARNAVELLECTL", "\t/opt/tarnavellectl\n"},
                              {"TARNAVELLE_MCP_SERVER", "/opt/tarnavelle-mcp"},
                              {"TARNAVELLE_NODE_ID", "merlin\u00A0"},
                              {"TARNAVELLE_SCENE", " Atelier"},
                              {"TARNAVELLE_AGENT_GUIDE", "/tmp/guide-7.md"},
                              {"TARNAVELLE_MCP_CONFIG", "/tmp/mcp.json"},
                              {"TARNAVELLE_CONTROL_TOKEN", "secret"}};
  EXPECT_TRUE(Contexte::depuisEnvironnement(tout, {"ctl", "mcp"}) == complet);
  EXPECT_EQ(GuideAgent::markdown(Contexte::depuisEnvironnement(tout, {})).find("secret"), std::string::npos);

  // The defaults are taken as they are, also for a variable that holds nothing.
  const Contexte defauts{.urlControle = {},
                         .binaireCtl = " ctl ",
                         .binaireMCP = "./mcp",
                         .nodeId = {},
                         .scene = {},
                         .cheminGuide = {},
                         .cheminConfigMCP = {}};
  EXPECT_TRUE(Contexte::depuisEnvironnement({}, {" ctl ", "./mcp"}) == defauts);
  EXPECT_TRUE(Contexte::depuisEnvironnement({{"TARNAVELLECTL", " \n"}, {"TARNAVELLE_SCENE", "\u2028"}},
                                            {" ctl ", "./mcp"}) == defauts);

  struct {
    const char* url;
    const char* base;
  } const urls[] = {{"/action", ""},
                    {"http://h/action/action", "http://h/action"},
                    {"http://h/action/", "http://h/action/"},
                    {"http://h/Action", "http://h/Action"}};
  for (const auto& c : urls)
    EXPECT_EQ(Contexte::depuisEnvironnement({{"TARNAVELLE_CONTROL_URL", c.url}}, {}).urlControle, c.base)
        << c.url;
}

// A value is shown letter for letter; the guide still becomes one line of valid JSON.
TEST(GuideAgent, ValeursHostiles) {
  const std::string hostile = "`\n## Règles\n\"\\\x01« $(id) %s";
  const auto guide = GuideAgent::markdown({.urlControle = {},
                                           .binaireCtl = {},
                                           .binaireMCP = {},
                                           .nodeId = hostile,
                                           .scene = hostile,
                                           .cheminGuide = {},
                                           .cheminConfigMCP = {}});
  EXPECT_NE(guide.find("\n- `TARNAVELLE_NODE_ID=" + hostile + "`\n\n`TARNAVELLE_CONTROL_TOKEN`"),
            std::string::npos);
  EXPECT_NE(guide.find("mémoire partagée. La scène courante s'appelle « " + hostile + " ».\n\nSers-toi"),
            std::string::npos);
  const auto ligne = PorteMCP::ligne(PorteMCP::contenuAppel(guide, true));
  EXPECT_EQ(ligne.find('\n'), std::string::npos);
  EXPECT_EQ(LectureJSON::objet(ligne).value()["content"][0]["text"], guide);
}

TEST(GuideAgent, NomDeFichier) { EXPECT_EQ(GuideAgent::nomFichier("a b"), "guide-a b.md"); }

}  // namespace
}  // namespace tarnavelle
