#include "Hermes/ReglagesHermes.hpp"

#include <array>

#include "Hermes/RequeteGateway.hpp"
#include "Socle/URL.hpp"

namespace tarnavelle {
namespace {

std::string topicMasque(const std::string& topic) { return ReglageNtfy{.topic = topic}.topicMasque(); }

constexpr std::array<Reglages::Cle, 12> table = {{
    {ReglageNtfy::cleServeur, "serveur ntfy des avis d'Hermès"},
    {ReglageNtfy::cleTopic, "topic de ces avis", topicMasque},
    {ReglageNtfy::cleJeton, "jeton pour ce serveur", Reglages::enSecret},
    {ReglagesHermes::clePasserelle, "adresse de la passerelle"},
    {ReglagesHermes::cleSecrete, "clé de la passerelle", Reglages::enSecret},
    {ReglagesHermes::cleHote, "machine d'Hermès, jointe par ssh"},
    {RequeteGateway::cleModeleLocale, "modèle demandé"},
    {ReglagesHermes::cleServeurAlertes, "serveur ntfy des alertes du plateau"},
    {ReglagesHermes::cleTopicAlertes, "topic de ces alertes", topicMasque},
    {ReglagesHermes::cleJetonAlertes, "jeton pour ce serveur", Reglages::enSecret},
    {ReglagesHermes::cleDetailAlertes, "1 pour que les alertes citent l'écran"},
    {ReglagesHermes::clePlateauDistant, "second Mac, joint par ssh, dont le plateau se pilote d'ici"},
}};

}  // namespace

const Reglages::Famille& ReglagesHermes::famille() {
  static constexpr Famille reglages{.fichier = "reglages", .cles = table};
  return reglages;
}

ReglageNtfy ReglagesHermes::ntfy() const {
  ReglageNtfy reglage;
  reglage.serveur = texte(ReglageNtfy::cleServeur).value_or(reglage.serveur);
  reglage.topic = texte(ReglageNtfy::cleTopic).value_or("");
  reglage.jeton = texte(ReglageNtfy::cleJeton).value_or("");
  return reglage;
}

ReglageNtfy ReglagesHermes::alertes() const {
  ReglageNtfy reglage;
  reglage.serveur = texte(cleServeurAlertes).value_or(reglage.serveur);
  reglage.topic = texte(cleTopicAlertes).value_or("");
  reglage.jeton = texte(cleJetonAlertes).value_or("");
  return reglage;
}

ReglagesHermes::Passerelle ReglagesHermes::passerelle() const {
  return {.url = texte(clePasserelle).value_or(""),
          .cle = texte(cleSecrete).value_or(""),
          .hote = texte(cleHote).value_or(""),
          .modele = texte(RequeteGateway::cleModeleLocale)};
}

std::optional<std::string> ReglagesHermes::refusPasserelle(std::string_view url) {
  const auto lue = URL::lire(url);
  if (!lue || lue->port == 0) return "L'adresse de la passerelle n'est pas lisible.";
  if (lue->hoteEtPort.data() != url.data() + lue->schema.size() + 3)
    return "L'adresse de la passerelle ne doit contenir ni nom ni mot de passe.";
  if (lue->schema == "https" || (lue->schema == "http" && ReglageNtfy::estLoopback(lue->hote)))
    return std::nullopt;
  return "L'adresse de la passerelle doit être en https:// (http:// n'est toléré que sur la machine même).";
}

std::string ReglagesHermes::hotePour(const std::string& hote) const {
  if (!hote.empty() || texte(clePasserelle)) return hote;
  return texte(cleHote).value_or("");
}

std::optional<std::string> ReglagesHermes::refusVoie(const std::string& hote) const {
  if (!hotePour(hote).empty()) return std::nullopt;
  if (const auto url = texte(clePasserelle)) return refusPasserelle(*url);
  return "Rien ne dit comment joindre Hermès : réglez " + std::string(clePasserelle) + " (une adresse) ou " +
         std::string(cleHote) + " (une machine, par ssh).";
}

std::string ReglagesHermes::lieu(const std::string& hote) const {
  if (auto machine = hotePour(hote); !machine.empty()) return machine;
  const auto url = URL::lire(texte(clePasserelle).value_or(""));
  return url ? url->hote : "";
}

}  // namespace tarnavelle
