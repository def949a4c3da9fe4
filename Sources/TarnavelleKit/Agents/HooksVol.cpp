#include "Agents/HooksVol.hpp"

#include <utility>

#include "Socle/EcritureJSON.hpp"
#include "Socle/LectureJSON.hpp"

namespace tarnavelle::CarnetDeVol {
namespace {

constexpr std::int64_t delaiHook = 5;  // seconds

/// Nothing when a member is mistyped, or missing where it is not optional.
std::optional<Reglages::Commande> lireCommande(const Json& objet) {
  const std::string* type = Champ::chaine(objet, "type");
  const std::string* command = Champ::chaine(objet, "command");
  if (!type || !command) return std::nullopt;
  Reglages::Commande commande{*type, *command, {}};
  if (const Json* timeout = Champ::membre(objet, "timeout"); timeout && !timeout->is_null()) {
    if (!timeout->is_number_integer()) return std::nullopt;
    if (!(commande.timeout = entierTronque(*timeout))) return std::nullopt;
  }
  return commande;
}

/// Reads each element of a list; nothing when it is no list or one element is refused.
template <class Element>
std::optional<std::vector<Element>> lireListe(const Json* liste,
                                              std::optional<Element> (*lireElement)(const Json&)) {
  if (!liste || !liste->is_array()) return std::nullopt;
  std::vector<Element> elements;
  for (const Json& objet : *liste) {
    auto element = lireElement(objet);
    if (!element) return std::nullopt;
    elements.push_back(std::move(*element));
  }
  return elements;
}

std::optional<Reglages::Entree> lireEntree(const Json& objet) {
  auto hooks = lireListe(Champ::membre(objet, "hooks"), lireCommande);
  if (!hooks) return std::nullopt;
  Reglages::Entree entree{{}, std::move(*hooks)};
  if (const Json* matcher = Champ::membre(objet, "matcher"); matcher && !matcher->is_null()) {
    if (!matcher->is_string()) return std::nullopt;
    entree.matcher = matcher->get<std::string>();
  }
  return entree;
}

Json enJSON(const Reglages::Commande& commande) {
  Json objet = {{"type", commande.type}, {"command", commande.command}};
  if (commande.timeout) objet["timeout"] = *commande.timeout;
  return objet;
}

Json enJSON(const Reglages::Entree& entree) {
  Json objet = {{"hooks", Json::array()}};
  if (entree.matcher) objet["matcher"] = *entree.matcher;
  for (const auto& commande : entree.hooks) objet["hooks"].push_back(enJSON(commande));
  return objet;
}

}  // namespace

std::optional<Reglages> Reglages::lire(std::string_view texte) {
  const auto objet = LectureJSON::objet(texte);
  const Json* hooks = objet ? Champ::membre(*objet, "hooks") : nullptr;
  if (!hooks || !hooks->is_object()) return std::nullopt;
  Reglages reglages;
  for (const auto& [evenement, liste] : hooks->items()) {
    auto entrees = lireListe(&liste, lireEntree);
    if (!entrees) return std::nullopt;
    reglages.hooks.emplace(evenement, std::move(*entrees));
  }
  return reglages;
}

Json Reglages::json() const {
  Json parEvenement = Json::object();
  for (const auto& [evenement, entrees] : hooks) {
    Json& liste = parEvenement[evenement] = Json::array();
    for (const auto& entree : entrees) liste.push_back(enJSON(entree));
  }
  return {{"hooks", std::move(parEvenement)}};
}

std::string commandeHook(std::string_view journal) {
  std::string chemin;
  for (const char c : journal) {
    if (c == '\\' || c == '"' || c == '`') chemin += '\\';
    chemin += c;
  }
  return R"(/bin/sh -c '{ tr -d "\n"; printf "\n"; } >> ")" + chemin + R"(" 2>/dev/null')";
}

Reglages reglages(std::string_view journal) {
  const Reglages::Entree entree{{}, {{"command", commandeHook(journal), delaiHook}}};
  Reglages reglages;
  for (const auto evenement : evenements) reglages.hooks.emplace(evenement, std::vector{entree});
  return reglages;
}

std::optional<std::string> json(std::string_view journal) {
  return EcritureJSON::lisible(reglages(journal).json());
}

}  // namespace tarnavelle::CarnetDeVol
