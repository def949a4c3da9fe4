#include "Hermes/EvenementGateway.hpp"

#include <utility>

#include "ChampsGatewayInterne.hpp"
#include "Socle/LectureIndulgente.hpp"

namespace tarnavelle {

using namespace interne;

namespace {

// Every key that is read stands in one of these lists; what is under others is not even built.
constexpr std::array<std::string_view, 2> clesGenre = {"type", "event"};
constexpr std::array<std::string_view, 2> clesErreur = {"error", "message"};
constexpr std::array<std::string_view, 4> clesMorceau = {"choices", "delta", "content", "tool_calls"};
constexpr std::array<std::string_view, 2> clesTexte = {"text", "content"};
constexpr std::array<std::string_view, 4> clesArguments = {"input", "arguments", "args", "parameters"};
constexpr std::array<std::string_view, 1> clesAppel = {"arguments"};
constexpr std::array<std::string_view, 6> clesSession = {"session_id",      "sessionId", "hermes_session_id",
                                                         "conversation_id", "session",   "id"};

template <std::size_t... n>
constexpr auto reunir(const std::array<std::string_view, n>&... listes) {
  std::array<std::string_view, (n + ...)> toutes;
  auto fin = toutes.begin();
  ((fin = std::copy(listes.begin(), listes.end(), fin)), ...);
  std::sort(toutes.begin(), toutes.end());
  return toutes;
}

constexpr auto clesLues = reunir(clesGenre, clesErreur, clesMorceau, clesTexte, clesNom, clesArguments,
                                 clesAppel, clesChemin, clesSession);

/// The path that the first of these arguments names. Arguments are an object, or a text that holds one;
/// anything else is passed over.
std::optional<std::string> cheminDArguments(const Json& objet, Cles cles) {
  for (const auto cle : cles) {
    const Json* arguments = membreDe(objet, cle, Json::value_t::object);
    std::optional<Json> lus;
    if (const std::string* texte = Champ::chaine(objet, cle))
      lus = LectureIndulgente::objet(*texte, {clesLues});
    if (lus) arguments = &*lus;
    if (!arguments) continue;
    const std::string* chemin = premierTexte(*arguments, clesChemin);
    return chemin ? std::optional(*chemin) : std::nullopt;
  }
  return std::nullopt;
}

EvenementGateway lireErreur(const Json& erreur) {
  const std::string* message = erreur.get_ptr<const std::string*>();
  if (!message) message = Champ::chaine(erreur, "message");
  return {EvenementGateway::erreur{message && !message->empty() ? *message : "erreur sans message"}};
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
  if (const std::string* id = premierTexte(objet, {clesSession.data(), clesSession.size() - 2})) return id;
  const Json* session = membreDe(objet, "session", Json::value_t::object);
  const std::string* id = session ? Champ::chaine(*session, "id") : nullptr;
  return id && !id->empty() ? id : nullptr;
}

/// The first choice's piece of reply, or its whole message; null when there is none.
const Json* premierChoix(const Json& objet, std::string_view cle) {
  const Json* choix = membreDe(objet, "choices", Json::value_t::array);
  return choix && !choix->empty() ? membreDe(choix->front(), cle, Json::value_t::object) : nullptr;
}

std::string_view genreDe(const Json& objet) {
  for (const auto cle : clesGenre)
    if (const std::string* genre = Champ::chaine(objet, cle)) return *genre;
  return {};
}

bool estUneDecision(std::string_view genre) {
  return parmi(genre, {"approval.responded", "approval_responded", "approval.response", "approval_response",
                       "run_approval_response"});
}

bool estUnAppel(std::string_view genre) { return parmi(genre, {"tool_call", "tool.start", "tool_use"}); }

/// `charge`: what `objet` was read from, for the rare events that are read whole.
EvenementGateway lireObjet(const Json& objet, const Json* morceau, std::string_view charge) {
  using E = EvenementGateway;
  if (const Json* erreur = Champ::membre(objet, "error"); erreur && !erreur->is_null())
    return lireErreur(*erreur);

  const std::string_view genre = genreDe(objet);
  if (parmi(genre, {"approval.request", "approval_request", "run_approval_request"}))
    return lireDemande(LectureIndulgente::objet(charge).value_or(Json()));
  if (estUneDecision(genre)) return lireDecision(LectureIndulgente::objet(charge).value_or(Json()));

  if (morceau)
    if (const std::string* texte = Champ::chaine(*morceau, "content"); texte && !texte->empty())
      return {E::texte{*texte}};
  if (genre == "text") {
    const std::string* texte = Champ::chaine(objet, "text");
    if (!texte) texte = Champ::chaine(objet, "content");
    if (texte && !texte->empty()) return {E::texte{*texte}};
  }
  if (morceau)
    if (const Json* appels = membreDe(*morceau, "tool_calls", Json::value_t::array)) return lireAppels(*appels);

  const std::string* nom = nomDOutil(objet);
  if (nom && estUnAppel(genre)) return {E::outil{*nom, cheminDArguments(objet, clesArguments)}};
  if (nom && parmi(genre, {"tool_result", "tool.end", "tool_call_result"})) return {E::outilFini{*nom}};
  if (const std::string* id = sessionAnnoncee(objet)) return {E::session{*id}};
  return aucun();
}

}  // namespace

const std::string* interne::premierTexte(const Json& objet, Cles cles) {
  for (const auto cle : cles)
    if (const std::string* texte = Champ::chaine(objet, cle); texte && !texte->empty()) return texte;
  return nullptr;
}

const std::string* interne::nomDOutil(const Json& objet) {
  if (const std::string* nom = premierTexte(objet, {clesNom.data(), clesNom.size() - 1})) return nom;
  const Json* fonction = membreDe(objet, clesNom.back(), Json::value_t::object);
  return fonction ? premierTexte(*fonction, {clesNom.data(), 1}) : nullptr;
}

EvenementGateway EvenementGateway::lire(std::string_view charge) {
  const auto objet = LectureIndulgente::objet(charge, {clesLues});
  return objet ? lireObjet(*objet, premierChoix(*objet, "delta"), charge) : aucun();
}

LectureGateway LectureGateway::lire(std::string_view charge, Forme forme) {
  using E = EvenementGateway;
  const auto objet = LectureIndulgente::objet(charge, {clesLues});
  if (!objet) return {};
  const bool entiere = forme == Forme::entiere;
  const Json* morceau = premierChoix(*objet, entiere ? "message" : "delta");
  const Json* appels = morceau ? membreDe(*morceau, "tool_calls", Json::value_t::array) : nullptr;
  const auto premier = lireObjet(*objet, morceau, charge);
  const bool rien = premier == aucun();

  const auto genre = genreDe(*objet);
  LectureGateway lecture{
      .evenements = {},
      .aPuAgir = (appels && !appels->empty()) || (rien && (estUneDecision(genre) || estUnAppel(genre)))};
  const auto ajouter = [&](EvenementGateway evenement) {
    if (evenement != aucun()) lecture.evenements.push_back(std::move(evenement));
  };
  if (entiere && !std::holds_alternative<E::session>(premier.cas))
    if (const std::string* id = sessionAnnoncee(*objet)) ajouter({E::session{*id}});
  ajouter(premier);
  if (appels && std::holds_alternative<E::texte>(premier.cas)) ajouter(lireAppels(*appels));
  return lecture;
}

}  // namespace tarnavelle
