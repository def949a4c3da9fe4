#include "Hermes/EvenementGateway.hpp"

#include <span>
#include <utility>

#include "ChampsGatewayInterne.hpp"
#include "Socle/LectureIndulgente.hpp"

namespace tarnavelle {

using namespace interne;

namespace {

constexpr auto clesArguments = std::to_array<std::string_view>({"input", "arguments", "args", "parameters"});
constexpr auto clesAppel = std::to_array<std::string_view>({"arguments"});
constexpr auto clesSession =
    std::to_array<std::string_view>({"session_id", "sessionId", "hermes_session_id", "conversation_id"});
constexpr auto clesAutres =
    std::to_array<std::string_view>({"choices", "content", "delta", "error", "event", "id", "message",
                                     "session", "text", "tool_calls", "type"});
constexpr auto clesLues =
    clesReunies(clesArguments, clesChemin, clesFonction, clesNom, clesSession, clesAutres);
using Lu = MembresLus<clesLues>;

/// The path that the first of these arguments names. Arguments are an object, or a text that holds one;
/// anything else is passed over.
std::optional<std::string> cheminDArguments(const Lu& objet, std::span<const Lu::Cle> cles) {
  for (const Lu::Cle cle : cles) {
    Lu arguments = objet[cle];
    std::optional<Json> lus;
    if (const std::string* texte = arguments.chaine())
      if ((lus = LectureIndulgente::objet(*texte, Lu::filtre))) arguments = Lu(*lus);
    if (!arguments.est(Json::value_t::object)) continue;
    const std::string* chemin = arguments.premierTexte(Lu::liste(clesChemin));
    return chemin ? std::optional(*chemin) : std::nullopt;
  }
  return std::nullopt;
}

EvenementGateway lireErreur(const Lu& erreur) {
  const std::string* message = erreur.chaine();
  if (!message) message = erreur["message"].chaine();
  return {EvenementGateway::erreur{message && !message->empty() ? *message : "erreur sans message"}};
}

/// The first call that names its function.
EvenementGateway lireAppels(const Lu& appels) {
  for (const Lu appel : appels) {
    const auto nom = appel["function"]["name"].texte();
    if (!nom.empty())
      return {
          EvenementGateway::outil{std::string(nom), cheminDArguments(appel["function"], Lu::liste(clesAppel))}};
  }
  return aucun();
}

const std::string* sessionAnnoncee(const Lu& objet) {
  const std::string* id = objet.premierTexte(Lu::liste(clesSession));
  if (!id) id = objet["session"]["id"].chaine();
  return id && !id->empty() ? id : nullptr;
}

/// The first choice's piece of reply, or its whole message; no value when there is none.
Lu premierChoix(const Lu& objet, Lu::Cle cle) { return objet["choices"].premier()[cle]; }

std::string_view genreDe(const Lu& objet) {
  const std::string* genre = objet["type"].chaine();
  return genre ? *genre : objet["event"].texte();
}

bool estUneDecision(std::string_view genre) {
  return parmi(genre, {"approval.responded", "approval_responded", "approval.response", "approval_response",
                       "run_approval_response"});
}

bool estUnAppel(std::string_view genre) { return parmi(genre, {"tool_call", "tool.start", "tool_use"}); }

/// `charge`: what `objet` was read from, for the rare events that are read whole.
EvenementGateway lireObjet(const Lu& objet, const Lu& morceau, std::string_view charge) {
  using E = EvenementGateway;
  if (const Lu erreur = objet["error"]; erreur && !erreur.est(Json::value_t::null)) return lireErreur(erreur);

  const std::string_view genre = genreDe(objet);
  if (parmi(genre, {"approval.request", "approval_request", "run_approval_request"}))
    return lireDemande(LectureIndulgente::objet(charge).value_or(Json()));
  if (estUneDecision(genre)) return lireDecision(LectureIndulgente::objet(charge).value_or(Json()));

  if (const auto texte = morceau["content"].texte(); !texte.empty()) return {E::texte{std::string(texte)}};
  if (genre == "text") {
    const Lu texte = objet["text"].chaine() ? objet["text"] : objet["content"];
    if (!texte.texte().empty()) return {E::texte{std::string(texte.texte())}};
  }
  if (const Lu appels = morceau["tool_calls"]; appels.est(Json::value_t::array)) return lireAppels(appels);

  const std::string* nom = nomDOutil(objet);
  if (nom && estUnAppel(genre)) return {E::outil{*nom, cheminDArguments(objet, Lu::liste(clesArguments))}};
  if (nom && parmi(genre, {"tool_result", "tool.end", "tool_call_result"})) return {E::outilFini{*nom}};
  if (const std::string* id = sessionAnnoncee(objet)) return {E::session{*id}};
  return aucun();
}

}  // namespace

EvenementGateway EvenementGateway::lire(std::string_view charge) {
  const auto document = LectureIndulgente::objet(charge, Lu::filtre);
  if (!document) return aucun();
  const Lu objet(*document);
  return lireObjet(objet, premierChoix(objet, "delta"), charge);
}

LectureGateway LectureGateway::lire(std::string_view charge, Forme forme) {
  using E = EvenementGateway;
  const auto document = LectureIndulgente::objet(charge, Lu::filtre);
  if (!document) return {};
  const Lu objet(*document);
  const bool entiere = forme == Forme::entiere;
  const Lu morceau = entiere ? premierChoix(objet, "message") : premierChoix(objet, "delta");
  const Lu appels = morceau["tool_calls"];
  const auto premier = lireObjet(objet, morceau, charge);
  const bool rien = premier == aucun();

  const auto genre = genreDe(objet);
  LectureGateway lecture{.evenements = {},
                         .aPuAgir = appels.premier() || (rien && (estUneDecision(genre) || estUnAppel(genre)))};
  const auto ajouter = [&](EvenementGateway evenement) {
    if (evenement != aucun()) lecture.evenements.push_back(std::move(evenement));
  };
  if (entiere && !std::holds_alternative<E::session>(premier.cas))
    if (const std::string* id = sessionAnnoncee(objet)) ajouter({E::session{*id}});
  ajouter(premier);
  if (std::holds_alternative<E::texte>(premier.cas)) ajouter(lireAppels(appels));
  return lecture;
}

}  // namespace tarnavelle
