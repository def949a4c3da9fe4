#include "Photographe/PhotographeReel.hpp"

#include <cstdint>
#include <span>
#include <system_error>
#include <vector>

#include "Photographe/Album.hpp"
#include "Photographe/Composition.hpp"
#include "Socle/Base64.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

Resultat<Grille, std::string> seule(Terminaux& terminaux, const Sujet::Vue& vue) {
  if (vue.terminal.valeur.empty()) return Sinon{vue.nom + " n'a pas d'écran à photographier."};
  const auto peinture = terminaux.peinture(vue.terminal);
  if (!peinture)
    return Sinon{"Impossible de photographier " + vue.nom + " : " +
                 std::string(description(peinture.raison())) + "."};
  const auto& [colonnes, lignes] = peinture->taille;
  if (!Grille::convient(peinture->taille))
    return Sinon{"L'écran de " + vue.nom + " est trop grand pour une photo : " + std::to_string(colonnes) +
                 " × " + std::to_string(lignes) + ", soit plus de " + std::to_string(Grille::casesMax) +
                 " cases."};
  Grille grille(peinture->taille);
  grille.poser(0, 0, *peinture);
  return grille;
}

/// One line for a terminal that cannot be seen: it takes no other's place.
Grille ensemble(Terminaux& terminaux, const std::vector<Sujet::Vue>& vues) {
  std::vector<Composition::Vignette> vignettes;
  std::size_t ecrans = 0;
  for (const Sujet::Vue& vue : vues) {
    auto& vignette = vignettes.emplace_back(Composition::Vignette{vue.nom, vue.etat, {}});
    if (vue.terminal.valeur.empty() || ecrans == Composition::ecransMax) continue;
    if (auto peinture = terminaux.peinture(vue.terminal)) {
      vignette.ecran = *std::move(peinture);
      ++ecrans;
    } else {
      vignette.etat += (vignette.etat.empty() ? "" : ", ") + std::string(description(peinture.raison()));
    }
  }
  return Composition::scene(vignettes);
}

std::string avis(const Image& image, bool enLigne, std::size_t octets) {
  std::vector<std::string> phrases;
  if (image.sansGlyphe > 0)
    phrases.push_back("Un cadre y tient lieu de chaque caractère qu'aucune police installée ne dessine (" +
                      std::to_string(image.sansGlyphe) + ").");
  if (enLigne && octets > PhotographeReel::lourd)
    phrases.push_back("Elle pèse " + std::to_string(octets / 1000) +
                      " ko : sans « inline », elle irait dans un fichier.");
  return Texte::joindre(phrases, " ");
}

}  // namespace

Resultat<std::filesystem::path, std::string> PhotographeReel::destination(const Sujet& sujet,
                                                                          const Tirage& tirage) const {
  const auto nom = Album::nomDeFichier(sujet.nom, reglages_.date(), reglages_.calendrier);
  const std::string demande(Texte::rogner(tirage.chemin));
  if (demande.empty()) {
    if (!creerDossierPrive(reglages_.dossier))
      return Sinon{"Impossible de créer « " + reglages_.dossier.string() + " »."};
    return reglages_.dossier / nom;
  }
  if (Texte::porteControle(demande)) return Sinon{std::string("« chemin » porte un caractère de contrôle.")};
  const auto absolu = [&](const std::string& chemin) {
    if (chemin == "~" || chemin.starts_with("~/"))
      return std::filesystem::path(reglages_.personnel.string() + chemin.substr(1));
    return std::filesystem::path(chemin);
  };
  const auto voulu = absolu(tirage.depuis) / absolu(demande);
  std::error_code erreur;
  if (std::filesystem::is_directory(voulu, erreur)) return voulu / nom;
  if (Texte::minuscules(voulu.extension().string()) == ".png" && voulu.is_absolute()) return voulu;
  return Sinon{"« " + Texte::tronquer(demande, 200) +
               " » n'est ni un dossier qui existe, ni un fichier en .png."};
}

Resultat<Photo, std::string> PhotographeReel::photographier(const Sujet& sujet, const Tirage& tirage) {
  if (sujet.vues.empty()) return Sinon{std::string("Il n'y a rien à photographier.")};
  std::filesystem::path fichier;
  if (!tirage.enLigne) {
    auto ou = destination(sujet, tirage);
    if (!ou) return Sinon{ou.raison()};
    fichier = *std::move(ou);
  }
  const auto grille = sujet.scene ? Resultat<Grille, std::string>(ensemble(terminaux_, sujet.vues))
                                  : seule(terminaux_, sujet.vues.front());
  if (!grille) return Sinon{grille.raison()};
  const auto image = reglages_.peindre(*grille);
  if (!image) return Sinon{image.raison()};
  Photo photo;
  if (tirage.enLigne) {
    const auto* debut = reinterpret_cast<const std::uint8_t*>(image->png.data());
    photo.valeur = Base64::coder({debut, image->png.size()});
  } else {
    const auto ecrit = Album::ranger(fichier, image->png);
    if (!ecrit) return Sinon{ecrit.raison()};
    photo.valeur = ecrit->string();
  }
  photo.avis = avis(*image, tirage.enLigne, photo.valeur.size());
  return photo;
}

}  // namespace tarnavelle::Plateau
