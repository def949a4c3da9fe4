#include "Chemins.hpp"

#include <algorithm>
#include <system_error>

#include "Catalogue.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Chemins {

bool ecritEnChemin(std::string_view texte) {
  const auto premier = texte.substr(0, texte.find('/'));
  if (premier.empty()) return texte.starts_with('/');
  return premier == "." || premier == ".." || premier == "~";
}

std::filesystem::path absolu(std::string_view chemin, const std::filesystem::path& courant,
                             const std::filesystem::path& personnel) {
  const std::filesystem::path tape(chemin);
  if (tape.is_absolute()) return tape;
  const bool duPersonnel = chemin.substr(0, chemin.find('/')) == "~" && !personnel.empty();
  if (!duPersonnel) return (courant / tape).lexically_normal();
  return (personnel / tape.lexically_relative("~")).lexically_normal();
}

bool rendreAbsolus(Json& corps, const OutilVoix& outil, Session& session) {
  const auto designe = [&](const ParamVoix& p, Designe quoi) { return tarnavelle::designe(outil, p) == quoi; };
  for (const ParamVoix& p : outil.parametres)
    if (designe(p, Designe::machine) && !Texte::rogner(Champ::texte(corps, p.nom)).empty()) return true;

  std::error_code erreur;
  const auto courant = std::filesystem::current_path(erreur);
  for (const ParamVoix& p : outil.parametres) {
    const std::string texte = Champ::texte(corps, p.nom);
    const bool peutEtre = designe(p, Designe::cheminOuNom);
    if (texte.empty() || !(peutEtre || designe(p, Designe::chemin))) continue;
    if (peutEtre && !ecritEnChemin(texte)) {
      std::error_code ignoree;
      if (std::filesystem::is_regular_file(texte, ignoree))
        session.erreurs.avertir(citer(texte) + " est envoyé tel quel. Pour le fichier de ce nom, écrivez " +
                                citer("./" + texte) + ".");
      continue;
    }
    const auto chemin = absolu(texte, courant, dossierPersonnel(session.environnement)).string();
    if (!chemin.starts_with('/') || !Texte::utf8Valide(chemin)) {
      session.erreurs.avertir("Le chemin " + citer(texte) +
                              " ne peut être rendu absolu : le dossier courant n'existe plus, ou son nom n'est "
                              "pas de l'UTF-8 valide.");
      return false;
    }
    corps[p.nom] = chemin;
  }
  return true;
}

}  // namespace tarnavelle::Chemins
