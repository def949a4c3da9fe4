#include "Porte/PorteMCP.hpp"

#include <gtest/gtest.h>

#include <string>

#include "Porte/CommandeControle.hpp"

namespace tarnavelle {
namespace {

TEST(PorteMCP, ListeDansLOrdreDeLaTable) {
  const Json liste = PorteMCP::reponseListe(7)["result"]["tools"];
  const auto& verbes = CommandeControle::outilsPorte();
  ASSERT_EQ(liste.size(), verbes.size() + 1);
  for (std::size_t i = 0; i < verbes.size(); ++i) EXPECT_EQ(liste[i], PorteMCP::outil(verbes[i]));
  EXPECT_EQ(liste.back()["name"], "trv_guide");
}

TEST(PorteMCP, VerbeDUnOutil) {
  struct {
    const char* outil;
    const char* verbe;
    bool local;
  } const cas[] = {
      {"trv_guide", "guide", true},         {"trv_Guide", "guide", false},
      {" guide", "guide", false},           {"trv_Spawn-Agent", "pondre_agent", false},
      {"trv_ \u00A0Fini\n", "fini", false}, {" trv_fini", "trv_fini", false},
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
      {"trv_fini", R"({"agent":" milan "})", "merlin", R"({"action":"fini","agent":" milan "})"},
      {"bloque", R"({"raison":"r","agent":" \u2028"})", "é\n",
       R"({"action":"bloque","agent":"é","raison":"r"})"},
      {"bloque", R"({"agent":null})", "merlin", R"({"action":"bloque","agent":"merlin"})"},
      {"trv_fini", R"({"agent":""})", " \n", R"({"action":"fini","agent":""})"},
      {"trv_focus", R"({"cible":"x"})", "merlin", R"({"action":"focus","cible":"x"})"},
      {"trv_x", R"({"action":"fini"})", "merlin", R"({"action":"x"})"},
  };
  for (const auto& c : cas)
    EXPECT_EQ(PorteMCP::ligne(PorteMCP::corpsAppel(c.outil, Json::parse(c.arguments), c.nodeId)), c.corps)
        << c.outil << " " << c.arguments << " " << c.nodeId;
  EXPECT_EQ(PorteMCP::corpsAppel("trv_fini", Json::object()), Json({{"action", "fini"}}));
}

// The shortcuts write the very line of the long way, whatever the id.
TEST(PorteMCP, LignesDejaEcrites) {
  const PorteMCP::Identifiant identifiants[] = {{},  Json(),    UINT64_MAX,
                                                0.5, "a/\n\"é", Json::array({1, {{"b", 2}, {"a", nullptr}}})};
  for (const auto& id : identifiants) {
    EXPECT_EQ(PorteMCP::ligneListe(id), PorteMCP::ligne(PorteMCP::reponseListe(id)));
    for (const std::string texte : {"", "{\"ok\":true}\n", "é\x01\\", "\xFF"})
      EXPECT_EQ(PorteMCP::ligneAppel(id, {.corpsJSON = texte, .ok = texte.empty()}),
                PorteMCP::ligne(PorteMCP::resultat(id, PorteMCP::contenuAppel(texte, texte.empty()))));
    EXPECT_EQ(PorteMCP::ligneResultat(id, "{}"), PorteMCP::ligne(PorteMCP::resultat(id, Json::object())));
  }
}

}  // namespace
}  // namespace tarnavelle
