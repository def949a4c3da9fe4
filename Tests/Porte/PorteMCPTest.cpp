#include "Porte/PorteMCP.hpp"

#include <gtest/gtest.h>

#include <string>

#include "Porte/CommandeControle.hpp"

namespace tarnavelle {
namespace {

using Genre = ParamVoix::Genre;

TEST(PorteMCP, OutilPublie) {
  const OutilVoix verbe{.nom = "essai",
                        .description = "Un « essai ».",
                        .parametres = {{"b", Genre::booleen, "Deuxième", true},
                                       {"c", Genre::texte, "Troisième", true},
                                       {"a", Genre::texte, "Premier", false}}};
  EXPECT_EQ(PorteMCP::ligne(PorteMCP::outil(verbe)),
            R"({"description":"Un « essai ».","inputSchema":{"properties":{)"
            R"("a":{"description":"Premier","type":"string"},"b":{"description":"Deuxième","type":"boolean"},)"
            R"("c":{"description":"Troisième","type":"string"}},"required":["b","c"],"type":"object"},)"
            R"("name":"trv_essai"})");
}

TEST(PorteMCP, ListeDansLOrdreDeLaTable) {
  const Json liste = PorteMCP::reponseListe(7)["result"]["tools"];
  const auto& verbes = CommandeControle::outilsPorte();
  ASSERT_EQ(liste.size(), verbes.size() + 1);
  for (std::size_t i = 0; i < verbes.size(); ++i) EXPECT_EQ(liste[i], PorteMCP::outil(verbes[i]));
  EXPECT_EQ(liste.back()["name"], "trv_guide");
  EXPECT_EQ(PorteMCP::ligne(liste.back()["inputSchema"]), R"({"properties":{},"required":[],"type":"object"})");
}

TEST(PorteMCP, VerbeDUnOutil) {
  struct {
    const char* outil;
    const char* verbe;
    bool local;
  } const cas[] = {
      {"trv_guide", "guide", true},     {"guide", "guide", true},
      {"trv_Guide", "guide", false},    {"TRV_guide", "trv_guide", false},
      {" guide", "guide", false},       {"trv_trv_guide", "trv_guide", false},
      {"guide ", "guide", false},       {"trv_", "", false},
      {"trv_focus", "focus", false},    {"trv_Spawn-Agent", "pondre_agent", false},
      {"close", "fermer", false},       {"trv_ \u00A0Fini\n", "fini", false},
      {" trv_fini", "trv_fini", false}, {"trv_inconnu", "inconnu", false},
  };
  for (const auto& c : cas) {
    EXPECT_EQ(PorteMCP::verbe(c.outil), c.verbe) << c.outil;
    EXPECT_EQ(PorteMCP::estLocal(c.outil), c.local) << c.outil;
  }
}

TEST(PorteMCP, CorpsDUnAppel) {
  struct {
    const char* outil;
    const char* arguments;
    const char* nodeId;
    const char* corps;
  } const cas[] = {
      {"trv_Fini", "{}", "  merlin ", R"({"action":"fini","agent":"merlin"})"},
      {"trv_fini", R"({"agent":"milan"})", "merlin", R"({"action":"fini","agent":"milan"})"},
      {"trv_fini", R"({"agent":" milan "})", "merlin", R"({"action":"fini","agent":" milan "})"},
      {"bloque", R"({"raison":"r","agent":" \u2028"})", "é\n",
       R"({"action":"bloque","agent":"é","raison":"r"})"},
      {"bloque", R"({"agent":null})", "merlin", R"({"action":"bloque","agent":"merlin"})"},
      {"bloque", R"({"agent":["milan"]})", "merlin", R"({"action":"bloque","agent":"merlin"})"},
      {"trv_Pipe-Blocked", "{}", "merlin", R"({"action":"bloque","agent":"merlin"})"},
      {"trv_fini", R"({"agent":""})", " \n", R"({"action":"fini","agent":""})"},
      {"trv_fini", "{}", "", R"({"action":"fini"})"},
      {"trv_focus", R"({"cible":"x"})", "merlin", R"({"action":"focus","cible":"x"})"},
      {"trv_x", R"({"action":"fermer"})", "merlin", R"({"action":"x"})"},
      {"trv_x", R"({"action":"fini"})", "merlin", R"({"action":"x"})"},
      {"trv_fini", R"({"action":7})", "merlin", R"({"action":"fini","agent":"merlin"})"},
  };
  for (const auto& c : cas)
    EXPECT_EQ(PorteMCP::ligne(PorteMCP::corpsAppel(c.outil, Json::parse(c.arguments), c.nodeId)), c.corps)
        << c.outil << " " << c.arguments << " " << c.nodeId;
  EXPECT_EQ(PorteMCP::corpsAppel("trv_fini", Json::object()), Json({{"action", "fini"}}));
}

TEST(PorteMCP, Lignes) {
  using PorteMCP::CodeErreur;
  EXPECT_EQ(PorteMCP::ligne(PorteMCP::reponseInitialize(1)),
            R"({"id":1,"jsonrpc":"2.0","result":{"capabilities":{"tools":{}},"protocolVersion":"2024-11-05",)"
            R"("serverInfo":{"name":"tarnavelle-mcp","version":"1.0.0"}}})");
  EXPECT_EQ(PorteMCP::ligne(PorteMCP::erreur({}, CodeErreur::illisible, "JSON illisible")),
            R"({"error":{"code":-32700,"message":"JSON illisible"},"id":null,"jsonrpc":"2.0"})");
  EXPECT_EQ(PorteMCP::ligne(PorteMCP::erreur("a", CodeErreur::methodeInconnue, "é/\"")),
            R"({"error":{"code":-32601,"message":"é/\""},"id":"a","jsonrpc":"2.0"})");
  EXPECT_EQ(PorteMCP::ligne(PorteMCP::contenuAppel("{\"ok\":true}\n", true)),
            R"({"content":[{"text":"{\"ok\":true}\n","type":"text"}],"isError":false})");
  EXPECT_EQ(PorteMCP::ligne(PorteMCP::refus("Non.")), R"({"error":"Non.","ok":false})");
  EXPECT_EQ(PorteMCP::ligne(PorteMCP::contenuAppel("\xFF", false)), "{}");
}

// The shortcuts write the very line of the long way, whatever the id.
TEST(PorteMCP, LignesDejaEcrites) {
  const PorteMCP::Identifiant identifiants[] = {{},
                                                Json(),
                                                7,
                                                -1,
                                                UINT64_MAX,
                                                0.5,
                                                "a/\n\"é",
                                                "",
                                                true,
                                                Json::array({1, {{"b", 2}, {"a", nullptr}}}),
                                                Json::object()};
  for (const auto& id : identifiants) {
    EXPECT_EQ(PorteMCP::ligneListe(id), PorteMCP::ligne(PorteMCP::reponseListe(id)));
    for (const std::string texte : {"", "{\"ok\":true}\n", "é\x01\\", "\xFF"})
      EXPECT_EQ(PorteMCP::ligneAppel(id, {.corpsJSON = texte, .ok = texte.empty()}),
                PorteMCP::ligne(PorteMCP::resultat(id, PorteMCP::contenuAppel(texte, texte.empty()))));
    EXPECT_EQ(PorteMCP::ligneResultat(id, "{}"), PorteMCP::ligne(PorteMCP::resultat(id, Json::object())));
  }
  EXPECT_EQ(PorteMCP::ligneResultat({}, "{}"), R"({"id":null,"jsonrpc":"2.0","result":{}})");
}

}  // namespace
}  // namespace tarnavelle
