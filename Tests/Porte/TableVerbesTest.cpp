#include "Porte/TableVerbes.hpp"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "Porte/PorteMCP.hpp"
#include "Socle/EcritureJSON.hpp"

namespace tarnavelle {
namespace {

using Genre = ParamVoix::Genre;

/// A name that shadows another is a duplicate; two verbs of one case would be a confusion.
TEST(TableVerbes, NomsEtAliasSansDoublonNiConfusion) {
  std::set<std::string_view> noms;
  std::set<std::size_t> cas;
  for (const LigneVerbe& ligne : tableVerbes()) {
    EXPECT_TRUE(noms.insert(ligne.outil.nom).second) << ligne.outil.nom;
    EXPECT_EQ(CommandeControle::canonique(ligne.outil.nom), ligne.outil.nom);
    EXPECT_TRUE(cas.insert(CommandeControle::decoder(ligne.outil.nom, "{}").cas.index()).second);
    for (const auto alias : ligne.alias) {
      EXPECT_TRUE(noms.insert(alias).second) << alias;
      EXPECT_EQ(CommandeControle::normaliserAction(alias), alias);
      EXPECT_EQ(CommandeControle::canonique(alias), ligne.outil.nom);
    }
  }
  EXPECT_EQ(CommandeControle::outilsPorte().size(), 33u);
  EXPECT_EQ(CommandeControle::aliasEN().size(), 36u);
  EXPECT_EQ(noms.size(), 33u + 36u);
}

// What is published is what is read: each declared argument changes the command, alone.
TEST(TableVerbes, ChaqueParametreDeclareEstLu) {
  for (const OutilVoix& outil : CommandeControle::outilsPorte()) {
    std::set<std::string_view> noms;
    for (const ParamVoix& p : outil.parametres) {
      EXPECT_TRUE(noms.insert(p.nom).second) << outil.nom << "." << p.nom;
      const auto change = [&](const Json& valeur) {
        return CommandeControle::decoderObjet(outil.nom, {{p.nom, valeur}}) !=
               CommandeControle::decoderObjet(outil.nom, Json::object());
      };
      const bool lu = p.genre == Genre::texte ? change("7") : change(true) != change(false);
      EXPECT_EQ(lu, p.nom != "format") << outil.nom << "." << p.nom;
    }
  }
}

TEST(OutilVoix, OutilDeFonction) {
  const OutilVoix outil{
      .nom = "essai",
      .description = "Un essai.",
      .parametres = {
          {"c", Genre::texte, "C", false}, {"b", Genre::booleen, "B", true}, {"a", Genre::texte, "A", true}}};
  EXPECT_EQ(
      EcritureJSON::compacte(outil.json()),
      R"({"description":"Un essai.","name":"essai","parameters":{"properties":{)"
      R"("a":{"description":"A","type":"string"},"b":{"description":"B","type":"boolean"},)"
      R"("c":{"description":"C","type":"string"}},"required":["b","a"],"type":"object"},"type":"function"})");
  EXPECT_EQ(PorteMCP::outil(outil),
            Json({{"name", "trv_essai"}, {"description", "Un essai."}, {"inputSchema", outil.schema()}}));
  EXPECT_EQ(EcritureJSON::compacte(PorteMCP::outilGuide().schema()),
            R"({"properties":{},"required":[],"type":"object"})");
  // A required text is served before an optional one that stands ahead of it.
  EXPECT_EQ(outil.arguments({{"x", "y"}, {}, {}}), Json({{"a", "x"}, {"c", "y"}}));
  EXPECT_EQ(genreDepuis("boolean"), Genre::booleen);
  EXPECT_EQ(genreDepuis("String"), std::nullopt);
}

}  // namespace
}  // namespace tarnavelle
