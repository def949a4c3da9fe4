#include "Commandes.hpp"

#include <algorithm>
#include <filesystem>
#include <string>

#include "Aide.hpp"
#include "Catalogue.hpp"
#include "Depot.hpp"
#include "Manuel.hpp"
#include "Porte/GuideAgent.hpp"
#include "Porte/Programme.hpp"
#include "ScriptsCompletion.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Commandes {
namespace {

int refuser(Session& session, std::string_view message, int statut = Statut::mauvaiseLigne) {
  session.erreurs.avertir(message);
  return statut;
}

/// The text without what a file name must not hold.
std::string commeNomDeFichier(std::string_view texte) {
  constexpr std::size_t longueurMax = 60;  // characters; file systems stop at 255 bytes
  std::string nom(Texte::premiers(texte, longueurMax));
  for (char& c : nom)
    if (c == '/' || static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '-';
  return nom;
}

}  // namespace

int aide(Session& session, const Json& arguments) {
  const std::string mot = Champ::texte(arguments, "verbe");
  const auto colonnes = session.sortie.colonnes();
  if (Texte::rogner(mot).empty()) {
    session.sortie.montrer(Aide::generale(colonnes));
    return Statut::fait;
  }
  const OutilVoix* outil = commande(mot).outil;
  if (!outil) return refuser(session, verbeInconnu(mot));
  session.sortie.montrer(Aide::deCommande(*outil, colonnes));
  return Statut::fait;
}

int guide(Session& session, const Json& arguments) {
  const Variables& environnement = session.environnement;
  const std::string document = GuideAgent::markdown(GuideAgent::Contexte::depuisEnvironnement(
      environnement,
      {.binaireCtl = Programme::chemin(), .binaireMCP = Programme::pont(environnement).value_or("")}));
  if (!Champ::booleen(arguments, "fichier", false)) {
    session.sortie.rendre(document);
    return Statut::fait;
  }
  const std::string sessionAgent = environnement.texte("TARNAVELLE_NODE_ID").value_or("locale");
  const std::filesystem::path ecrit = environnement.texte("TARNAVELLE_AGENT_GUIDE").value_or("");
  return deposer(session, ecrit.parent_path() / GuideAgent::nomFichier(commeNomDeFichier(sessionAgent)),
                 document, Statut::mauvaiseLigne);
}

int completions(Session& session, const Json& arguments) {
  const std::string shell = Champ::texte(arguments, "shell");
  const auto scripts = scriptsCompletion();
  const auto script = std::ranges::find(scripts, shell, &ScriptCompletion::shell);
  if (script == scripts.end()) return refuser(session, "Ni bash, ni zsh, ni fish : " + citer(shell) + ".");
  session.sortie.rendre(script->texte);
  return Statut::fait;
}

int manuel(Session& session, const Json&) {
  session.sortie.rendre(Manuel::page());
  return Statut::fait;
}

}  // namespace tarnavelle::Commandes
