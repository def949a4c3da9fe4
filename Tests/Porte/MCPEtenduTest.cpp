#include "Porte/MCPEtendu.hpp"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "Porte/TableVerbes.hpp"
#include "Socle/EcritureJSON.hpp"

namespace tarnavelle {
namespace {

using MCPEtendu::Version;

std::string cles(const Json& objet) {
  std::string noms;
  for (const auto& [cle, valeur] : objet.items()) noms += cle + " ";
  return noms;
}

TEST(MCPEtendu, ChaqueVersionACeQueSonProtocoleConnait) {
  const std::pair<std::string, std::string> cas[] = {
      {"2024-11-05", "description inputSchema name "},
      {"2025-03-26", "annotations description inputSchema name "},
      {"2025-06-18", "_meta annotations description inputSchema name outputSchema title "},
      {"2025-11-25", "_meta annotations description inputSchema name outputSchema title "}};
  for (const auto& [demandee, attendues] : cas) {
    const auto version = MCPEtendu::negocier(demandee);
    EXPECT_EQ(MCPEtendu::accueil(version)["protocolVersion"], demandee);
    const Json liste = MCPEtendu::outils(version)["tools"];
    EXPECT_EQ(cles(liste[0]), attendues) << demandee;
    EXPECT_EQ(liste.size(), tableVerbes().size() + 1);
    EXPECT_EQ(MCPEtendu::progres("j", std::chrono::seconds(3), {}, version)["params"].contains("message"),
              demandee != "2024-11-05");
  }
  for (const auto inconnue : {"", "2026-07-28", "2024-10-07", "2025-11-25 "})
    EXPECT_EQ(MCPEtendu::negocier(inconnue), MCPEtendu::derniere) << inconnue;
}

// Programs cut what is longer: descriptions and instructions at 2048 characters.
TEST(MCPEtendu, UnOutilDitCeQueDitSaLigne) {
  const Json liste = MCPEtendu::outils(MCPEtendu::derniere)["tools"];
  Json ferme;
  for (const Json& outil : liste) {
    EXPECT_LT(outil["description"].get<std::string>().size(), 2048U) << outil["name"];
    if (outil["name"] == "trv_fermer_tout") ferme = outil;
  }
  EXPECT_LT(MCPEtendu::accueil(MCPEtendu::derniere)["instructions"].get<std::string>().size(), 2048U);
  const std::string fin = "\n\nIn English: Close all windows of the scene, except some. Also: close all.";
  EXPECT_TRUE(ferme["description"].get<std::string>().ends_with(fin)) << ferme["description"];
  ferme.erase("description");
  ferme.erase("inputSchema");
  EXPECT_EQ(
      EcritureJSON::compacte(ferme),
      R"({"_meta":{"anthropic/searchHint":"Close all windows of the scene, except some."},)"
      R"("annotations":{"destructiveHint":true,"idempotentHint":true,"openWorldHint":false,"readOnlyHint":false,)"
      R"("title":"Ferme toutes les fenêtres de la scène, sauf exceptions"},"name":"trv_fermer_tout",)"
      R"("outputSchema":{"properties":{"data":{"properties":{"ferme":{"type":"array"}},"type":"object"},)"
      R"("error":{"description":"Pourquoi la porte refuse.","type":"string"},)"
      R"("ok":{"description":"false pour un refus, que dit error.","type":"boolean"},)"
      R"("spoken_text":{"description":"Ce qui s'est passé, en une phrase.","type":"string"}},)"
      R"("required":["ok"],"type":"object"},"title":"Ferme toutes les fenêtres de la scène, sauf exceptions"})");
}

TEST(MCPEtendu, UnEcranSeRendEnLignesEtLeResteAussiEnStructure) {
  const PorteMCP::ResultatAppel ecran{
      .corpsJSON = R"({"ok":true,"data":{"agent":"Milan","texte":"a\nb"}})", .ok = true, .objet = true};
  const PorteMCP::ResultatAppel sautee{
      .corpsJSON = "{\"ok\":true,\r\n \"data\":{}}", .ok = true, .objet = true};
  const PorteMCP::ResultatAppel brute{.corpsJSON = "oups", .ok = false};
  struct Cas {
    const PorteMCP::ResultatAppel& appel;
    const char* outil;
    Version version;
    std::string attendu;
  };
  const std::string tel =
      R"({"content":[{"text":"{\"ok\":true,\r\n \"data\":{}}","type":"text"}],"isError":false)";
  const Cas cas[] = {
      {ecran, "trv_lire", MCPEtendu::derniere,
       R"({"content":[{"text":"{\"data\":{\"agent\":\"Milan\"},\"ok\":true}\n\na\nb","type":"text"}],"isError":false})"},
      {sautee, "trv_read-terminal", MCPEtendu::derniere, tel + "}"},
      {sautee, "trv_etat", Version::v2025_06_18, tel + R"(,"structuredContent":{"ok":true,   "data":{}}})"},
      {sautee, "trv_etat", Version::v2025_03_26, tel + "}"},
      {sautee, "trv_commande", MCPEtendu::derniere, tel + "}"},
      {sautee, "trv_inconnu", MCPEtendu::derniere, tel + "}"},
      {brute, "trv_etat", MCPEtendu::derniere, R"({"content":[{"text":"oups","type":"text"}],"isError":true})"},
  };
  for (const auto& [appel, outil, version, attendu] : cas)
    EXPECT_EQ(MCPEtendu::resultatAppel(appel, MCPEtendu::ligne(outil), version), attendu) << outil;
}

}  // namespace
}  // namespace tarnavelle
