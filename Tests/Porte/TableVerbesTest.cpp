#include "Porte/TableVerbes.hpp"

#include <cxxabi.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <typeinfo>

#include "Porte/PorteMCP.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/Fichiers.hpp"

namespace tarnavelle {
namespace {

using Genre = ParamVoix::Genre;

/// A command's fields as a list, whatever their types: an aggregate has as many as it can be made of.
struct Quelconque {
  template <class T>
  operator T() const;
};
template <class Cas>
Json champs(const Cas& cas) {
  constexpr Quelconque q;
  if constexpr (requires { Cas{q, q, q, q, q}; }) {
    const auto& [a, b, c, d, e] = cas;
    return {a, b, c, d, e};
  } else if constexpr (requires { Cas{q, q, q, q}; }) {
    const auto& [a, b, c, d] = cas;
    return {a, b, c, d};
  } else if constexpr (requires { Cas{q, q, q}; }) {
    const auto& [a, b, c] = cas;
    return {a, b, c};
  } else if constexpr (requires { Cas{q, q}; }) {
    const auto& [a, b] = cas;
    return {a, b};
  } else if constexpr (requires { Cas{q}; }) {
    const auto& [a] = cas;
    return Json::array({a});
  } else {
    return Json::array();
  }
}

/// The command's case and its fields, in the order in which CommandeControle declares them.
std::string dire(const CommandeControle& commande) {
  return std::visit(
      [](const auto& cas) {
        const std::unique_ptr<char, void (*)(void*)> nom(
            abi::__cxa_demangle(typeid(cas).name(), nullptr, nullptr, nullptr), std::free);
        const std::string entier = nom.get();
        return entier.substr(entier.rfind(':') + 1) + " " + EcritureJSON::compacte(champs(cas)).value();
      },
      commande.cas);
}

std::string dire(std::optional<Designe> designe) {
  if (!designe) return {};
  switch (*designe) {
    case Designe::agent: return " [un agent]";
    case Designe::chemin: return " [un chemin]";
    case Designe::cheminOuNom: return " [un chemin ou un nom]";
    case Designe::machine: return " [une machine]";
  }
  return {};
}

/// A row of the table, and what it does with a call: without arguments, then with all of them. A text says
/// at which place it is declared, in digits, so that it shows where numbers are read.
std::string dire(const LigneVerbe& ligne) {
  const OutilVoix& outil = ligne.outil;
  std::string t = "\n## " + outil.nom + "\n\n*" + std::string(ligne.bref) + "*\n\n*" +
                  std::string(ligne.anglais) + "*\n\n" + outil.description + "\n\n";
  Json vrais = Json::object();
  for (const ParamVoix& p : outil.parametres) {
    t += "- `" + p.nom + "` (" + std::string(valeurBrute(p.genre)) + (p.requis ? ", requis) : " : ") : ");
    t += p.description + dire(ligne.designe(p.nom)) + "\n";
    vrais[p.nom] = p.genre == Genre::booleen ? Json(true) : Json(std::to_string(vrais.size() + 1));
  }
  Json faux = vrais;
  for (Json& valeur : faux)
    if (valeur.is_boolean()) valeur = false;
  const EffetsVerbe& effets = ligne.effets;
  for (const auto& [vrai, effet] : {std::pair{effets.lectureSeule, "ne fait que lire"},
                                    {effets.destructif, "peut détruire"},
                                    {effets.repetable, "se répète sans effet"},
                                    {effets.ouvert, "agit hors du plateau"}})
    if (vrai) t.append("- ").append(effet).append("\n");
  constexpr const char* genres[] = {"texte", "nombre", "booléen", "liste", "lignes"};
  for (const Donnee& d : ligne.donnees)
    t.append("- rend `").append(d.nom).append("` (").append(genres[d.genre]).append(")\n");
  for (const auto alias : ligne.alias) t.append("- alias `").append(alias).append("`\n");
  if (PorteMCP::corpsAppel(outil.nom, {}, "moi").contains("agent"))
    t += "- sans `agent`, le pont donne celui qui appelle\n";
  t += "\n";
  for (const Json& arguments : std::set<Json>{Json::object(), vrais, faux})
    t += "    " + EcritureJSON::compacte(arguments).value() + " -> " +
         dire(CommandeControle::decoderObjet(outil.nom, arguments)) + "\n";
  return t;
}

// The golden document is the whole table and what each row decodes to. After an intended change, read what
// differs, then take it over:
//   git diff --word-diff --no-index Tests/Porte/verbes.attendu.md build/debug/Tests/verbes.md
//   cp build/debug/Tests/verbes.md Tests/Porte/verbes.attendu.md
TEST(TableVerbes, EstCelleDuDocument) {
  const std::string attendu = lireFichier(VERBES_ATTENDUS, 1 << 20).value_or("");
  std::string document =
      "# Les verbes de la porte\n\n"
      "Chaque verbe de la table, et ce que donne un appel : sans argument, puis avec tous.\n";
  for (const LigneVerbe& ligne : tableVerbes()) {
    const std::string dit = dire(ligne);
    EXPECT_TRUE(attendu.find(dit) != std::string::npos) << dit;
    document += dit;
  }
  if (document == attendu) return;
  std::ofstream(VERBES_OBTENUS, std::ios::binary) << document;
  ADD_FAILURE() << VERBES_ATTENDUS " no longer tells the table; " VERBES_OBTENUS " does";
}

// A name that another shadows leads to that other's verb; one that is not normalised leads nowhere.
TEST(TableVerbes, ChaqueNomMeneASonVerbe) {
  for (const LigneVerbe& ligne : tableVerbes()) {
    EXPECT_EQ(CommandeControle::canonique(ligne.outil.nom), ligne.outil.nom);
    for (const auto alias : ligne.alias)
      EXPECT_EQ(CommandeControle::canonique(alias), ligne.outil.nom) << alias;
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
