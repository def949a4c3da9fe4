#include "Voix/AnnonceVoix.hpp"

#include "Socle/Texte.hpp"

namespace tarnavelle::AnnonceVoix {

std::string annonce(const Note& note) {
  const auto texte = Texte::rogner(note.texte);
  const auto consigne = Texte::rogner(note.consigne);
  if (texte.empty()) return {};
  std::string resultat(balise);
  resultat.append(" ").append(texte);
  if (!consigne.empty()) resultat.append(" ").append(consigne);
  return resultat;
}

std::string evenement(const Evenement& evenement) {
  const auto titre = Texte::rogner(evenement.titre);
  const auto corps = Texte::rogner(evenement.corps);
  std::string texte(titre);
  if (!titre.empty() && !corps.empty()) texte += " — ";
  texte += corps;
  if (!texte.empty()) texte = "(Événement : " + texte + ")";
  return annonce({.texte = texte, .consigne = "Dis-le en une phrase courte."});
}

std::string aFini(const Fin& fin) {
  const auto resume = Texte::rogner(fin.resume);
  std::string texte(Texte::rogner(fin.agent));
  texte += resume.empty() ? " a fini." : " a fini : ";
  texte += resume;
  return annonce({.texte = texte, .consigne = "Dis-le en une phrase courte et propose la suite."});
}

}  // namespace tarnavelle::AnnonceVoix
