#include <array>
#include <span>
#include <utility>

#include "ChampsGatewayInterne.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::interne {
namespace {

using Cles = std::span<const std::string_view>;

constexpr auto clesOutil = clesReunies(clesNom, clesFonction);

constexpr std::array<std::string_view, 3> clesApprobation = {"approval_id", "approvalId", "id"};
constexpr std::array<std::string_view, 3> nidsDemande = {"approval", "request", "data"};
constexpr std::array<std::string_view, 3> nidsDecision = {"approval", "response", "data"};
constexpr std::array<std::string_view, 6> clesTitre = {"title",   "summary", "description",
                                                       "message", "prompt",  "reason"};
constexpr std::array<std::string_view, 6> clesDetail = {"detail",    "details", "command",
                                                        "arguments", "args",    "input"};
constexpr std::array<std::string_view, 7> clesGeste = {"detail", "details", "command",   "arguments",
                                                       "args",   "input",   "parameters"};
constexpr auto clesDonnees = Cles(clesGeste).subspan(2);  // what the tool is given
constexpr std::array<std::string_view, 5> clesExpiration = {"expires_at", "expiresAt", "expiration", "expires",
                                                            "deadline"};
constexpr std::array<std::string_view, 3> clesAccord = {"approved", "allowed", "accepted"};
constexpr std::array<std::string_view, 6> clesVerdict = {"decision", "verdict", "response",
                                                         "result",   "status",  "action"};

constexpr std::size_t detailMax = 500;  ///< characters of what is made of arguments

const Json* membreDe(const Json& objet, std::string_view cle, Json::value_t genre) {
  const Json* membre = Champ::membre(objet, cle);
  return membre && membre->type() == genre ? membre : nullptr;
}

/// The first text under these keys that is not empty, or null.
const std::string* premierTexte(const Json& objet, Cles cles) {
  for (const auto cle : cles)
    if (const std::string* texte = Champ::chaine(objet, cle); texte && !texte->empty()) return texte;
  return nullptr;
}

/// What `lire` finds first: in the object itself, else in those nested under `nids`.
template <class Lecture>
auto chercher(const Json& objet, Cles nids, Lecture lire) {
  auto trouve = lire(objet);
  for (auto nid = nids.begin(); !trouve && nid != nids.end(); ++nid)
    if (const Json* dedans = membreDe(objet, *nid, Json::value_t::object)) trouve = lire(*dedans);
  return trouve;
}

const std::string* texteDUneDemande(const Json& objet, Cles cles) {
  return chercher(objet, nidsDemande, [&](const Json& o) { return premierTexte(o, cles); });
}

/// A command as a text, or as the list of its words.
std::string commande(const Json& valeur) {
  if (const auto* texte = valeur.get_ptr<const std::string*>()) return *texte;
  const bool mots =
      valeur.is_array() && std::ranges::all_of(valeur, [](const Json& m) { return m.is_string(); });
  return mots ? Texte::joindre(valeur, " ", [](const Json& m) { return m.get_ref<const std::string&>(); }) : "";
}

/// What these arguments would do: the command or the path that they name, else themselves.
std::string geste(const Json& arguments) {
  if (const auto* texte = arguments.get_ptr<const std::string*>())
    if (const auto lus = LectureJSON::objet(*texte)) return geste(*lus);
  if (!arguments.is_object()) return commande(arguments);
  if (const Json* ordre = Champ::membre(arguments, "command"))
    if (auto texte = commande(*ordre); !texte.empty()) return texte;
  if (const std::string* chemin = premierTexte(arguments, clesChemin)) return *chemin;
  return arguments.empty() ? "" : EcritureJSON::compacte(arguments).value_or("");
}

std::optional<std::string> gesteDemande(const Json& objet) {
  const auto lire = [](const Json& o) -> std::optional<std::string> {
    for (const auto cle : clesGeste)
      if (const Json* valeur = Champ::membre(o, cle))
        if (const auto texte = geste(*valeur); !texte.empty()) return Texte::tronquer(texte, detailMax);
    return std::nullopt;
  };
  return chercher(objet, nidsDemande, [&](const Json& o) {
    const Json* fonction = membreDe(o, "function", Json::value_t::object);
    auto texte = lire(o);
    return !texte && fonction ? lire(*fonction) : texte;
  });
}

/// A positive number is seconds since 1970, or milliseconds when seconds would be thousands of years.
std::optional<Date::Instant> instant(const Json& nombre) {
  constexpr double secondesMax = 1e11;
  const auto n = reel(nombre);
  if (!n || !(*n > 0)) return std::nullopt;
  return Date::depuisSecondes(*n > secondesMax ? *n / 1000 : *n);
}

std::optional<Date::Instant> expiration(const Json& objet) {
  for (const auto cle : clesExpiration) {
    const Json* valeur = Champ::membre(objet, cle);
    if (!valeur) continue;
    if (const auto date = instant(*valeur)) return date;
    const auto* texte = valeur->get_ptr<const std::string*>();
    if (!texte) continue;
    const auto net = Texte::rogner(*texte);
    if (const auto date = Date::lireISO(net)) return date;
    if (const auto nombre = LectureJSON::valeur(net))
      if (const auto date = instant(*nombre)) return date;
  }
  return std::nullopt;
}

enum class Mot { oui, non, autre };

Mot mot(const std::string& texte) {
  const std::string m = Texte::minuscules(Texte::rogner(texte));
  if (parmi(m, {"approve", "approved", "allow", "allowed", "accept", "accepted", "yes", "ok", "approuver"}))
    return Mot::oui;
  if (parmi(m, {"reject", "rejected", "deny", "denied", "refuse", "refused", "decline", "declined", "no",
                "refuser"}))
    return Mot::non;
  return Mot::autre;
}

struct Avis {
  bool oui = false;
  bool non = false;
};

/// What one object says of the decision, in its own members.
void ecouter(const Json& objet, Avis& avis) {
  for (const auto cle : clesAccord)
    if (const Json* accord = membreDe(objet, cle, Json::value_t::boolean))
      (accord->get<bool>() ? avis.oui : avis.non) = true;
  bool parle = false;  // a first word that says neither is not made a yes by the next one
  for (const auto cle : clesVerdict) {
    const std::string* texte = Champ::chaine(objet, cle);
    if (!texte || texte->empty()) continue;
    const Mot dit = mot(*texte);
    if (dit == Mot::non) avis.non = true;
    if (dit == Mot::oui && !parle) avis.oui = true;
    parle = true;
  }
}

/// Whether this value, or anything under it but what the tool was given, speaks against an approval: a no, or a
/// decision that is neither.
bool sOppose(const Json& valeur) {
  if (valeur.is_array()) return std::ranges::any_of(valeur, sOppose);
  if (!valeur.is_object()) return false;
  for (const auto& [cle, membre] : valeur.items()) {
    const bool accord = std::ranges::find(clesAccord, cle) != clesAccord.end();
    const auto verdict = std::ranges::find(clesVerdict, cle);
    if (membre.is_structured()) {
      if (accord || verdict < clesVerdict.begin() + 2) return true;  // a decision that cannot be read
      if (std::ranges::find(clesDonnees, cle) == clesDonnees.end() && sOppose(membre)) return true;
      continue;
    }
    if (membre.is_null() || (!accord && verdict == clesVerdict.end())) continue;
    const bool tranche =
        accord || verdict < clesVerdict.begin() + 2;  // "decision" and "verdict" say nothing else
    if (const auto* texte = membre.get_ptr<const std::string*>()) {
      const Mot dit = mot(*texte);
      if (dit == Mot::non || (tranche && dit == Mot::autre && !texte->empty())) return true;
    } else if (tranche && membre != true) {
      return true;
    }
  }
  return false;
}

}  // namespace

EvenementGateway lireDemande(const Json& objet) {
  const std::string* id = texteDUneDemande(objet, clesApprobation);
  if (!id) return aucun();
  const std::string* outil =
      chercher(objet, nidsDemande, [](const Json& o) { return nomDOutil(MembresLus<clesOutil>(o)); });
  const std::string* titre = texteDUneDemande(objet, clesTitre);
  const std::string* detail = texteDUneDemande(objet, clesDetail);
  return {EvenementGateway::approbation{{.id = *id,
                                         .outil = outil ? *outil : "",
                                         .titre = titre ? *titre : "",
                                         .detail = detail ? std::optional(*detail) : gesteDemande(objet),
                                         .expiration = chercher(objet, nidsDemande, expiration)}}};
}

EvenementGateway lireDecision(const Json& objet) {
  const std::string* id = texteDUneDemande(objet, clesApprobation);
  Avis avis;
  ecouter(objet, avis);
  for (const auto nid : nidsDecision)
    if (const Json* dedans = membreDe(objet, nid, Json::value_t::object)) ecouter(*dedans, avis);
  // Whoever contradicts himself has not decided.
  if (!id || (avis.oui ? sOppose(objet) : !avis.non)) return aucun();
  return {EvenementGateway::approbationTranchee{
      *id, avis.oui ? DecisionApprobation::approuver : DecisionApprobation::rejeter}};
}

}  // namespace tarnavelle::interne
