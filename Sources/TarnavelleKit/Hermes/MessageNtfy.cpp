#include "Hermes/MessageNtfy.hpp"

#include "Socle/LectureIndulgente.hpp"
#include "Socle/MembresLus.hpp"

namespace tarnavelle {
namespace {

constexpr auto clesLues =
    clesReunies(std::to_array<std::string_view>({"event", "id", "message", "time", "title", "topic"}));
using Avis = MembresLus<clesLues>;

std::optional<Date::Instant> heureDe(const Avis& avis) {
  const auto secondes = avis["time"].reel();
  if (!secondes) return std::nullopt;
  return Date::depuisSecondes(*secondes);
}

}  // namespace

LectureNtfy MessageNtfy::lire(std::string_view ligne, std::optional<std::string_view> topicAttendu) {
  const auto objet = LectureIndulgente::objet(ligne, Avis::filtre);
  if (!objet) return {LectureNtfy::rien{}};
  const Avis avis(*objet);
  const auto topic = avis["topic"].texte();
  if (topicAttendu && !topicAttendu->empty() && *topicAttendu != topic) return {LectureNtfy::rien{}};

  const auto evenement = avis["event"].texte();
  if (evenement == "open" || evenement == "keepalive") return {LectureNtfy::vivant{}};
  if (evenement != "message") return {LectureNtfy::rien{}};

  const auto id = avis["id"].texte();
  const auto titre = avis["title"].texte();
  const auto texte = avis["message"].texte().empty() ? titre : avis["message"].texte();
  if (id.empty() || texte.empty()) return {LectureNtfy::rien{}};

  return {LectureNtfy::message{{.id = std::string(id),
                                .date = heureDe(avis).value_or(Date::Instant()),
                                .topic = std::string(topic),
                                .titre = titre.empty() ? std::nullopt : std::optional<std::string>(titre),
                                .texte = std::string(texte)}}};
}

std::optional<Date::Instant> MessageNtfy::heure(std::string_view ligne) {
  const auto objet = LectureIndulgente::objet(ligne, Avis::filtre);
  return objet ? heureDe(Avis(*objet)) : std::nullopt;
}

}  // namespace tarnavelle
