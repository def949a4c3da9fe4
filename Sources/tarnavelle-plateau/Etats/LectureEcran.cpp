// Reading a screen by the rules.
#include <algorithm>
#include <functional>
#include <utility>

#include "Etats/Regles.hpp"
#include "Etats/Trame.hpp"
#include "ReglesInterne.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::size_t ligneMax = 200;  ///< characters kept of the line that spoke

using Lignes = std::vector<std::string>;

bool blanche(std::string_view ligne) { return Texte::rogner(ligne).empty(); }

/// A part of the screen: from a line, to another that is not of it.
struct Plage {
  std::size_t debut = 0;
  std::size_t fin = 0;
};

/// How many lines there are but for the blank ones at the end.
std::size_t hauteur(const Lignes& lignes) {
  std::size_t fin = lignes.size();
  while (fin > 0 && blanche(lignes[fin - 1])) --fin;
  return fin;
}

/// The beginning of the box that ends before line `apres`.
std::optional<std::size_t> debutDeBoite(const Regles::Corps::Boite& boite, const Lignes& lignes,
                                        std::size_t apres) {
  const bool bloc = !boite.debut;
  for (std::size_t i = apres; i-- > 0;) {
    const std::string& ligne = lignes[i];
    if (bloc) {
      if (!trouve(boite.suite, ligne)) return i + 1 < apres ? std::optional(i + 1) : std::nullopt;
      continue;
    }
    if (trouve(boite.debut, ligne) && (!boite.avant || (i > 0 && trouve(boite.avant, lignes[i - 1])))) return i;
    if (!blanche(ligne) && !trouve(boite.suite, ligne)) return std::nullopt;
  }
  return bloc && apres > 0 ? std::optional<std::size_t>(0) : std::nullopt;
}

/// The box: the lowest, of which little stands below.
std::optional<Plage> trouverBoite(const Regles::Corps::Boite& boite, const Lignes& lignes, std::size_t fin) {
  if (!boite.suite || !boite.apres) return std::nullopt;
  std::size_t dessous = 0;
  for (std::size_t i = fin; i-- > 0 && dessous <= boite.sous;) {
    if (trouve(boite.apres, lignes[i]))
      if (const auto debut = debutDeBoite(boite, lignes, i)) return Plage{*debut, i};
    if (!blanche(lignes[i])) ++dessous;
  }
  return std::nullopt;
}

/// What the box holds, each line as its pattern captures it.
Lignes contenu(const Regles::Corps::Boite& boite, const Lignes& lignes, Plage ou) {
  Lignes textes;
  for (std::size_t i = ou.debut; i < std::min(ou.fin, lignes.size()); ++i) {
    const Motif& motif = i == ou.debut && boite.debut ? boite.debut : boite.suite;
    textes.emplace_back(Texte::rogner(groupe(motif, lignes[i]).value_or("")));
  }
  for (std::size_t n = 0; n < boite.pied; ++n) {
    while (!textes.empty() && textes.back().empty()) textes.pop_back();
    if (!textes.empty()) textes.pop_back();
  }
  return textes;
}

std::string joints(const Lignes& lignes) { return std::string(Texte::rogner(Texte::joindre(lignes, "\n"))); }

/// What was typed into the box: not its placeholder, which is drawn dim but for the cell under the cursor.
std::string saisie(const Regles::Corps::Boite& boite, const Ecran& ecran, Plage ou) {
  std::string entier = joints(contenu(boite, ecran.lignes, ou));
  if (entier.empty() || trouve(boite.vide, entier)) return {};
  entier = groupe(boite.indice, entier).value_or(entier);
  if (ecran.attenuees.size() != ecran.lignes.size()) return entier;
  std::string clair;
  for (const std::string& ligne : contenu(boite, ecran.attenuees, ou)) clair += ligne;
  const bool sousLeCurseur = Texte::caracteres(clair) == 1 && entier.starts_with(clair) && entier != clair;
  return clair.empty() || sousLeCurseur ? std::string() : entier;
}

/// Takes what matches out of the text; how many times it did.
int retirer(const Motif& motif, std::string& texte) {
  return motif ? RE2::GlobalReplace(&texte, *motif, "") : 0;
}

/// The last lines of a part that are not blank, the lowest first, until one matches.
const std::string* chercher(const Regle& regle, const Lignes& lignes, Plage ou) {
  std::size_t vues = 0;
  for (std::size_t i = std::min(ou.fin, lignes.size()); i-- > ou.debut && vues < regle.lignes;) {
    if (blanche(lignes[i])) continue;
    if (trouve(regle.motif, lignes[i])) return &lignes[i];
    ++vues;
  }
  return nullptr;
}

const std::string* parle(const Regle& regle, const Lignes& lignes, const std::optional<Plage>& boite,
                         std::size_t fin) {
  switch (regle.lieu) {
    case Regle::Lieu::bas: return chercher(regle, lignes, {0, fin});
    case Regle::Lieu::dessus: return chercher(regle, lignes, {0, boite ? boite->debut : fin});
    case Regle::Lieu::dessous: return boite ? chercher(regle, lignes, {boite->fin, fin}) : nullptr;
    case Regle::Lieu::boite:
      return boite && trouve(regle.motif, lignes[boite->debut]) ? &lignes[boite->debut] : nullptr;
  }
  return nullptr;
}

Etat etatDe(Regle::Effet effet) {
  switch (effet) {
    case Regle::Effet::travaille: return Etat::travaille;
    case Regle::Effet::besoin: return Etat::besoin;
    case Regle::Effet::repos: return Etat::repos;
    case Regle::Effet::enFile:
    case Regle::Effet::interrompu: break;
  }
  return Etat::inconnu;
}

/// Where the lines of the instruction begin, the last ones that begin as it does.
std::optional<std::size_t> ouConsigne(const Motif& motif, const Lignes& lignes, std::size_t fin,
                                      std::string_view consigne) {
  std::optional<std::size_t> derniere;
  for (std::size_t i = fin; i-- > 0;) {
    const auto texte = groupe(motif, lignes[i]);
    if (!texte) continue;
    const std::string debut = trame(*texte);
    if (!debut.empty() && consigne.starts_with(debut)) return i;
    if (!derniere) derniere = i;
  }
  return derniere;
}

}  // namespace

LectureEcran Regles::lire(const Ecran& ecran) const {
  const Lignes& lignes = ecran.lignes;
  const std::size_t fin = hauteur(lignes);
  const auto boite = trouverBoite(corps_->boite, lignes, fin);
  LectureEcran lecture;
  for (const Regle& regle : corps_->regles) {
    const Etat etat = etatDe(regle.effet);
    if (etat != Etat::inconnu && lecture.etat != Etat::inconnu) continue;
    const std::string* ligne = parle(regle, lignes, boite, fin);
    if (!ligne) continue;
    if (regle.effet == Regle::Effet::enFile) lecture.enFile = true;
    if (regle.effet == Regle::Effet::interrompu) lecture.interrompu = true;
    if (etat == Etat::inconnu) continue;
    lecture.etat = etat;
    lecture.regle = regle.nom;
    lecture.ligne = Texte::tronquer(Texte::joindre(Texte::mots(*ligne), " "), ligneMax);
  }
  lecture.boite = boite && !lecture.dialogue();
  if (!lecture.boite) return lecture;
  lecture.texteBoite = saisie(corps_->boite, ecran, *boite);
  lecture.horsCollages = lecture.texteBoite;
  lecture.collages = retirer(corps_->boite.collage, lecture.horsCollages);
  return lecture;
}

std::size_t Regles::empreinte(const std::vector<std::string>& lignes) const {
  std::size_t tout = 0;
  for (const std::string& ligne : lignes)
    if (!trouve(corps_->decor, ligne)) tout = tout * 1099511628211U + std::hash<std::string>()(ligne);
  return tout;
}

std::vector<std::string> Regles::depuisConsigne(const std::vector<std::string>& lignes,
                                                std::string_view consigne) const {
  std::size_t fin = hauteur(lignes);
  if (const auto boite = trouverBoite(corps_->boite, lignes, fin)) fin = boite->debut;
  std::size_t debut = 0;
  const std::string attendue = trame(consigne);
  if (const auto ou = ouConsigne(corps_->consigne, lignes, fin, attendue)) {
    debut = *ou + 1;
    // The rest of a long instruction, however it was folded.
    std::string_view reste = attendue;
    const std::string premiere = trame(groupe(corps_->consigne, lignes[*ou]).value_or(""));
    if (reste.starts_with(premiere))
      reste.remove_prefix(premiere.size());
    else
      reste = {};
    for (; debut < fin && !reste.empty(); ++debut) {
      const std::string suite = trame(lignes[debut]);
      if (!reste.starts_with(suite)) break;
      reste.remove_prefix(suite.size());
    }
  }
  std::vector<std::string> gardees;
  for (std::size_t i = debut; i < fin; ++i) {
    std::string ligne = lignes[i];
    if (corps_->marge) RE2::Replace(&ligne, *corps_->marge, "");
    const bool cadre = std::ranges::any_of(corps_->cadre, [&](const Motif& m) { return trouve(m, ligne); });
    if (cadre || (blanche(ligne) && (gardees.empty() || blanche(gardees.back())))) continue;
    gardees.push_back(std::move(ligne));
  }
  while (!gardees.empty() && blanche(gardees.back())) gardees.pop_back();
  return gardees;
}

}  // namespace tarnavelle::Plateau
