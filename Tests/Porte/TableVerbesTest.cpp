#include "Porte/TableVerbes.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>

#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

using Genre = ParamVoix::Genre;

std::size_t occurrences(std::string_view texte, std::string_view motif) {
  std::size_t n = 0;
  for (auto i = texte.find(motif); i != std::string_view::npos; i = texte.find(motif, i + motif.size())) ++n;
  return n;
}

TEST(TableVerbes, NomsEtAliasSansDoublonNiConfusion) {
  std::set<std::string_view> noms;
  for (const LigneVerbe& ligne : tableVerbes()) {
    EXPECT_TRUE(noms.insert(ligne.outil.nom).second) << ligne.outil.nom;
    EXPECT_EQ(CommandeControle::normaliserAction(ligne.outil.nom), ligne.outil.nom);
  }
  EXPECT_EQ(noms.size(), 33u);

  // Aliases join the verbs' names: one that shadows a verb or another alias is a duplicate there.
  for (const LigneVerbe& ligne : tableVerbes())
    for (const auto alias : ligne.alias) {
      EXPECT_TRUE(noms.insert(alias).second) << alias;
      EXPECT_EQ(CommandeControle::normaliserAction(alias), alias);
      EXPECT_EQ(CommandeControle::canonique(alias), ligne.outil.nom);
    }
  EXPECT_EQ(CommandeControle::aliasEN().size(), 36u);
  EXPECT_EQ(noms.size(), 33u + 36u);
}

TEST(TableVerbes, ChaqueVerbeDonneSonPropreCas) {
  std::set<std::size_t> cas;
  for (const OutilVoix& outil : CommandeControle::outilsPorte()) {
    const auto commande = CommandeControle::decoder(outil.nom, "{}");
    EXPECT_FALSE(std::holds_alternative<CommandeControle::inconnue>(commande.cas)) << outil.nom;
    EXPECT_TRUE(cas.insert(commande.cas.index()).second) << outil.nom;
  }
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

TEST(TableVerbes, DescriptionsALaLongueurConvenue) {
  const std::map<std::string_view, std::size_t> longueurs = {
      {"aller_scene", 222},     {"dicter", 381},      {"ouvrir_agent", 218}, {"ouvrir_web", 218},
      {"capture", 391},         {"capture_web", 325}, {"diffuser", 320},     {"fini", 368},
      {"postit", 306},          {"nommer_zone", 320}, {"script", 409},       {"relancer_agent", 436},
      {"ouvrir_chat", 412},     {"attendre", 660},    {"message_chat", 477}, {"ranger", 623},
      {"envoyer_touches", 590}, {"nommage", 738},     {"fermer", 513},       {"fermer_tout", 374}};
  for (const auto& [nom, longueur] : longueurs) {
    const OutilVoix* outil = CommandeControle::outil(nom);
    ASSERT_NE(outil, nullptr) << nom;
    EXPECT_EQ(Texte::caracteres(outil->description), longueur) << nom;
  }
}

// Model services and terminals show these texts as they are: one kind of apostrophe and of space.
TEST(TableVerbes, TypographieDesTextes) {
  const auto verifier = [](std::string_view texte) {
    for (const char* proscrit : {"’", "“", "”", "\u00A0", "\u202F", "\n", "  ", " ,"})
      EXPECT_EQ(texte.find(proscrit), std::string_view::npos) << proscrit << " : " << texte;
    EXPECT_EQ(occurrences(texte, "« "), occurrences(texte, " »")) << texte;
    EXPECT_EQ(occurrences(texte, "«"), occurrences(texte, "« ")) << texte;
    EXPECT_EQ(occurrences(texte, "("), occurrences(texte, ")")) << texte;
  };
  for (const OutilVoix& outil : CommandeControle::outilsPorte()) {
    verifier(outil.description);
    for (const ParamVoix& p : outil.parametres) verifier(p.description);
  }
}

TEST(OutilVoix, OutilDeFonction) {
  const OutilVoix outil{.nom = "essai",
                        .description = "Un essai.",
                        .parametres = {{"b", Genre::booleen, "Deuxième", true},
                                       {"a", Genre::texte, "Premier", false},
                                       {"c", Genre::texte, "Troisième", true}}};
  EXPECT_EQ(outil.json(), Json::parse(R"({
    "type": "function", "name": "essai", "description": "Un essai.",
    "parameters": {
      "type": "object",
      "properties": {"a": {"type": "string", "description": "Premier"},
                     "b": {"type": "boolean", "description": "Deuxième"},
                     "c": {"type": "string", "description": "Troisième"}},
      "required": ["b", "c"]}})"));
  EXPECT_EQ(CommandeControle::outil("taches")->schema(),
            Json::parse(R"({"type": "object", "properties": {}, "required": []})"));
  EXPECT_EQ(CommandeControle::outil("attendre")->json()["parameters"]["required"], Json({"agent"}));
}

TEST(OutilVoix, GenresParLeurValeurBrute) {
  for (const auto genre : {Genre::texte, Genre::booleen}) EXPECT_EQ(genreDepuis(valeurBrute(genre)), genre);
  EXPECT_EQ(genreDepuis("string"), Genre::texte);
  EXPECT_EQ(genreDepuis("boolean"), Genre::booleen);
  for (const char* autre : {"", "String", "texte", "number", " boolean"})
    EXPECT_EQ(genreDepuis(autre), std::nullopt) << autre;
}

TEST(TableVerbes, OutilParSonNomExact) {
  ASSERT_NE(CommandeControle::outil("fermer_tout"), nullptr);
  EXPECT_EQ(CommandeControle::outil("fermer_tout")->nom, "fermer_tout");
  for (const char* autre : {"", "Fermer", "fermer-tout", "close", "trv_etat"})
    EXPECT_EQ(CommandeControle::outil(autre), nullptr) << autre;
}

}  // namespace
}  // namespace tarnavelle
