#include "Porte/PorteMCP.hpp"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "Porte/CommandeControle.hpp"

namespace tarnavelle {
namespace {

TEST(PorteMCP, VerbeDUnOutil) {
  const std::pair<const char*, const char*> cas[] = {
      {"trv_Spawn-Agent", "pondre_agent"}, {" trv_fini", "trv_fini"}, {"trv_trv_fini", "trv_fini"}};
  for (const auto& [outil, verbe] : cas) EXPECT_EQ(PorteMCP::verbe(outil), verbe);
  for (const char* local : {"trv_guide", "guide"}) EXPECT_TRUE(PorteMCP::estLocal(local)) << local;
  for (const char* autre : {"trv_Guide", " guide"}) EXPECT_FALSE(PorteMCP::estLocal(autre)) << autre;
}

TEST(PorteMCP, CorpsDUnAppel) {
  struct {
    const char* outil;
    const char* arguments;
    const char* nodeId;
    const char* corps;
  } const cas[] = {
      {"trv_fini", R"({"agent":" milan "})", "merlin", R"({"action":"fini","agent":" milan "})"},
      {"bloque", R"({"raison":"r","agent":" \u2028"})", "é\n",
       R"({"action":"bloque","agent":"é","raison":"r"})"},
      {"trv_fini", R"({"agent":""})", " \n", R"({"action":"fini","agent":""})"},
      {"trv_x", R"({"action":"fini"})", "merlin", R"({"action":"x"})"},
      {"trv_fini", R"([{"agent":"milan"}])", "merlin", R"({"action":"fini","agent":"merlin"})"},
      {"trv_x", R"("agent")", "merlin", R"({"action":"x"})"},
  };
  for (const auto& c : cas)
    EXPECT_EQ(PorteMCP::ligne(PorteMCP::corpsAppel(c.outil, Json::parse(c.arguments), c.nodeId)), c.corps)
        << c.outil << " " << c.arguments << " " << c.nodeId;
}

// The shortcuts write the very line of the long way, whatever the id.
TEST(PorteMCP, LignesDejaEcrites) {
  const PorteMCP::Identifiant identifiants[] = {
      {}, Json(), UINT64_MAX, 0.5, "\xFF", "a/\n\"é", Json::array({1, {{"b", 2}, {"a", nullptr}}})};
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
