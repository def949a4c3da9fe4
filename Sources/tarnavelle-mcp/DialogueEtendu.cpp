#include "DialogueEtendu.hpp"

#include <array>
#include <new>
#include <string_view>
#include <utility>

#include "Porte/GuideAgent.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

using PorteMCP::CodeErreur;

/// What is read of a message.
constexpr std::array<std::string_view, 5> cles = {"error", "id", "method", "params", "result"};
constexpr LectureJSON::Filtre membresLus{.cles = cles, .enTeteSeulement = true};

/// A request's id, and a progress token: a text or an integer. https://www.jsonrpc.org/specification lets a
/// number have decimals, MCP does not; who uses one anyway gets it back.
bool estIdentifiant(const Json& valeur) { return valeur.is_string() || valeur.is_number(); }

Json prendreObjet(Json& parent, std::string_view cle) {
  const auto membre = parent.find(cle);
  if (membre == parent.end() || !membre->is_object()) return Json::object();
  return std::move(*membre);
}

}  // namespace

void DialogueEtendu::recevoir(const LecteurLignes::Ligne& ligne, std::optional<int> entree) {
  const auto texte = Texte::rogner(ligne.texte);
  if (texte.empty() && !ligne.tropLongue) return;
  try {
    if (texte.starts_with('[')) {
      if (auto messages = LectureJSON::valeur(texte)) return recevoirLot(std::move(*messages));
    } else if (auto message = LectureJSON::valeur(texte, membresLus)) {
      return traiter(*message, std::make_shared<Destination>(ecrivain_, false), entree);
    }
  } catch (const std::bad_alloc&) {  // a line too large for this machine
  }
  ecrivain_.ligne(ligneErreur({}, CodeErreur::illisible, "JSON illisible"));
}

void DialogueEtendu::recevoirLot(Json messages) {
  const bool connu = version_ == MCPEtendu::Version::v2025_03_26;
  if (!connu || messages.empty())
    return ecrivain_.ligne(
        ligneErreur({}, CodeErreur::requete,
                    connu ? "Lot vide" : "Cette version du protocole n'a pas de lots de requêtes"));
  const auto vers = std::make_shared<Destination>(ecrivain_, true);
  for (Json& message : messages) traiter(message, vers);
}

void DialogueEtendu::traiter(Json& message, const Vers& vers, std::optional<int> entree) {
  const Json* methode = Champ::membre(message, "method");
  const auto membreId = message.is_object() ? message.find("id") : message.end();
  const bool aUnId = message.is_object() && membreId != message.end();
  if (!methode && aUnId && (message.contains("result") || message.contains("error")))
    return;  // we asked nothing
  if (!methode || !methode->is_string() || (aUnId && !estIdentifiant(*membreId)))
    return vers->rendre(ligneErreur({}, CodeErreur::requete, "Requête JSON-RPC invalide"));
  const std::string nom = methode->get<std::string>();
  Json params = prendreObjet(message, "params");
  if (!aUnId) {
    const Json* annulee = Champ::membre(params, "requestId");
    if (nom == "notifications/cancelled" && annulee) appels_.annuler(*annulee);
    return;
  }
  Json id = std::move(*membreId);
  if (nom == "tools/call") return appeler(std::move(id), params, vers, entree);
  if (auto reponse = repondre(nom, id, params)) return vers->rendre(std::move(*reponse));
  vers->rendre(ligneErreur(std::move(id), CodeErreur::methodeInconnue, "Méthode inconnue : " + nom));
}

/// The reply to what the bridge answers by itself; nothing for a method it has not.
std::optional<std::string> DialogueEtendu::repondre(const std::string& methode, const Json& id,
                                                    const Json& params) {
  const auto resultat = [&](const Json& json) { return PorteMCP::ligneResultat(id, PorteMCP::ligne(json)); };
  if (methode == "ping") return PorteMCP::ligneResultat(id, "{}");
  if (methode == "initialize") {
    version_ = MCPEtendu::negocier(Champ::texte(params, "protocolVersion"));
    outils_.reset();
    return resultat(MCPEtendu::accueil(version_));
  }
  if (methode == "tools/list") {
    if (!outils_) outils_ = PorteMCP::ligne(MCPEtendu::outils(version_));
    return PorteMCP::ligneResultat(id, *outils_);
  }
  if (methode == "resources/list") return resultat(MCPEtendu::ressources(version_));
  if (methode == "resources/templates/list") return resultat({{"resourceTemplates", Json::array()}});
  if (methode == "prompts/list") return resultat(MCPEtendu::invites(version_));
  if (methode == "resources/read") {
    const auto uri = Champ::texte(params, "uri");
    if (const auto lue = MCPEtendu::ressource(uri, guide())) return resultat(*lue);
    return ligneErreur(id, CodeErreur::ressource, "Ressource inconnue : " + uri);
  }
  if (methode == "prompts/get") {
    const auto nom = Champ::texte(params, "name");
    if (const auto lue = MCPEtendu::invite(nom, guide())) return resultat(*lue);
    return ligneErreur(id, CodeErreur::parametres, "Invite inconnue : " + nom);
  }
  return std::nullopt;
}

void DialogueEtendu::appeler(Json id, Json& params, const Vers& vers, std::optional<int> entree) {
  const std::string outil = Champ::texte(params, "name");
  if (outil.empty())
    return vers->rendre(ligneErreur(std::move(id), CodeErreur::parametres, "tools/call sans nom d'outil"));
  if (PorteMCP::estLocal(outil))
    return vers->rendre(PorteMCP::ligneResultat(
        id, MCPEtendu::resultatAppel({.corpsJSON = guide(), .ok = true}, nullptr, version_)));
  DemandeAppel demande{.id = std::move(id), .version = version_, .destination = vers};
  const Json meta = prendreObjet(params, "_meta");
  if (const Json* jeton = Champ::membre(meta, "progressToken"); jeton && estIdentifiant(*jeton))
    demande.jeton = *jeton;
  demande.ligne = MCPEtendu::ligne(outil);
  const Json corps = PorteMCP::corpsAppel(outil, prendreObjet(params, "arguments"),
                                          monde_.environnement().texte("TARNAVELLE_NODE_ID").value_or(""));
  demande.delai = demande.ligne ? demande.ligne->delaiDe(corps) : std::nullopt;
  demande.corps = EcritureJSON::compacte(corps).value_or("");
  appels_.ajouter(std::move(demande), entree);
}

/// Of an id that is not known, the latest version wants no word, JSON-RPC and the others null.
std::string DialogueEtendu::ligneErreur(PorteMCP::Identifiant id, CodeErreur code,
                                        std::string_view message) const {
  const bool tue = !id && version_ >= MCPEtendu::Version::v2025_11_25;
  Json erreur = PorteMCP::erreur(std::move(id), code, message);
  if (tue) erreur.erase("id");
  return PorteMCP::ligne(erreur);
}

std::string DialogueEtendu::guide() const {
  return GuideAgent::markdown(GuideAgent::Contexte::depuisEnvironnement(
      monde_.environnement(), {.binaireCtl = "", .binaireMCP = monde_.binaireMCP}));
}

void servirEtendu(int entree, DialogueEtendu& dialogue) {
  LecteurLignes lecteur(entree);
  while (const auto ligne = lecteur.suivante())
    dialogue.recevoir(*ligne, lecteur.vide() ? std::optional(entree) : std::nullopt);
  dialogue.finir();
}

}  // namespace tarnavelle
