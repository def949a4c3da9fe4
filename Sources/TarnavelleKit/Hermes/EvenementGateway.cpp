#include "Hermes/EvenementGateway.hpp"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <span>
#include <utility>

#include "Socle/LectureIndulgente.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

using Cles = std::span<const std::string_view>;

// Every key that is read stands in one of these lists; what is under others is not even built.
constexpr std::array<std::string_view, 2> clesGenre = {"type", "event"};
constexpr std::array<std::string_view, 2> clesErreur = {"error", "message"};
constexpr std::array<std::string_view, 4> clesMorceau = {"choices", "delta", "content", "tool_calls"};
constexpr std::array<std::string_view, 2> clesTexte = {"text", "content"};
constexpr std::array<std::string_view, 3> clesApprobation = {"approval_id", "approvalId", "id"};
constexpr std::array<std::string_view, 3> nidsDemande = {"approval", "request", "data"};
constexpr std::array<std::string_view, 3> nidsDecision = {"approval", "response", "data"};
constexpr std::array<std::string_view, 4> clesNom = {"name", "tool", "tool_name", "function"};
constexpr std::array<std::string_view, 6> clesTitre = {"title",   "summary", "description",
                                                       "message", "prompt",  "reason"};
constexpr std::array<std::string_view, 6> clesDetail = {"detail",    "details", "command",
                                                        "arguments", "args",    "input"};
constexpr std::array<std::string_view, 5> clesExpiration = {"expires_at", "expiresAt", "expiration", "expires",
                                                            "deadline"};
constexpr std::array<std::string_view, 3> clesAccord = {"approved", "allowed", "accepted"};
constexpr std::array<std::string_view, 6> clesVerdict = {"decision", "response", "result",
                                                         "verdict",  "status",   "action"};
constexpr std::array<std::string_view, 4> clesArguments = {"input", "arguments", "args", "parameters"};
constexpr std::array<std::string_view, 1> clesAppel = {"arguments"};
constexpr std::array<std::string_view, 7> clesChemin = {"file_path", "filePath", "notebook_path", "target_file",
                                                        "filename",  "file",     "path"};
constexpr std::array<std::string_view, 5> clesSession = {"session_id", "sessionId", "hermes_session_id",
                                                         "conversation_id", "session"};

template <std::size_t... n>
constexpr auto reunir(const std::array<std::string_view, n>&... listes) {
  std::array<std::string_view, (n + ...)> toutes;
  auto fin = toutes.begin();
  ((fin = std::copy(listes.begin(), listes.end(), fin)), ...);
  std::sort(toutes.begin(), toutes.end());
  return toutes;
}

constexpr auto clesLues = reunir(clesGenre, clesErreur, clesMorceau, clesTexte, clesApprobation, nidsDemande,
                                 nidsDecision, clesNom, clesTitre, clesDetail, clesExpiration, clesAccord,
                                 clesVerdict, clesArguments, clesAppel, clesChemin, clesSession);

bool parmi(std::string_view texte, std::initializer_list<std::string_view> liste) {
  return std::find(liste.begin(), liste.end(), texte) != liste.end();
}

const Json* membreDe(const Json& objet, std::string_view cle, Json::value_t genre) {
  const Json* membre = Champ::membre(objet, cle);
  return membre && membre->type() == genre ? membre : nullptr;
}

/// The first non-empty text under these keys, or null.
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

const std::string* nomDOutil(const Json& objet) {
  if (const std::string* nom = premierTexte(objet, {clesNom.data(), clesNom.size() - 1})) return nom;
  const Json* fonction = membreDe(objet, clesNom.back(), Json::value_t::object);
  return fonction ? premierTexte(*fonction, {clesNom.data(), 1}) : nullptr;
}

/// The path that the first of these arguments names. Arguments are an object, or a text that holds one;
/// anything else is passed over.
std::optional<std::string> cheminDArguments(const Json& objet, Cles cles) {
  for (const auto cle : cles) {
    const Json* arguments = membreDe(objet, cle, Json::value_t::object);
    std::optional<Json> lus;
    if (const std::string* texte = Champ::chaine(objet, cle)) lus = LectureJSON::objet(*texte, {clesLues});
    if (lus) arguments = &*lus;
    if (!arguments) continue;
    const std::string* chemin = premierTexte(*arguments, clesChemin);
    return chemin ? std::optional(*chemin) : std::nullopt;
  }
  return std::nullopt;
}

/// A positive number is seconds since 1970, or milliseconds when seconds would be thousands of years.
std::optional<Date::Instant> instant(const Json& nombre) {
  constexpr double secondesMax = 1e11;
  if (!nombre.is_number()) return std::nullopt;
  const double n = nombre.get<double>();
  if (!(n > 0)) return std::nullopt;
  return Date::depuisSecondes(n > secondesMax ? n / 1000 : n);
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

std::optional<DecisionApprobation> decision(const Json& objet) {
  for (const auto cle : clesAccord)
    if (const Json* accord = membreDe(objet, cle, Json::value_t::boolean))
      return accord->get<bool>() ? DecisionApprobation::approuver : DecisionApprobation::rejeter;
  for (const auto cle : clesVerdict) {
    const std::string* texte = Champ::chaine(objet, cle);
    if (!texte) continue;
    const std::string mot = Texte::minuscules(*texte);
    if (parmi(mot, {"approve", "approved", "allow", "allowed", "accept", "accepted", "yes", "ok", "approuver"}))
      return DecisionApprobation::approuver;
    if (parmi(mot, {"reject", "rejected", "deny", "denied", "refuse", "refused", "decline", "declined", "no",
                    "refuser"}))
      return DecisionApprobation::rejeter;
  }
  return std::nullopt;
}

EvenementGateway aucun() { return {EvenementGateway::rien{}}; }

EvenementGateway lireErreur(const Json& erreur) {
  const std::string* message = erreur.get_ptr<const std::string*>();
  if (!message) message = Champ::chaine(erreur, "message");
  return {EvenementGateway::erreur{message && !message->empty() ? *message : "erreur sans message"}};
}

EvenementGateway lireDemande(const Json& objet) {
  const std::string* id = texteDUneDemande(objet, clesApprobation);
  if (!id) return aucun();
  const std::string* outil = chercher(objet, nidsDemande, nomDOutil);
  const std::string* titre = texteDUneDemande(objet, clesTitre);
  const std::string* detail = texteDUneDemande(objet, clesDetail);
  return {EvenementGateway::approbation{{.id = *id,
                                         .outil = outil ? *outil : "",
                                         .titre = titre ? *titre : "",
                                         .detail = detail ? std::optional(*detail) : std::nullopt,
                                         .expiration = chercher(objet, nidsDemande, expiration)}}};
}

EvenementGateway lireDecision(const Json& objet) {
  const std::string* id = texteDUneDemande(objet, clesApprobation);
  const auto tranchee = chercher(objet, nidsDecision, decision);
  if (!id || !tranchee) return aucun();
  return {EvenementGateway::approbationTranchee{*id, *tranchee}};
}

/// The first call that names its function.
EvenementGateway lireAppels(const Json& appels) {
  for (const Json& appel : appels) {
    const Json* fonction = membreDe(appel, "function", Json::value_t::object);
    const std::string* nom = fonction ? Champ::chaine(*fonction, "name") : nullptr;
    if (!nom || nom->empty()) continue;
    return {EvenementGateway::outil{*nom, cheminDArguments(*fonction, clesAppel)}};
  }
  return aucun();
}

const std::string* sessionAnnoncee(const Json& objet) {
  if (const std::string* id = premierTexte(objet, {clesSession.data(), clesSession.size() - 1})) return id;
  const Json* session = membreDe(objet, clesSession.back(), Json::value_t::object);
  const std::string* id = session ? Champ::chaine(*session, "id") : nullptr;
  return id && !id->empty() ? id : nullptr;
}

}  // namespace

EvenementGateway EvenementGateway::lire(std::string_view charge) {
  auto objet = LectureIndulgente::objet(charge, {clesLues});
  if (!objet) return aucun();
  if (const Json* erreur = Champ::membre(*objet, "error"); erreur && !erreur->is_null())
    return lireErreur(*erreur);

  const std::string* nomme = Champ::chaine(*objet, "type");
  if (!nomme) nomme = Champ::chaine(*objet, "event");
  const std::string_view genre = nomme ? std::string_view(*nomme) : std::string_view();
  if (parmi(genre, {"approval.request", "approval_request", "run_approval_request"}))
    return lireDemande(*objet);
  if (parmi(genre, {"approval.responded", "approval_responded", "approval.response", "approval_response",
                    "run_approval_response"}))
    return lireDecision(*objet);

  const Json* choix = membreDe(*objet, "choices", Json::value_t::array);
  const Json* delta =
      choix && !choix->empty() ? membreDe(choix->front(), "delta", Json::value_t::object) : nullptr;
  if (delta)
    if (const std::string* morceau = Champ::chaine(*delta, "content"); morceau && !morceau->empty())
      return {texte{*morceau}};
  if (genre == "text") {
    const std::string* morceau = Champ::chaine(*objet, "text");
    if (!morceau) morceau = Champ::chaine(*objet, "content");
    if (morceau && !morceau->empty()) return {texte{*morceau}};
  }
  if (delta)
    if (const Json* appels = membreDe(*delta, "tool_calls", Json::value_t::array)) return lireAppels(*appels);

  const std::string* nom = nomDOutil(*objet);
  if (nom && parmi(genre, {"tool_call", "tool.start", "tool_use"}))
    return {outil{*nom, cheminDArguments(*objet, clesArguments)}};
  if (nom && parmi(genre, {"tool_result", "tool.end", "tool_call_result"})) return {outilFini{*nom}};
  if (const std::string* id = sessionAnnoncee(*objet)) return {session{*id}};
  return aucun();
}

}  // namespace tarnavelle
