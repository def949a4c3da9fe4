#include "Branchement.hpp"

#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "Agents/ConfigurationMCP.hpp"
#include "Agents/InjectionPorte.hpp"
#include "Chemins.hpp"
#include "Depot.hpp"
#include "DirePorte.hpp"
#include "Porte/PorteControle.hpp"
#include "Porte/PorteMCP.hpp"
#include "Porte/Programme.hpp"
#include "Socle/Colonnes.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Branchement {
namespace {

using ConfigurationMCP::Approbation;
using ConfigurationMCP::Demande;
using ConfigurationMCP::Forme;
using Genre = ParamVoix::Genre;

int refuser(Session& session, std::string_view message) {
  session.erreurs.avertir(message);
  return Statut::mauvaiseLigne;
}

/// The form asked for, the usual one by default; null, once the operator is told, when two are.
const Forme* formeVoulue(Session& session, const Json& arguments) {
  const Forme* voulue = nullptr;
  for (const Forme& forme : ConfigurationMCP::formes()) {
    if (!Champ::booleen(arguments, forme.nom, false)) continue;
    if (voulue) {
      refuser(session,
              "Une forme à la fois : --" + std::string(voulue->nom) + " ou --" + std::string(forme.nom) + ".");
      return nullptr;
    }
    voulue = &forme;
  }
  return voulue ? voulue : &ConfigurationMCP::formes().front();
}

constexpr std::string_view inaffichable =
    " contient un caractère de contrôle, ou n'est pas de l'UTF-8 valide : une ligne à coller ne le dirait pas.";

bool affichable(std::string_view texte) { return Texte::utf8Valide(texte) && !Texte::porteControle(texte); }

/// The absolute path of a file as it was typed; empty without one.
std::string absolu(const std::string& tape, const Session& session) {
  std::error_code erreur;
  const auto courant = std::filesystem::current_path(erreur);
  return tape.empty() ? tape : Chemins::absolu(tape, courant, dossierPersonnel(session.environnement)).string();
}

std::optional<Approbation> approbation(const std::string& mot) {
  if (mot.empty()) return Approbation::aucune;
  if (mot == "lecture") return Approbation::lecture;
  if (mot == "tout") return Approbation::tout;
  return std::nullopt;
}

/// The option that a word given as the file's name was probably meant for.
std::string optionVoulue(std::string_view mot) {
  if (mot == "lecture" || mot == "tout") return "--approuver " + std::string(mot);
  for (const Forme& forme : ConfigurationMCP::formes())
    if (forme.nom == mot) return "--" + std::string(mot);
  return {};
}

/// Whether the endpoint file leads elsewhere than to the door that this environment gives.
bool horsDuFichier(const Variables& environnement, const std::optional<PorteResolue>& porte) {
  if (!porte) return false;
  const auto fichier = PorteControle::lireEndpoint(PorteControle::cheminEndpoint(environnement));
  return !fichier || PorteResolue{fichier->url(), fichier->token} != *porte;
}

void conseiller(Session& session, std::string_view conseil) {
  for (std::string& ligne : Colonnes::plier(conseil, session.erreurs.colonnes().value_or(conseil.size())))
    session.erreurs.montrer({{std::move(ligne)}});
}

void dire(Session& session, const Forme& forme, const Demande& demande, const std::string& fichier) {
  if (const auto lignes = forme.lignes(demande, fichier); !lignes.empty()) {
    session.erreurs.montrer({{"À coller :", true}});
    for (const std::string& ligne : lignes) session.erreurs.montrer({{ligne}});
  } else {
    const bool fichierAiderait = fichier.empty() && !forme.lignes(demande, "fichier").empty();
    conseiller(session,
               "Pas de ligne à coller : elle montrerait le jeton." +
                   std::string(fichierAiderait ? " Écrivez le texte par --fichier, il y en aura une." : ""));
    if (forme.approbationAuLancement && demande.approbation != Approbation::aucune)
      conseiller(session, "Le texte n'approuve rien : ajoutez à chaque lancement" +
                              forme.approbationAuLancement(demande));
  }
  conseiller(session, "Pour durer : " + std::string(forme.lieu) + ".");
  if (demande.porteHeritee && !demande.variables.contains("TARNAVELLE_CONTROL_URL"))
    conseiller(session,
               "Cette porte n'est connue que de l'environnement (TARNAVELLE_CONTROL_URL), pas du fichier du "
               "cockpit : la configuration vaut pour un agent lancé avec ces variables. --fige les y écrit.");
  const std::string sans = std::string(forme.sansApprobation) +
                           ". De quoi tout approuver : " + std::string(forme.approbationTotale) + ".";
  switch (demande.approbation) {
    case Approbation::aucune:
      conseiller(session, "Rien n'est approuvé : " + sans + " --approuver lecture|tout l'écrit pour vous.");
      break;
    case Approbation::lecture:
      conseiller(session, "Approuvés, car ils ne changent rien : " + Texte::joindre(demande.lecture, ", ") +
                              ". Pour les autres, " + sans);
      break;
    case Approbation::tout:
      session.erreurs.avertir(
          "Attention : tout est approuvé, trv_shell compris : l'agent lancera des commandes "
          "sans rien vous demander.");
      break;
  }
  if (forme.jetonEnArgument && ConfigurationMCP::secrete(demande))
    session.erreurs.avertir(
        "Attention : le programme aura le jeton parmi ses arguments, que montre la liste des processus.");
  if (!forme.remarque.empty()) conseiller(session, forme.remarque);
}

}  // namespace

std::vector<ParamVoix> parametres() {
  std::vector<ParamVoix> liste;
  for (const Forme& forme : ConfigurationMCP::formes())
    liste.push_back(
        {std::string(forme.nom), Genre::booleen, "true pour " + std::string(forme.objet) + ".", false});
  liste.push_back(
      {"fichier", Genre::texte, "Où l'écrire, lisible de son seul propriétaire. Vide = la sortie.", false});
  liste.push_back(
      {"approuver", Genre::texte,
       "lecture pour que l'agent appelle sans demander les outils qui ne changent rien, tout pour qu'il "
       "les appelle tous : shell lance des commandes. Vide = rien n'est approuvé.",
       false});
  liste.push_back(
      {"fige", Genre::booleen,
       "true pour y écrire l'adresse et le jeton de la porte ouverte : c'est alors un secret, qui ne "
       "vaut plus rien quand la porte se ferme.",
       false});
  liste.push_back(
      {"etendu", Genre::booleen,
       "true pour que le pont parle le protocole d'aujourd'hui : outils annotés et qui se cherchent en mots "
       "simples, plusieurs appels à la fois, attentes longues.",
       false});
  return liste;
}

int configurationMCP(Session& session, const Json& arguments) {
  const Forme* forme = formeVoulue(session, arguments);
  if (!forme) return Statut::mauvaiseLigne;
  const std::string tape = Champ::texte(arguments, "fichier");
  if (const auto option = optionVoulue(tape); !option.empty())
    return refuser(session, citer(tape) + " serait ici le nom d'un fichier. L'option s'écrit " + option +
                                ", ce fichier ./" + tape + ".");
  const std::string approuver = Champ::texte(arguments, "approuver");
  const auto approuve = approbation(approuver);
  if (!approuve) return refuser(session, "--approuver vaut lecture ou tout, pas " + citer(approuver) + ".");
  const auto pont = Programme::pont(session.environnement);
  if (!pont) {
    const auto choisi = session.environnement.texte("TARNAVELLE_MCP_SERVER");
    return refuser(session, choisi
                                ? "TARNAVELLE_MCP_SERVER ne désigne pas un exécutable : " + citer(*choisi) + "."
                                : "Pont introuvable : il n'y a pas de tarnavelle-mcp à côté de ce programme.");
  }
  if (!affichable(*pont)) return refuser(session, "Le chemin du pont" + std::string(inaffichable));
  const std::string fichier = absolu(tape, session);
  if (!affichable(fichier)) return refuser(session, "Le chemin du fichier" + std::string(inaffichable));

  const auto recherche = PorteControle::chercherPorte(session.environnement);
  const auto& porte = recherche.porte;
  Demande demande{.pont = *pont,
                  .porteHeritee = horsDuFichier(session.environnement, porte),
                  .approbation = *approuve,
                  .lecture = PorteMCP::outilsDeLecture()};
  if (Champ::booleen(arguments, "fige", false)) {
    if (!porte) {
      for (const std::string& message : DirePorte::introuvable(recherche, session.environnement))
        session.erreurs.avertir(message);
      return Statut::sansReponse;
    }
    if (!affichable(porte->jeton)) return refuser(session, "Le jeton de la porte" + std::string(inaffichable));
    demande.variables =
        InjectionPorte::envPipe({.url = std::string(PorteControle::urlBase(porte->url)),
                                 .token = porte->jeton,
                                 .nodeId = session.environnement.texte("TARNAVELLE_NODE_ID").value_or("")});
  }

  if (Champ::booleen(arguments, "etendu", false)) demande.variables.emplace("TARNAVELLE_MCP_ETENDU", "1");

  const std::string texte = forme->texte(demande);
  if (fichier.empty()) {
    session.sortie.rendre(texte);
    if (session.sortie.terminal() && ConfigurationMCP::secrete(demande))
      session.erreurs.avertir("Attention : ce texte contient le jeton de la porte. C'est un secret.");
  } else {
    const int statut = deposer(session, fichier, texte, Statut::mauvaiseLigne);
    if (statut != Statut::fait) return statut;
  }
  dire(session, *forme, demande, fichier);
  return Statut::fait;
}

}  // namespace tarnavelle::Branchement
