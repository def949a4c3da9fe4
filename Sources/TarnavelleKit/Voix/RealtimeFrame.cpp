#include "Voix/RealtimeFrame.hpp"

#include "Porte/CommandeControle.hpp"
#include "Socle/Base64.hpp"
#include "Socle/LectureJSON.hpp"

namespace tarnavelle {
namespace {

bool contient(std::string_view texte, std::string_view motif) {
  return texte.find(motif) != std::string_view::npos;
}

/// The event, or nothing when the text is not a JSON object that names its type.
std::optional<Json> evenement(std::string_view texte) {
  auto objet = LectureJSON::objet(texte);
  if (objet && !Champ::chaine(*objet, "type")) objet.reset();
  return objet;
}

const std::string& type(const Json& evenement) { return *Champ::chaine(evenement, "type"); }

RealtimeFrame appel(const Json& source) {
  const std::string* arguments = Champ::chaine(source, "arguments");
  return {RealtimeFrame::toolCall{.name = Champ::texte(source, "name"),
                                  .argsJSON = arguments ? *arguments : "{}",
                                  .callID = Champ::texte(source, "call_id")}};
}

RealtimeFrame message(const Json& item) {
  RealtimeFrame::message dit;
  const Json* contenu = Champ::membre(item, "content");
  if (contenu && contenu->is_array())
    for (const Json& partie : *contenu) {
      const std::string* texte = Champ::chaine(partie, "text");
      if (!texte) texte = Champ::chaine(partie, "transcript");
      if (texte) dit.texte += *texte;
    }
  return {dit};
}

RealtimeFrame erreur(const Json& evenement) {
  const Json* erreur = Champ::membre(evenement, "error");
  const std::string* texte = Champ::chaine(evenement, "error");
  if (erreur && !texte) texte = Champ::chaine(*erreur, "message");
  return {RealtimeFrame::error{texte ? *texte : "erreur Realtime"}};
}

// The two events that can tell a tool call.
constexpr std::string_view elementFini = "response.output_item.done";
constexpr std::string_view argumentsFinis = "response.function_call_arguments.done";

/// The event that tells a tool call. Each dialect has one, so that a service which reports a call by both does
/// not have it carried out twice.
std::string_view annonceDAppel(DialecteRealtime dialecte) {
  switch (dialecte) {
    case DialecteRealtime::openai: return elementFini;
    case DialecteRealtime::xai: return argumentsFinis;
  }
  return {};
}

RealtimeFrame trame(const Json& evenement, DialecteRealtime dialecte) {
  const std::string& t = type(evenement);
  const bool annonce = t == annonceDAppel(dialecte);
  if (t == "session.created" || t == "conversation.created") return {RealtimeFrame::sessionCreated{}};
  if (t == "session.updated") return {RealtimeFrame::sessionUpdated{}};
  if (t == "response.output_audio.delta" || t == "response.audio.delta") {
    const std::string* son = Champ::chaine(evenement, "delta");
    if (auto octets = son ? Base64::decoder(*son) : std::nullopt)
      return {RealtimeFrame::audioDelta{std::move(*octets)}};
  } else if (t == argumentsFinis) {
    if (annonce) return appel(evenement);
  } else if (t == elementFini) {
    if (const Json* item = Champ::membre(evenement, "item")) {
      const std::string genre = Champ::texte(*item, "type");
      if (genre == "function_call" && annonce) return appel(*item);
      if (genre == "message") return message(*item);
    }
  } else if (t == "response.done") {
    return {RealtimeFrame::responseDone{}};
  } else if (t == "error") {
    return erreur(evenement);
  }
  return {RealtimeFrame::other{t}};
}

std::optional<std::string> itemCree(const Json& evenement) {
  const std::string& t = type(evenement);
  if (t != "conversation.item.created" && t != "conversation.item.added") return std::nullopt;
  const Json* item = Champ::membre(evenement, "item");
  const std::string* id = item ? Champ::chaine(*item, "id") : nullptr;
  if (!id || id->empty()) id = Champ::chaine(evenement, "item_id");
  return id ? std::optional(*id) : std::nullopt;
}

/// Whether the text may hold a transcript of what the user said.
bool peutTranscrire(std::string_view texte) { return contient(texte, "input_audio_transcription.completed"); }

std::optional<std::string> transcription(const Json& evenement, std::string_view texte) {
  if (type(evenement) != "conversation.item.input_audio_transcription.completed" || !peutTranscrire(texte))
    return std::nullopt;
  const std::string* dit = Champ::chaine(evenement, "transcript");
  return dit ? std::optional(*dit) : std::nullopt;
}

/// What the model has said, whole: aloud, or in writing where a service was asked for that.
std::optional<std::string> parole(const Json& evenement) {
  const std::string& t = type(evenement);
  const bool aVoixHaute = t == "response.output_audio_transcript.done" || t == "response.audio_transcript.done";
  if (!aVoixHaute && t != "response.output_text.done" && t != "response.text.done") return std::nullopt;
  const std::string* dite = Champ::chaine(evenement, aVoixHaute ? "transcript" : "text");
  return dite ? std::optional(*dite) : std::nullopt;
}

/// What an error or a failed response says beside its message.
std::optional<RefusRealtime> refus(const Json& evenement, const RealtimeFrame& trame) {
  if (const auto* erreur = std::get_if<RealtimeFrame::error>(&trame.cas)) {
    RefusRealtime lu = RefusRealtime::lire(evenement);
    lu.message = erreur->texte;
    return lu;
  }
  const bool finie = std::holds_alternative<RealtimeFrame::responseDone>(trame.cas);
  const Json* reponse = finie ? Champ::membre(evenement, "response") : nullptr;
  if (!reponse || Champ::texte(*reponse, "status") != "failed") return std::nullopt;
  const Json* details = Champ::membre(*reponse, "status_details");
  return RefusRealtime::lire(details ? *details : Json());
}

}  // namespace

LectureTrame LectureTrame::lire(std::string_view texte, DialecteRealtime dialecte) {
  LectureTrame lue;
  lue.ecoute = RealtimeFrame::ecouteEntree(texte);
  const auto objet = evenement(texte);
  if (!objet) {
    lue.trame = {RealtimeFrame::error{"trame illisible"}};
    return lue;
  }
  lue.trame = ::tarnavelle::trame(*objet, dialecte);
  lue.itemCree = ::tarnavelle::itemCree(*objet);
  lue.transcription = ::tarnavelle::transcription(*objet, texte);
  lue.transcriptionEnCours = lue.transcription && Champ::texte(*objet, "status") == "in_progress";
  if (std::holds_alternative<RealtimeFrame::responseDone>(lue.trame.cas))
    lue.usage = LectureUsageRealtime::lireOuQuIlSoit(*objet);
  lue.refus = ::tarnavelle::refus(*objet, lue.trame);
  lue.reponseCommence = type(*objet) == "response.created";
  lue.parole = ::tarnavelle::parole(*objet);
  if (std::holds_alternative<RealtimeFrame::audioDelta>(lue.trame.cas))
    lue.itemSon = Champ::texte(*objet, "item_id");
  return lue;
}

RealtimeFrame RealtimeFrame::decode(std::string_view texte, DialecteRealtime dialecte) {
  return LectureTrame::lire(texte, dialecte).trame;
}

std::optional<std::string> RealtimeFrame::idItemCree(std::string_view texte) {
  const auto objet = evenement(texte);
  return objet ? itemCree(*objet) : std::nullopt;
}

std::optional<bool> RealtimeFrame::ecouteEntree(std::string_view texte) {
  if (contient(texte, R"("input_audio_buffer.speech_started")")) return true;
  if (contient(texte, R"("input_audio_buffer.speech_stopped")")) return false;
  return std::nullopt;
}

std::optional<std::string> RealtimeFrame::transcriptionEntree(std::string_view texte) {
  if (!peutTranscrire(texte)) return std::nullopt;
  const auto objet = evenement(texte);
  return objet ? transcription(*objet, texte) : std::nullopt;
}

std::string RealtimeFrame::texte(std::string_view cle, std::string_view argsJSON) {
  return CommandeControle::texte(cle, argsJSON);
}

bool RealtimeFrame::booleen(std::string_view cle, std::string_view argsJSON, bool defaut) {
  return CommandeControle::booleen(cle, argsJSON, defaut);
}

std::string RealtimeFrame::commandText(std::string_view argsJSON) { return texte("text", argsJSON); }

bool RealtimeFrame::verdict(std::string_view argsJSON) {
  const auto arguments = LectureJSON::objet(argsJSON);
  const Json* verdict = arguments ? Champ::membre(*arguments, "verdict") : nullptr;
  return verdict && verdict->is_boolean() ? verdict->get<bool>() : contient(argsJSON, "true");
}

}  // namespace tarnavelle
