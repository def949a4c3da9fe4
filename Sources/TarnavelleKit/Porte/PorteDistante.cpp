#include "Porte/PorteDistante.hpp"

#include <utility>

#include "Socle/EcritureJSON.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Shell.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

/// A shell started from afar may not have the folders where the operator's programs are.
constexpr std::string_view prefixe = "PATH=\"$PATH:$HOME/.local/bin:/opt/homebrew/bin:/usr/local/bin\" ";

std::string parSh(const std::string& commande) {
  return "sh -c " + Shell::mot(std::string(prefixe) + commande);
}

std::string entreGuillemets(std::string_view texte) { return "« " + std::string(texte) + " »"; }

const Json::array_t& elements(const Json& objet, std::string_view cle) {
  static const Json::array_t aucun;
  const Json* membre = Champ::membre(objet, cle);
  return membre && membre->is_array() ? membre->get_ref<const Json::array_t&>() : aucun;
}

std::vector<std::string> textes(const Json& objet, std::string_view cle) {
  std::vector<std::string> liste;
  for (const Json& element : elements(objet, cle))
    if (element.is_string()) liste.push_back(element.get<std::string>());
  return liste;
}

}  // namespace

std::string PlateauMac::recit() const {
  std::vector<std::string> phrases;
  if (!scene.empty()) phrases.push_back("SCÈNE VISIBLE sur le Mac : " + entreGuillemets(scene) + ".");
  if (!autresScenes.empty())
    phrases.push_back("Autres scènes : " + Texte::joindre(autresScenes, ", ", entreGuillemets) + ".");
  if (!agents.empty())
    phrases.push_back("Agents ouverts là-bas : " +
                      Texte::joindre(agents, ", ", [](const auto& a) { return a.nom + " (" + a.etat + ")"; }) +
                      ".");
  if (!crew.empty()) phrases.push_back("Fenêtres du cockpit : " + Texte::joindre(crew, ", ") + ".");
  return Texte::joindre(phrases, " ");
}

const std::string& PorteDistante::commandeLecture() {
  static const std::string commande =
      parSh("cat \"$HOME\"/" + Shell::mot(PorteControle::cheminEndpointUsuel()) + " 2>/dev/null");
  return commande;
}

std::optional<EndpointPorte> PorteDistante::analyserEndpoint(std::string_view texte) {
  auto endpoint = EndpointPorte::lire(Texte::rogner(texte));
  if (!endpoint || endpoint->port < 1 || endpoint->port > 65535) return std::nullopt;
  if (Texte::rognerBlancs(endpoint->token).empty()) return std::nullopt;
  endpoint->host = Texte::rognerBlancs(endpoint->host);
  if (endpoint->host.empty()) endpoint->host = "127.0.0.1";
  return endpoint;
}

std::optional<std::string> PorteDistante::corpsAction(const CommandeControle& commande) {
  using C = CommandeControle;
  // Not a visit: what is not named here is not relayed, commands to come included.
  if (const auto* c = std::get_if<C::focus>(&commande.cas))
    return EcritureJSON::compacte({{"action", "focus"}, {"cible", c->cible}});
  if (const auto* c = std::get_if<C::allerScene>(&commande.cas))
    return EcritureJSON::compacte({{"action", "aller_scene"}, {"nom", c->nom}});
  if (const auto* c = std::get_if<C::ouvrirAgent>(&commande.cas))
    return EcritureJSON::compacte(
        {{"action", "ouvrir_agent"}, {"cli", c->cli}, {"dossier", c->dossier}, {"hote", c->hote}});
  if (const auto* c = std::get_if<C::ouvrirWeb>(&commande.cas))
    return EcritureJSON::compacte({{"action", "ouvrir_web"}, {"cible", c->cible}, {"externe", c->externe}});
  if (std::holds_alternative<C::etat>(commande.cas))
    return EcritureJSON::compacte({{"action", "etat"}, {"format", "json"}});
  return std::nullopt;
}

std::string PorteDistante::commandeAction(const EndpointPorte& endpoint, std::string_view corps) {
  return parSh("curl -s -m 5 -X POST " + Shell::mot(endpoint.url()) + " -H " +
               Shell::mot("Authorization: Bearer " + endpoint.token) + " -H " +
               Shell::mot("Content-Type: application/json") + " --data-binary " + Shell::mot(corps));
}

std::optional<ReponsePorte> PorteDistante::analyserReponse(std::string_view texte) {
  return ReponsePorte::lire(Texte::rogner(texte));
}

std::optional<PlateauMac> PorteDistante::plateau(const ReponsePorte& depuisReponse) {
  if (!depuisReponse.ok || !depuisReponse.data) return std::nullopt;
  const Json data = depuisReponse.data->json();  // anything but an object reads as an empty one
  PlateauMac plateau{.scene = Champ::texte(data, "scene"),
                     .autresScenes = textes(data, "autres_scenes"),
                     .agents = {},
                     .crew = textes(data, "crew"),
                     .ancrages = {},
                     .dossier = Champ::texte(data, "dossier")};
  const auto ajouter = [&plateau](const Json& agent, const std::string& scene, const std::string& etat) {
    const std::string nom = Champ::texte(agent, "nom");
    if (nom.empty()) return;
    plateau.agents.push_back({nom, etat});
    plateau.ancrages.push_back({nom, scene, Champ::texte(agent, "tmux"), Champ::texte(agent, "hote")});
  };
  for (const Json& agent : elements(data, "agents")) ajouter(agent, plateau.scene, Champ::texte(agent, "etat"));
  for (const Json& agent : elements(data, "ailleurs")) {
    const std::string scene = Champ::texte(agent, "scene");
    ajouter(agent, scene, scene.empty() ? "ailleurs" : "sur " + entreGuillemets(scene));
  }
  if (plateau.recit().empty()) return std::nullopt;
  return plateau;
}

bool PorteDistante::doitDecouvrir(const std::optional<EndpointPorte>& cache,
                                  std::optional<std::chrono::duration<double>> ageSecondes, bool apresEchec,
                                  std::chrono::duration<double> fraicheurMax) {
  return !cache || apresEchec || !ageSecondes || *ageSecondes > fraicheurMax;
}

}  // namespace tarnavelle
