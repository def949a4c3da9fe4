#include "Affichage.hpp"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "Completions.hpp"
#include "Photo.hpp"
#include "Porte/CommandeControle.hpp"
#include "Socle/Colonnes.hpp"

namespace tarnavelle {
namespace {

std::string texte(const Page& page) {
  std::string lignes;
  for (const Ligne& ligne : page) lignes += (ligne.titre ? "#" : "") + ligne.texte + "\n";
  return lignes;
}

TEST(Affichage, Donnees) {
  const std::pair<const char*, const char*> cas[] = {
      {R"("une\ndeux\u001b")", "une\ndeux\\u001b\n"},
      {"{}", "{}\n"},
      {"[1.0,2.5,true,null,\"a\\nb\"]", "1\n2.5\noui\n—\na\\nb\n"},
      {R"({"a":1,"long":["x","y"],"vide":[],"o":{"k":{"l":{"m":{"n":1}}}}})",
       "a     1\nlong  x, y\nvide  —\n\n#o\n\n#  k\n\n#    l\n      m  {\"n\":1}\n"},
      {R"({"agent":"M","texte":"un\n  deux\n"})", "agent  M\n\n#texte\n  un\n    deux\n\n"},
      {R"([{"etat":"x","nom":"漢字","vide":""},{"nom":"e\u0301","z":[1]},{"nom":"a\tb","etat":{"k":1}}])",
       "#nom   etat     z\n漢字  x\n\u0065\u0301              1\na\\tb  {\"k\":1}\n"},
      {R"([{"a":""}])", "—\n"},
  };
  for (const auto& [json, page] : cas)
    EXPECT_EQ(texte(Affichage::exposer(Json::parse(json), {})), page) << json;
}

TEST(Affichage, TableCoupee) {
  const Json table = Json::parse(R"([{"nom":"Merlin","note":")" + std::string(200, 'n') + R"(","w":"abcdefgh"},
                                     {"nom":"漢字漢字","note":"","w":"é"}])");
  for (const std::size_t colonnes : {1u, 20u, 79u}) {
    const auto page = Affichage::exposer({{"t", table}}, colonnes);
    for (const Ligne& ligne : page)
      EXPECT_LE(Colonnes::largeur(ligne.texte), std::max<std::size_t>(colonnes, 2)) << colonnes;
  }
  Json disparate;  // one key a record: as many columns as lines
  for (int i = 0; i < 20'000; ++i) disparate.push_back({{"k" + std::to_string(i), i}});
  EXPECT_EQ(Affichage::exposer(disparate, 80).at(19'999).texte, R"({"k19999":19999})");
  EXPECT_EQ(texte(Affichage::exposer(table, 31)),
            "#nom       note         w\nMerlin    nnnnnnnnnn…  abcdefgh\n漢字漢字               é\n");
}

TEST(Completions, AuCurseur) {
  const auto noms = [](const std::vector<std::string>& mots) {
    const auto agents = [] { return std::vector<std::string>{"Merlin", "Milan 2"}; };
    std::string liste;
    for (const auto& c : Completions::candidats(mots, agents)) liste += c.mot + ",";
    return liste;
  };
  const std::string communes = "--json,--donnees,--help,--version,";
  const std::pair<std::vector<std::string>, std::string> cas[] = {
      {{"lire", ""}, "Merlin,Milan 2,"},
      {{"dicter", "--agent", ""}, "Merlin,Milan 2,"},
      {{"dicter", "--agent=Me"}, "--agent=Merlin,--agent=Milan 2,"},
      {{"dicter", "--agent", "=", "Me"}, "Merlin,Milan 2,"},  // as bash cuts it
      {{"dicter", "--valider="}, "--valider=true,--valider=false,"},
      {{"dicter", "--texte", "--"}, ""},
      {{"dicter", "--agent", "x", "-"}, "--texte,--valider," + communes},
      {{"dicter", "--", "-"}, ""},
      {{"lire_terminal", "-"}, "--agent,--depuis-prompt," + communes},
      {{"focus", ""}, "Merlin,Milan 2,"},
      {{"aller_scene", ""}, ""},
      {{"completions", ""}, "bash,zsh,fish,"},
      {{"-x", "lire", ""}, "Merlin,Milan 2,"},
      {{"porte", "-"}, communes},
      {{"attendre", "--timeout-s", "3", ""}, "Merlin,Milan 2,"},
      {{"--json", "lire", ""}, "Merlin,Milan 2,"},
      {{"etat", "--pourquoi", ""}, "Merlin,Milan 2,"},
      {{"relais", ""}, "Merlin,Milan 2,"},
      {{"relais", "Merlin", ""}, ""},
      {{"relais", "Merlin", "fini", ""}, "Merlin,Milan 2,"},
  };
  for (const auto& [mots, attendus] : cas) EXPECT_EQ(noms(mots), attendus) << testing::PrintToString(mots);
  for (const auto& debut : {std::vector<std::string>{}, {""}, {"et"}, {"aide", ""}}) {
    const auto liste = noms(debut);
    for (const OutilVoix& verbe : CommandeControle::outilsPorte())
      EXPECT_NE(("," + liste).find("," + verbe.nom + ","), std::string::npos) << verbe.nom;
  }
}

TEST(Photo, OuQuElleSoit) {
  const std::string png("\x89PNG\r\n\x1a\n\0", 9);
  const std::string base64 = "iVBORw0KGgoA";
  for (const Json& donnees :
       {Json(base64), Json{{"png", base64}}, Json{{"a", {1, {{"b", "data:image/png;base64," + base64}}}}}})
    EXPECT_EQ(Photo::png(donnees), png) << donnees.dump();
  for (const Json& donnees : {Json(), Json("iVBORw0KGgo*"), Json{{"chemin", "/tmp/x.png"}}})
    EXPECT_EQ(Photo::png(donnees), std::nullopt) << donnees.dump();
}

}  // namespace
}  // namespace tarnavelle
