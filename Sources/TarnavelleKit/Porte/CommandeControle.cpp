#include "Porte/CommandeControle.hpp"

#include <algorithm>

#include "Porte/TableVerbes.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

/// The arguments of a call, an empty object when the text is not one.
Json arguments(std::string_view argsJSON) { return LectureJSON::objet(argsJSON).value_or(Json::object()); }

}  // namespace

const std::vector<OutilVoix>& CommandeControle::outilsPorte() {
  static const auto outils = [] {
    std::vector<OutilVoix> liste;
    for (const LigneVerbe& ligne : tableVerbes()) liste.push_back(ligne.outil);
    return liste;
  }();
  return outils;
}

const OutilVoix* CommandeControle::outil(std::string_view nom) {
  const auto& outils = outilsPorte();
  const auto trouve = std::ranges::find(outils, nom, &OutilVoix::nom);
  return trouve == outils.end() ? nullptr : &*trouve;
}

const std::map<std::string, std::string, std::less<>>& CommandeControle::aliasEN() {
  static const auto alias = [] {
    std::map<std::string, std::string, std::less<>> carte;
    for (const LigneVerbe& ligne : tableVerbes())
      for (const auto nom : ligne.alias) carte.emplace(nom, ligne.outil.nom);
    return carte;
  }();
  return alias;
}

std::string CommandeControle::normaliserAction(std::string_view action) {
  std::string nom = Texte::minuscules(Texte::rogner(action));
  std::ranges::replace(nom, '-', '_');
  return nom;
}

std::string CommandeControle::canonique(std::string_view action) {
  std::string nom = normaliserAction(action);
  const auto trouve = aliasEN().find(nom);
  return trouve == aliasEN().end() ? nom : trouve->second;
}

CommandeControle CommandeControle::decoder(std::string_view action, std::string_view argsJSON) {
  return decoderObjet(action, arguments(argsJSON));
}

CommandeControle CommandeControle::decoderObjet(std::string_view action, const Json& arguments) {
  if (const LigneVerbe* ligne = LigneVerbe::de(canonique(action))) return ligne->decoder(arguments);
  return {inconnue{std::string(Texte::rogner(action))}};
}

Json CommandeControle::chargeGenerique(std::string_view verbe, const MotsCLI& mots) {
  const std::string nom = canonique(verbe);
  const OutilVoix* connu = outil(nom);
  Json charge = connu ? connu->arguments(mots) : Json::object();
  charge["action"] = nom;
  return charge;
}

std::set<std::string, std::less<>> CommandeControle::drapeauxBooleens(std::string_view verbe) {
  const OutilVoix* connu = outil(canonique(verbe));
  return connu ? connu->drapeauxBooleens() : std::set<std::string, std::less<>>{};
}

std::vector<std::string> CommandeControle::listeTextes(std::string_view cle, std::string_view argsJSON) {
  return Champ::liste(arguments(argsJSON), cle);
}

std::int64_t CommandeControle::entier(std::string_view cle, std::string_view argsJSON, std::int64_t defaut) {
  return Champ::entier(arguments(argsJSON), cle, defaut);
}

std::string CommandeControle::texte(std::string_view cle, std::string_view argsJSON) {
  return Champ::texte(arguments(argsJSON), cle);
}

bool CommandeControle::booleen(std::string_view cle, std::string_view argsJSON, bool defaut) {
  return Champ::booleen(arguments(argsJSON), cle, defaut);
}

}  // namespace tarnavelle
