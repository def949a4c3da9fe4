#include "Repartiteur.hpp"

#include <array>
#include <new>
#include <string_view>
#include <utility>

#include "ContenuReponse.hpp"
#include "Porte/GuideAgent.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

using PorteMCP::CodeErreur;

/// What is read of a request.
constexpr std::array<std::string_view, 3> cles = {"id", "method", "params"};
constexpr LectureJSON::Filtre membresLus{.cles = cles, .enTeteSeulement = true};

/// The member when it is an object, taken out of its parent; else an empty object.
Json prendreObjet(Json& parent, std::string_view cle) {
  const auto membre = parent.find(cle);
  if (membre == parent.end() || !membre->is_object()) return Json::object();
  return std::move(*membre);
}

}  // namespace

std::optional<std::string> Repartiteur::repondre(const LecteurLignes::Ligne& ligne) {
  const auto texte = Texte::rogner(ligne.texte);
  if (texte.empty() && !ligne.tropLongue) return std::nullopt;
  try {
    if (auto message = LectureJSON::objet(texte, membresLus)) {
      auto reponse = traiter(*message);
      message->clear();  // member by member: the destructor would first gather them in a list of its own
      return reponse;
    }
  } catch (const std::bad_alloc&) {  // a line too large for this machine
  }
  return PorteMCP::ligne(PorteMCP::erreur({}, CodeErreur::illisible, "JSON illisible"));
}

std::optional<std::string> Repartiteur::traiter(Json& message) {
  PorteMCP::Identifiant id;
  if (const auto membre = message.find("id"); membre != message.end()) id = std::move(*membre);
  const auto membre = message.find("method");
  if (membre == message.end() || !membre->is_string()) return std::nullopt;
  const auto& methode = membre->get_ref<const std::string&>();

  if (methode == "initialize") return PorteMCP::ligne(PorteMCP::reponseInitialize(std::move(id)));
  if (methode == "notifications/initialized" || methode == "notifications/cancelled") return std::nullopt;
  if (methode == "ping") return PorteMCP::ligneResultat(id, "{}");
  if (methode == "tools/list") return PorteMCP::ligneListe(id);
  if (!id) return std::nullopt;
  if (methode != "tools/call")
    return PorteMCP::ligne(
        PorteMCP::erreur(std::move(id), CodeErreur::methodeInconnue, "Méthode inconnue : " + methode));

  Json params = prendreObjet(message, "params");
  const std::string outil = Champ::texte(params, "name");
  if (outil.empty())
    return PorteMCP::ligne(
        PorteMCP::erreur(std::move(id), CodeErreur::parametres, "tools/call sans nom d'outil"));
  try {
    return PorteMCP::ligneAppel(id, appeler(outil, prendreObjet(params, "arguments")));
  } catch (const std::bad_alloc&) {  // a reply too large for this machine
    return PorteMCP::ligneAppel(id, contenuReponse({}));
  }
}

PorteMCP::ResultatAppel Repartiteur::appeler(const std::string& outil, Json arguments) {
  if (PorteMCP::estLocal(outil)) {
    const auto contexte = GuideAgent::Contexte::depuisEnvironnement(
        monde_.environnement(), {.binaireCtl = "", .binaireMCP = monde_.binaireMCP});
    return {.corpsJSON = GuideAgent::markdown(contexte), .ok = true};
  }
  const Variables environnement = monde_.environnement();
  const auto porte = PorteControle::resoudrePorte(environnement);
  if (!porte) return {.corpsJSON = PorteMCP::ligne(PorteMCP::refus(porteIntrouvable)), .ok = false};
  const auto nodeId = environnement.texte("TARNAVELLE_NODE_ID").value_or("");
  return contenuReponse(appel_.posterPorte(PorteMCP::corpsAppel(outil, std::move(arguments), nodeId), *porte));
}

}  // namespace tarnavelle
