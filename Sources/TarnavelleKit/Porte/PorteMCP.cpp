#include "Porte/PorteMCP.hpp"

#include <utility>

#include "Porte/CommandeControle.hpp"
#include "Porte/TableVerbes.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::PorteMCP {
namespace {

std::string_view sansPrefixe(std::string_view nom) {
  if (nom.starts_with(prefixe)) nom.remove_prefix(prefixe.size());
  return nom;
}

Json enveloppe(Identifiant id, const char* cle, Json contenu) {
  Json reponse = Json::object();
  auto& membres = reponse.get_ref<Json::object_t&>();
  membres.emplace("jsonrpc", "2.0");
  membres.emplace("id", std::move(id).value_or(nullptr));
  membres.emplace(cle, std::move(contenu));
  return reponse;
}

/// The line of a result that `ecrire` appends, of about that many bytes; as of `ligne`, "{}" when the id or
/// the result has no form.
template <class Ecrire>
std::string ligneEcrite(const Identifiant& id, std::size_t taille, Ecrire ecrire) {
  std::string texte;
  texte.reserve(taille + 128);
  texte += R"({"id":)";
  if (!id)
    texte += "null";
  else if (!EcritureJSON::ajouter(texte, *id))
    return "{}";
  texte += R"(,"jsonrpc":"2.0","result":)";
  if (!ecrire(texte)) return "{}";
  texte += '}';
  return texte;
}

Json contenuListe() { return {{"tools", outilsExposes()}}; }

}  // namespace

const OutilVoix& outilGuide() {
  static const OutilVoix guide{
      .nom = "guide",
      .description =
          "Rend le guide de l'agent Tarnavelle : où tu tournes, les variables d'environnement de la porte, "
          "tous les outils avec leur frontière, le repli `tarnavellectl` et les règles de conduite du plateau. "
          "À relire quand tu ne sais plus quel verbe couvre ce que tu veux faire.",
      .parametres = {}};
  return guide;
}

const std::set<std::string, std::less<>>& verbesAvecNodeId() {
  static const std::set<std::string, std::less<>> verbes = {"fini", "bloque"};
  return verbes;
}

void completerAgent(Json& corps, std::string_view nodeId) {
  nodeId = Texte::rogner(nodeId);
  if (nodeId.empty() || !verbesAvecNodeId().contains(Champ::texte(corps, "action"))) return;
  if (Texte::rogner(Champ::texte(corps, "agent")).empty()) corps["agent"] = nodeId;
}

Json outil(const OutilVoix& outil) {
  return {{"name", std::string(prefixe) + outil.nom},
          {"description", outil.description},
          {"inputSchema", outil.schema()}};
}

std::vector<Json> outils() {
  std::vector<Json> liste;
  for (const OutilVoix& verbe : CommandeControle::outilsPorte()) liste.push_back(outil(verbe));
  return liste;
}

std::vector<Json> outilsExposes() {
  auto liste = outils();
  liste.push_back(outil(outilGuide()));
  return liste;
}

std::vector<std::string> outilsDeLecture() {
  std::vector<std::string> noms;
  for (const LigneVerbe& ligne : tableVerbes())
    if (ligne.effets.lectureSeule) noms.push_back(std::string(prefixe) + ligne.outil.nom);
  noms.push_back(std::string(prefixe) + outilGuide().nom);
  return noms;
}

bool estLocal(std::string_view nom) { return sansPrefixe(nom) == outilGuide().nom; }

std::string verbe(std::string_view depuisOutil) {
  return CommandeControle::canonique(sansPrefixe(depuisOutil));
}

Json corpsAppel(std::string_view outil, Json arguments) {
  if (!arguments.is_object()) arguments = Json::object();
  arguments["action"] = verbe(outil);
  return arguments;
}

Json corpsAppel(std::string_view outil, Json arguments, std::string_view nodeId) {
  Json corps = corpsAppel(outil, std::move(arguments));
  completerAgent(corps, nodeId);
  return corps;
}

Json contenuAppel(std::string corpsJSON, bool ok) {
  Json element = Json::object();
  auto& membres = element.get_ref<Json::object_t&>();
  membres.emplace("type", "text");
  membres.emplace("text", std::move(corpsJSON));
  Json contenu = Json::array();
  contenu.push_back(std::move(element));
  Json resultat = Json::object();
  resultat["isError"] = !ok;
  resultat["content"] = std::move(contenu);
  return resultat;
}

Json refus(std::string_view message) { return {{"ok", false}, {"error", message}}; }

Json resultat(Identifiant id, Json resultat) { return enveloppe(std::move(id), "result", std::move(resultat)); }

Json erreur(Identifiant id, CodeErreur code, std::string_view message) {
  return enveloppe(std::move(id), "error", {{"code", static_cast<int>(code)}, {"message", message}});
}

Json reponseInitialize(Identifiant id) {
  return resultat(std::move(id), {{"protocolVersion", versionProtocole},
                                  {"capabilities", {{"tools", Json::object()}}},
                                  {"serverInfo", {{"name", nomServeur}, {"version", versionServeur}}}});
}

Json reponseListe(Identifiant id) { return resultat(std::move(id), contenuListe()); }

std::string ligne(const Json& objet) { return EcritureJSON::compacte(objet).value_or("{}"); }

std::string ligneResultat(const Identifiant& id, std::string_view resultatEcrit) {
  return ligneEcrite(id, resultatEcrit.size(), [&](std::string& texte) {
    texte += resultatEcrit;
    return true;
  });
}

std::string ligneAppel(const Identifiant& id, const ResultatAppel& appel) {
  return ligneEcrite(id, appel.corpsJSON.size() + appel.corpsJSON.size() / 8, [&](std::string& texte) {
    texte += R"({"content":[{"text":)";
    if (!EcritureJSON::ajouterTexte(texte, appel.corpsJSON)) return false;
    texte.append(R"(,"type":"text"}],"isError":)").append(appel.ok ? "false}" : "true}");
    return true;
  });
}

std::string ligneListe(const Identifiant& id) {
  static const std::string liste = ligne(contenuListe());
  return ligneResultat(id, liste);
}

}  // namespace tarnavelle::PorteMCP
