// One frame of a realtime service, read in both dialects, and the arguments of the call it may hold; the same
// bytes as the body of a refusal, and as a note to the model.
#include <nlohmann/json.hpp>

#include "Cible.hpp"
#include "Socle/Base64.hpp"
#include "Socle/Texte.hpp"
#include "Voix/RealtimeFrame.hpp"
#include "Voix/RealtimeRequest.hpp"
#include "Voix/ReconnexionRealtime.hpp"

using namespace tarnavelle;

namespace {

const RealtimeFrame::toolCall* appel(const LectureTrame& lue) {
  return std::get_if<RealtimeFrame::toolCall>(&lue.trame.cas);
}

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  const auto texte = vue(octets, taille);
  const auto openai = LectureTrame::lire(texte, DialecteRealtime::openai);
  const auto xai = LectureTrame::lire(texte, DialecteRealtime::xai);
  exiger(!appel(openai) || !appel(xai));
  for (const auto* lue : {&openai, &xai}) {
    exiger(lue->itemCree == RealtimeFrame::idItemCree(texte));
    exiger(lue->transcription == RealtimeFrame::transcriptionEntree(texte));
    exiger(lue->ecoute == RealtimeFrame::ecouteEntree(texte));
    exiger(!lue->usage || std::holds_alternative<RealtimeFrame::responseDone>(lue->trame.cas));
    if (const auto* son = std::get_if<RealtimeFrame::audioDelta>(&lue->trame.cas))
      exiger(Base64::decoder(Base64::coder(son->octets)) == son->octets);
    if (const auto* autre = std::get_if<RealtimeFrame::other>(&lue->trame.cas))
      exiger(Texte::utf8Valide(autre->type));
    if (const auto* a = appel(*lue)) {
      (void)RealtimeFrame::verdict(a->argsJSON);
      (void)RealtimeFrame::booleen("valider", a->argsJSON, false);
      exiger(Texte::utf8Valide(RealtimeFrame::commandText(a->argsJSON)));
    }
  }
  if (const auto raison = ReconnexionRealtime::explicationRefus(RefusRealtime::deConnexion(400, texte)))
    exiger(!raison->empty() && Texte::utf8Valide(*raison));
  exiger(RealtimeRequest::encoded(RealtimeRequest::annonceSysteme(texte)).has_value());
  exiger(RealtimeFrame::decode(texte, DialecteRealtime::openai) == openai.trame);
  return 0;
}
