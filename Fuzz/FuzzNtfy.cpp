// A line of a topic's stream, and the same bytes as a setting.
#include "Cible.hpp"
#include "Hermes/AbonnementNtfy.hpp"
#include "Hermes/FluxSSE.hpp"
#include "Hermes/MessageNtfy.hpp"
#include "Socle/Texte.hpp"

using namespace tarnavelle;

namespace {

void verifier(std::string_view charge) {
  const auto lecture = MessageNtfy::lire(charge, {});
  const auto* message = std::get_if<LectureNtfy::message>(&lecture.cas);
  if (!message) return;
  const MessageNtfy& m = message->message;
  exiger(!m.id.empty() && !m.texte.empty() && (!m.titre || !m.titre->empty()));
  exiger(Texte::utf8Valide(m.texte) && Texte::utf8Valide(m.topic));
  exiger(MessageNtfy::lire(charge, m.topic) == lecture);
  exiger(std::holds_alternative<LectureNtfy::rien>(MessageNtfy::lire(charge, m.topic + "x").cas));
}

void verifier(const ReglageNtfy& reglage) {
  const auto requete = AbonnementNtfy::requete(reglage, "30m");
  exiger(reglage.pret() == requete.has_value() && reglage.pret() == reglage.urlFlux().has_value());
  exiger(!reglage.topicMasque().empty());
  if (!requete) return;
  exiger(requete->url.starts_with("https://") || requete->url.starts_with("http://"));
  exiger(requete->url.find("since=30m") != std::string::npos);
  for (const auto& entete : requete->entetes) exiger(!Texte::porteControle(entete.valeur));
}

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  const auto tout = vue(octets, taille);
  verifier(tout);
  const auto ligne = FluxSSE::lire(tout);
  if (const auto* charge = std::get_if<FluxSSE::Ligne::charge>(&ligne.cas)) verifier(charge->texte);
  const std::string texte(tout);
  const std::string topic(ReglageNtfy::longueurMinimale, 't');
  verifier(ReglageNtfy{.serveur = texte, .topic = topic, .jeton = texte});
  verifier(ReglageNtfy{.topic = texte});
  return 0;
}
