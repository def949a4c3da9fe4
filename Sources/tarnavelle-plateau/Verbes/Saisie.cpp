#include "Verbes/Saisie.hpp"

#include <algorithm>
#include <utility>

#include "Etats/Trame.hpp"

namespace tarnavelle::Plateau {
namespace {

using Raison = Livraison::Raison;
using Sort = Livraison::Sort;

/// Whether a box that was empty may well hold that text, of which some was drawn otherwise.
bool ressemble(std::string_view boite, std::string_view attendu) {
  const auto debut = std::ranges::mismatch(boite, attendu).in1 - boite.begin();
  const auto reste = boite.substr(static_cast<std::size_t>(debut));
  attendu.remove_prefix(static_cast<std::size_t>(debut));
  const auto fin =
      std::mismatch(reste.rbegin(), reste.rend(), attendu.rbegin(), attendu.rend()).first - reste.rbegin();
  return !boite.empty() && 2 * (debut + fin) >= static_cast<std::ptrdiff_t>(boite.size());
}

}  // namespace

std::string_view nom(Livraison::Sort sort) {
  switch (sort) {
    case Sort::soumis: return "soumis";
    case Sort::pose: return "pose";
    case Sort::refuse: return "refuse";
    case Sort::inconnu: return "inconnu";
  }
  return "";
}

std::string_view description(const Livraison& livraison) {
  switch (livraison.raison) {
    case Raison::aucune: return "";
    case Raison::dialogue: return "un dialogue attend une réponse";
    case Raison::brouillon: return "quelqu'un a un texte dans sa boîte de saisie";
    case Raison::dejaPose: return "un texte y est posé";
    case Raison::mort: return "son programme est terminé";
    case Raison::sansBoite: return "son écran ne montre pas de boîte de saisie";
    case Raison::pasMontre: return "son écran ne l'a pas montré";
    case Raison::autrement: return "son écran le montre autrement";
    case Raison::mele: return "il s'est mêlé à ce que quelqu'un tapait";
    case Raison::panne: return description(livraison.panne);
    case Raison::occupe: return "d'autres y tapent depuis trop longtemps";
    case Raison::porteFermee: return "la porte ferme";
    case Raison::lienRompu: return "le lien avec sa machine est rompu";
    case Raison::lienCoupe: return "le lien avec sa machine s'est coupé, le texte n'y est peut-être pas entier";
  }
  return "";
}

Saisie::Saisie(Consigne consigne, ReglageSaisie reglage, Instant maintenant)
    : consigne_(std::move(consigne)),
      reglage_(reglage),
      attendu_(trame((consigne_.suite ? consigne_.dejaPose : "") + consigne_.texte)),
      debut_(maintenant) {}

void Saisie::passer(Phase phase, Instant maintenant) {
  phase_ = phase;
  debut_ = maintenant;
  soupcon_.reset();
  videDepuis_.reset();
  derniereBoite_.clear();
  boiteDepuis_ = maintenant;
}

Saisie::Suite Saisie::revoir(Instant maintenant, std::chrono::milliseconds delai) const {
  return Regarder{maintenant + delai};
}

Saisie::Suite Saisie::regard(const Regard& regard, Instant maintenant) {
  switch (phase_) {
    case Phase::avant: return avant(regard, maintenant);
    case Phase::colle: return montre(regard, maintenant);
    case Phase::entree: return preuve(regard, maintenant);
  }
  return Livraison{};
}

Saisie::Suite Saisie::avant(const Regard& regard, Instant maintenant) {
  const LectureEcran& lecture = regard.lecture;
  if (regard.mort) return Livraison{Sort::refuse, Raison::mort};
  collagesAvant_ = lecture.collages;
  vide_ = lecture.boite && !lecture.brouillon();
  const bool aPart = !consigne_.suite && !consigne_.dejaPose.empty();
  if (!consigne_.lisible) {
    if (aPart) return Livraison{Sort::refuse, Raison::dejaPose};
    return consigne_.reprise ? Suite(Livraison{Sort::refuse, Raison::brouillon}) : Coller{};
  }
  const std::string boite = trame(lecture.texteBoite);
  const auto deNous = [&](const std::string& texte) {
    return boite == trame(texte) || (!texte.empty() && !consigne_.vue.empty() && boite == consigne_.vue);
  };
  // Left there by a door that died before Enter: never a second paste. What this one has just submitted may
  // still be shown: that is the same text once more.
  if (consigne_.dejaPose.empty() && lecture.boite && !lecture.dialogue() && !boite.empty() &&
      boite == attendu_ && !deNous(consigne_.derniere)) {
    passer(Phase::colle, maintenant);
    return montre(regard, maintenant);
  }
  if (consigne_.reprise) return Livraison{Sort::refuse, Raison::brouillon};
  std::optional<Raison> contre;
  if (lecture.dialogue() || regard.besoin)
    contre = Raison::dialogue;
  else if (!lecture.boite)
    contre = Raison::sansBoite;
  else if (lecture.brouillon() && (aPart || !deNous(consigne_.dejaPose)))
    contre = deNous(consigne_.dejaPose) ? Raison::dejaPose : Raison::brouillon;
  // Whoever emptied the box, it is to be gone on with no more.
  const bool parti = !contre && !consigne_.dejaPose.empty() && !deNous(consigne_.dejaPose);
  if (parti) contre = Raison::dejaPose;
  if (!contre) return Coller{};
  // A screen that is being drawn again may show anything for a moment.
  if (soupcon_ != contre) {
    soupcon_ = contre;
    depuisSoupcon_ = maintenant;
  }
  const auto limite = *contre == Raison::sansBoite ? reglage_.boiteMax : reglage_.confirmation;
  if (maintenant - depuisSoupcon_ < limite) return Regarder{depuisSoupcon_ + limite};
  if (parti) {
    consigne_.dejaPose.clear();
    attendu_ = trame(consigne_.texte);
    return Coller{};
  }
  if (*contre == Raison::brouillon && !effacee_ && deNous(consigne_.derniere)) {
    effacee_ = true;
    return Effacer{static_cast<std::size_t>(std::ranges::count(lecture.texteBoite, '\n')) + 1};
  }
  return Livraison{Sort::refuse, *contre};
}

Saisie::Suite Saisie::efface(const Ou<Fait>& fait, Instant maintenant) {
  soupcon_.reset();
  return fait ? revoir(maintenant, reglage_.entreRegards) : colle(fait, maintenant);
}

Saisie::Suite Saisie::colle(const Ou<Fait>& fait, Instant maintenant) {
  if (fait) {
    passer(Phase::colle, maintenant);
    return revoir(maintenant, consigne_.lisible ? reglage_.entreRegards : reglage_.collageMin);
  }
  const Panne panne = fait.raison();
  if (panne == Panne::mort) return Livraison{Sort::refuse, Raison::mort};
  return Livraison{panne == Panne::muet ? Sort::inconnu : Sort::refuse, Raison::panne, panne};
}

Saisie::Suite Saisie::montre(const Regard& regard, Instant maintenant) {
  const LectureEcran& lecture = regard.lecture;
  if (regard.mort) return Livraison{Sort::inconnu, Raison::mort};
  if (!consigne_.lisible) {
    if (maintenant - debut_ < reglage_.collageMin) return Regarder{debut_ + reglage_.collageMin};
    return consigne_.valider ? Suite(Valider{}) : Livraison{Sort::inconnu, Raison::pasMontre};
  }
  const std::string boite = trame(lecture.texteBoite);
  if (boite != derniereBoite_) {
    derniereBoite_ = boite;
    boiteDepuis_ = maintenant;
  }
  const auto age = maintenant - debut_;
  // Beside the mark of a large paste, what somebody types would go with it.
  const bool avec = attendu_.find(trame(lecture.horsCollages)) == std::string::npos;
  const bool marque = lecture.collages > collagesAvant_ && !avec;
  // The end of it, since a box that is too small shows that; a part of it once nothing moves any more.
  const bool suite = consigne_.suite && !consigne_.dejaPose.empty() && !consigne_.vue.empty() &&
                     boite == consigne_.vue + trame(consigne_.texte);
  const bool entier = suite || (!boite.empty() && attendu_.ends_with(boite));
  const bool partie = !boite.empty() && attendu_.find(boite) != std::string::npos &&
                      maintenant - boiteDepuis_ >= std::chrono::seconds(1);
  const bool montre = lecture.boite && (marque || entier || partie || attendu_.empty());
  montree_ = montree_ || montre;
  if (montre) vue_ = boite;
  // A program's own command opens a menu around the box, which is then no box any more.
  if (!lecture.dialogue() && !regard.besoin && (montre || (consigne_.commande && montree_ && !lecture.boite))) {
    if (!consigne_.valider) return Livraison{Sort::pose};
    if (age >= reglage_.collageMin) return Valider{};
    return Regarder{debut_ + reglage_.collageMin};
  }
  if (age >= reglage_.montreMax) {
    if (montre) return Livraison{Sort::pose, Raison::dialogue};
    if (lecture.dialogue()) return Livraison{Sort::inconnu, Raison::dialogue};
    const bool mele = (boite.size() > attendu_.size() && boite.find(attendu_) != std::string::npos) ||
                      (lecture.collages > collagesAvant_ && avec);
    if (mele) return Livraison{Sort::pose, Raison::mele};
    if (!vide_ || !ressemble(boite, attendu_)) return Livraison{Sort::inconnu, Raison::pasMontre};
    vue_ = boite;  // so that the next text knows it for ours
    return Livraison{Sort::pose, Raison::autrement};
  }
  return revoir(maintenant, reglage_.entreRegards);
}

Saisie::Suite Saisie::valide(const Ou<Fait>& fait, Instant maintenant) {
  if (fait) {
    if (phase_ != Phase::entree) passer(Phase::entree, maintenant);
    dernierEnter_ = maintenant;
    return revoir(maintenant, reglage_.entreRegards);
  }
  switch (fait.raison()) {
    case Panne::condition:  // after a first Enter, the dialog may well be what the text led to
      return Livraison{phase_ == Phase::entree ? Sort::inconnu : Sort::pose, Raison::dialogue};
    case Panne::mort: return Livraison{Sort::inconnu, Raison::mort};
    case Panne::inconnu:
    case Panne::muet:
    case Panne::absent: return Livraison{Sort::inconnu, Raison::panne, fait.raison()};
    case Panne::refuse: return Livraison{Sort::pose, Raison::panne, fait.raison()};
  }
  return Livraison{};
}

Saisie::Suite Saisie::preuve(const Regard& regard, Instant maintenant) {
  const LectureEcran& lecture = regard.lecture;
  if (regard.soumise) return Livraison{Sort::soumis};
  if (regard.mort) return Livraison{consigne_.commande ? Sort::soumis : Sort::inconnu, Raison::mort};
  const bool lasse = maintenant - debut_ >= reglage_.preuveMax;
  if (!consigne_.lisible)
    return lasse ? Suite(Livraison{Sort::inconnu, Raison::pasMontre})
                 : revoir(maintenant, reglage_.entreRegards);
  const std::string boite = trame(lecture.texteBoite);
  const bool vide = lecture.boite && boite.empty() && lecture.collages == 0;
  const bool notre = lecture.collages > 0 || (!boite.empty() && attendu_.find(boite) != std::string::npos);
  if (lecture.boite && notre) vue_ = boite;
  // A box that is empty for one look was once no proof: what the program does is asked as well, or a second
  // look.
  if (vide && (lecture.etat == Etat::travaille || lecture.enFile)) return Livraison{Sort::soumis};
  if (!vide) videDepuis_.reset();
  if (vide && !videDepuis_) videDepuis_ = maintenant;
  if (vide && maintenant - *videDepuis_ >= reglage_.confirmation) return Livraison{Sort::soumis};
  // A command shows its own screen.
  if (consigne_.commande && lecture.dialogue() && maintenant - debut_ >= reglage_.confirmation)
    return Livraison{Sort::soumis, Raison::dialogue};
  if (lecture.boite && notre && !consigne_.commande && reprises_ < reglage_.reprisesMax &&
      maintenant - dernierEnter_ >= reglage_.repriseMin) {
    ++reprises_;
    return Valider{};
  }
  if (!lasse) return revoir(maintenant, reglage_.entreRegards);
  if (lecture.boite && notre) return Livraison{Sort::pose};
  return lecture.dialogue() ? Livraison{Sort::inconnu, Raison::dialogue}
                            : Livraison{Sort::inconnu, Raison::pasMontre};
}

}  // namespace tarnavelle::Plateau
