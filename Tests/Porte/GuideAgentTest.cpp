#include "Porte/GuideAgent.hpp"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "Porte/CommandeControle.hpp"
#include "Porte/PorteMCP.hpp"
#include "Socle/Fichiers.hpp"

namespace tarnavelle {
namespace {

using GuideAgent::Contexte;

const Environnement tout = {{"TARNAVELLE_CONTROL_URL", " http://127.0.0.1:5000/action "},
                            {"TARNAVELLECTL", "\t/opt/tarnavellectl\n"},
                            {"TARNAVELLE_MCP_SERVER", "/opt/tarnavelle-mcp"},
                            {"TARNAVELLE_NODE_ID", "merlin\u00A0"},
                            {"TARNAVELLE_SCENE", " Atelier"},
                            {"TARNAVELLE_AGENT_GUIDE", "/tmp/guide-7.md"},
                            {"TARNAVELLE_MCP_CONFIG", "/tmp/mcp.json"},
                            {"TARNAVELLE_CONTROL_TOKEN", "secret"}};

void remplacer(std::string& texte, const std::string& morceau, const std::string& autre = "") {
  ASSERT_NE(texte.find(morceau), std::string::npos) << morceau;
  texte.replace(texte.find(morceau), morceau.size(), autre);
}

// The golden document is the whole guide, the tools' lines apart: they come from the table.
TEST(GuideAgent, DocumentEntierPuisSansRien) {
  std::string attendu = lireFichier(GUIDE_ATTENDU, 1 << 20).value();
  std::string outils;
  for (const OutilVoix& verbe : CommandeControle::outilsPorte())
    outils += "- `trv_" + verbe.nom + "` : " + verbe.description + "\n";
  remplacer(attendu, "{un outil par ligne}\n", outils);
  EXPECT_EQ(GuideAgent::markdown(Contexte::depuisEnvironnement(tout, {"ctl", "mcp"})), attendu);

  remplacer(attendu, " La scène courante s'appelle « Atelier ».");
  remplacer(attendu, "\nLa même config est déjà écrite dans `$TARNAVELLE_MCP_CONFIG`.");
  const auto variables = attendu.find("- `TARNAVELLE_CONTROL_URL=");
  attendu.replace(variables, attendu.find("\n\n", variables) - variables,
                  "- (aucune variable de contrôle dans cet environnement : la porte est fermée, ou tu n'as pas "
                  "été lancé par le cockpit.)");
  EXPECT_EQ(GuideAgent::markdown({}), attendu);
}

TEST(GuideAgent, ContexteDeLEnvironnement) {
  // The defaults are taken as they are, also for a variable that holds nothing.
  Contexte defauts;
  defauts.binaireCtl = " ctl ";
  defauts.binaireMCP = "./mcp";
  const Environnement vides = {{"TARNAVELLECTL", " \n"}, {"TARNAVELLE_SCENE", "\u2028"}};
  EXPECT_TRUE(Contexte::depuisEnvironnement(vides, {" ctl ", "./mcp"}) == defauts);

  const std::pair<const char*, const char*> urls[] = {
      {"/action", ""}, {"http://h/action/action", "http://h/action"}, {"http://h/action/", "http://h/action/"}};
  for (const auto& [url, base] : urls)
    EXPECT_EQ(Contexte::depuisEnvironnement({{"TARNAVELLE_CONTROL_URL", url}}, {}).urlControle, base) << url;
  EXPECT_EQ(GuideAgent::nomFichier("a b"), "guide-a b.md");
}

}  // namespace
}  // namespace tarnavelle
