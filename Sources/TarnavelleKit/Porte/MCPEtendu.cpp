#include "Porte/MCPEtendu.hpp"

#include <algorithm>
#include <array>
#include <utility>

#include "Porte/TableVerbes.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::MCPEtendu {
namespace {

constexpr std::array<std::string_view, 4> versions = {"2024-11-05", "2025-03-26", "2025-06-18", "2025-11-25"};

constexpr std::string_view titreServeur = "Tarnavelle";
constexpr std::string_view uriGuide = "tarnavelle://guide";
constexpr std::string_view titreGuide = "Guide de l'agent Tarnavelle";
constexpr std::string_view guideEnAnglais = "Guide, help, documentation of these tools: how to use the board.";

/// Programs keep the first 2000 characters or so.
constexpr std::string_view instructions =
    "Tarnavelle est le plateau où tu tournes : des terminaux d'agents vivants, un navigateur, une mémoire "
    "partagée, des post-its. Les outils trv_* en sont la porte : ils disent qui travaille, lisent un écran, "
    "attendent un agent, lui écrivent, ouvrent, rangent, photographient.\n\n"
    "Commence par trv_etat : il donne les noms exacts, qui sont les cibles de tous les autres outils. Pour "
    "savoir "
    "si un agent a avancé, trv_attendre, plutôt que de relire son écran en boucle : il dure autant que son "
    "timeout_s, et d'autres appels peuvent se faire en même temps. Quand tu as fini, trv_fini ; quand il te "
    "faut "
    "une décision, trv_bloque. trv_guide dit le reste.\n\n"
    "Les outils se cherchent en mots simples, en français ou en anglais : la description de chacun porte les "
    "deux. "
    "In English: board state, which agents are running, read the screen or the scrollback of a terminal, wait "
    "until an agent is done, type or send a message to another agent, broadcast, press keys, screenshot, open "
    "a "
    "web page, run a shell command, run tests, spawn or restart an agent, shared memory notes, sticky note, "
    "arrange or close windows, chat with Hermes.";

Json annotations(std::string_view titre, const EffetsVerbe& effets) {
  Json json = {{"title", titre}, {"readOnlyHint", effets.lectureSeule}, {"openWorldHint", effets.ouvert}};
  if (!effets.lectureSeule) {  // they have no meaning otherwise
    json["destructiveHint"] = effets.destructif;
    json["idempotentHint"] = effets.repetable;
  }
  return json;
}

std::string_view typeJSON(Donnee::Genre genre) {
  switch (genre) {
    case Donnee::texte:
    case Donnee::lignes: return "string";
    case Donnee::nombre: return "number";
    case Donnee::booleen: return "boolean";
    case Donnee::liste: return "array";
  }
  return {};
}

/// The member of its data that is a screen, if any.
const Donnee* ecran(const LigneVerbe& ligne) {
  const auto trouve = std::ranges::find(ligne.donnees, Donnee::lignes, &Donnee::genre);
  return trouve == ligne.donnees.end() ? nullptr : &*trouve;
}

/// Whether its replies have a schema. A screen has none: programs show their models what has a schema as one
/// line of JSON, and the lines no more.
bool structuree(const LigneVerbe& ligne, Version version) {
  return version >= Version::v2025_06_18 && !ligne.donnees.empty() && !ecran(ligne);
}

/// Of a reply, what is known for sure: a member more is no fault, nor one that is not there.
Json schemaReponse(const LigneVerbe& ligne) {
  Json donnees = Json::object();
  for (const Donnee& d : ligne.donnees) donnees[std::string(d.nom)] = {{"type", typeJSON(d.genre)}};
  const Json membres = {
      {"ok", {{"type", "boolean"}, {"description", "false pour un refus, que dit error."}}},
      {"spoken_text", {{"type", "string"}, {"description", "Ce qui s'est passé, en une phrase."}}},
      {"error", {{"type", "string"}, {"description", "Pourquoi la porte refuse."}}},
      {"data", {{"type", "object"}, {"properties", std::move(donnees)}}}};
  return {{"type", "object"}, {"properties", membres}, {"required", Json::array({"ok"})}};
}

Json outil(const OutilVoix& verbe, std::string_view titre, std::string_view anglais,
           const std::vector<std::string_view>& alias, const EffetsVerbe& effets, Version version) {
  Json json = PorteMCP::outil(verbe);
  std::string mots = Texte::joindre(alias, ", ");
  std::ranges::replace(mots, '_', ' ');
  json["description"] = verbe.description + "\n\nIn English: " + std::string(anglais) +
                        (mots.empty() ? "" : " Also: " + mots + ".");
  if (version >= Version::v2025_03_26) json["annotations"] = annotations(titre, effets);
  if (version < Version::v2025_06_18) return json;
  json["title"] = titre;
  // By which Claude Code ranks what it finds, above the description. https://code.claude.com/docs/en/mcp
  json["_meta"] = {{"anthropic/searchHint", anglais}};
  return json;
}

std::string_view sansPoint(std::string_view phrase) {
  if (phrase.ends_with('.')) phrase.remove_suffix(1);
  return phrase;
}

Json titree(Json json, Version version) {
  if (version >= Version::v2025_06_18) json["title"] = titreGuide;
  return json;
}

/// Moves the screen out of the reply, behind it, as the lines that it is: a program that keeps a long text in a
/// file, for its model to read by lines, does so of a text that stands alone.
void deplierEcran(std::string& reponse, std::string_view membre) {
  auto json = LectureJSON::objet(reponse);
  const auto donnees = json ? json->find("data") : Json::iterator();
  if (!json || donnees == json->end() || !Champ::chaine(*donnees, membre)) return;
  const auto ecran = donnees->find(membre);
  const auto texte = std::move(ecran->get_ref<std::string&>());
  donnees->erase(ecran);
  reponse = PorteMCP::ligne(*json) + "\n\n" + texte;
}

}  // namespace

std::string_view nom(Version version) { return versions[static_cast<std::size_t>(version)]; }

Version negocier(std::string_view demandee) {
  const auto connue = std::ranges::find(versions, demandee);
  return connue == versions.end() ? derniere : static_cast<Version>(connue - versions.begin());
}

Json accueil(Version version) {
  Json serveur = {{"name", PorteMCP::nomServeur}, {"version", PorteMCP::versionServeur}};
  if (version >= Version::v2025_06_18) serveur["title"] = titreServeur;
  return {
      {"protocolVersion", nom(version)},
      {"capabilities", {{"tools", Json::object()}, {"resources", Json::object()}, {"prompts", Json::object()}}},
      {"serverInfo", std::move(serveur)},
      {"instructions", instructions}};
}

Json outils(Version version) {
  Json liste = Json::array();
  for (const LigneVerbe& ligne : tableVerbes()) {
    liste.push_back(
        outil(ligne.outil, sansPoint(ligne.bref), ligne.anglais, ligne.alias, ligne.effets, version));
    if (structuree(ligne, version)) liste.back()["outputSchema"] = schemaReponse(ligne);
  }
  liste.push_back(
      outil(PorteMCP::outilGuide(), titreGuide, guideEnAnglais, {}, {.lectureSeule = true}, version));
  return {{"tools", std::move(liste)}};
}

const LigneVerbe* ligne(std::string_view outil) { return LigneVerbe::de(PorteMCP::verbe(outil)); }

std::string resultatAppel(const PorteMCP::ResultatAppel& appel, const LigneVerbe* ligne, Version version) {
  std::string corps = appel.corpsJSON;
  if (const Donnee* membre = ligne ? ecran(*ligne) : nullptr) deplierEcran(corps, membre->nom);
  const bool structure = appel.objet && ligne && structuree(*ligne, version);
  std::string texte;
  texte.reserve(corps.size() * (structure ? 2 : 1) + corps.size() / 8 + 128);
  texte += R"({"content":[{"text":)";
  if (!EcritureJSON::ajouterTexte(texte, corps)) texte += R"("")";
  texte.append(R"(,"type":"text"}],"isError":)").append(appel.ok ? "false" : "true");
  if (structure) {
    texte += R"(,"structuredContent":)";
    // Between its tokens a reply may have line feeds, which would end ours.
    std::ranges::replace_if(
        corps, [](char c) { return c == '\n' || c == '\r'; }, ' ');
    texte += corps;
  }
  return texte += '}';
}

Json ressources(Version version) {
  const Json guide = {{"uri", uriGuide},
                      {"name", "guide"},
                      {"description", PorteMCP::outilGuide().description},
                      {"mimeType", "text/markdown"}};
  return {{"resources", Json::array({titree(guide, version)})}};
}

std::optional<Json> ressource(std::string_view uri, const std::string& guide) {
  if (uri != uriGuide) return std::nullopt;
  const Json contenu = {{"uri", uriGuide}, {"mimeType", "text/markdown"}, {"text", guide}};
  return Json{{"contents", Json::array({contenu})}};
}

Json invites(Version version) {
  const Json guide = {{"name", "guide"}, {"description", PorteMCP::outilGuide().description}};
  return {{"prompts", Json::array({titree(guide, version)})}};
}

std::optional<Json> invite(std::string_view nom, const std::string& guide) {
  if (nom != "guide") return std::nullopt;
  const Json message = {{"role", "user"}, {"content", {{"type", "text"}, {"text", guide}}}};
  return Json{{"description", titreGuide}, {"messages", Json::array({message})}};
}

Json progres(const Json& jeton, std::chrono::seconds ecoulees, std::optional<std::chrono::seconds> total,
             Version version) {
  Json params = {{"progressToken", jeton}, {"progress", ecoulees.count()}};
  if (total) params["total"] = total->count();
  if (version >= Version::v2025_03_26)
    params["message"] = std::to_string(ecoulees.count()) + " s" +
                        (total ? " sur " + std::to_string(total->count()) + " au plus" : "");
  return {{"jsonrpc", "2.0"}, {"method", "notifications/progress"}, {"params", std::move(params)}};
}

}  // namespace tarnavelle::MCPEtendu
