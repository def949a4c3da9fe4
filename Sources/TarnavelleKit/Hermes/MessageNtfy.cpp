#include "Hermes/MessageNtfy.hpp"

#include <array>

#include "Socle/LectureIndulgente.hpp"

namespace tarnavelle {
namespace {

constexpr std::array<std::string_view, 6> clesLues = {"event", "id",    "message",
                                                      "time",  "title", "topic"};  // sorted
constexpr std::array<std::string_view, 1> cleHeure = {"time"};

std::optional<Date::Instant> heureDe(const Json& objet) {
  const Json* time = Champ::membre(objet, cleHeure.front());
  const auto secondes = time ? reel(*time) : std::nullopt;
  if (!secondes) return std::nullopt;
  return Date::depuisSecondes(*secondes);
}

}  // namespace

LectureNtfy MessageNtfy::lire(std::string_view ligne, std::optional<std::string_view> topicAttendu) {
  const auto objet = LectureIndulgente::objet(ligne, {clesLues});
  if (!objet) return {LectureNtfy::rien{}};
  std::string topic = Champ::texte(*objet, "topic");
  if (topicAttendu && !topicAttendu->empty() && *topicAttendu != topic) return {LectureNtfy::rien{}};

  const std::string evenement = Champ::texte(*objet, "event");
  if (evenement == "open" || evenement == "keepalive") return {LectureNtfy::vivant{}};
  if (evenement != "message") return {LectureNtfy::rien{}};

  std::string id = Champ::texte(*objet, "id");
  std::string titre = Champ::texte(*objet, "title");
  std::string texte = Champ::texte(*objet, "message");
  if (texte.empty()) texte = titre;
  if (id.empty() || texte.empty()) return {LectureNtfy::rien{}};

  return {LectureNtfy::message{{.id = std::move(id),
                                .date = heureDe(*objet).value_or(Date::Instant()),
                                .topic = std::move(topic),
                                .titre = titre.empty() ? std::nullopt : std::optional(std::move(titre)),
                                .texte = std::move(texte)}}};
}

std::optional<Date::Instant> MessageNtfy::heure(std::string_view ligne) {
  const auto objet = LectureIndulgente::objet(ligne, {cleHeure});
  return objet ? heureDe(*objet) : std::nullopt;
}

}  // namespace tarnavelle
