#include "Etats/Suivi.hpp"

#include <algorithm>
#include <utility>

#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t elementMax = 200;  ///< characters of an evidence

/// Doubts that last are looked into less and less often.
constexpr auto douteVif = 5s;
constexpr std::chrono::milliseconds regardLent = 2s;
constexpr std::chrono::milliseconds besoinRegarde = 5s;
/// A hook that an instruction should have brought by then.
constexpr std::chrono::milliseconds crochetTardif = 1500ms;
constexpr std::size_t consigneMax = 16 * 1024;  ///< bytes kept of an instruction

}  // namespace

Suivi::Suivi(Regles regles, std::string programme, Instant maintenant)
    : regles_(std::move(regles)), programme_(std::move(programme)), bouge_(maintenant), nouvelle_(maintenant) {
  situation_.depuis = maintenant;
  situation_.preuve.programme = programme_;
  douter(maintenant);
}

Preuve Suivi::preuve(Source source, std::string element, std::string regle) const {
  return {source, Texte::tronquer(element, elementMax), std::move(regle), programme_};
}

void Suivi::passer(Etat activite, Preuve preuve, Instant maintenant) {
  if (situation_.activite == Etat::sorti) return;
  if (rompue_ && activite != Etat::sorti && activite != Etat::rompue) {
    derriere_ = activite;
    preuveDerriere_ = std::move(preuve);
    return;
  }
  if (situation_.activite != activite || repondu_) {
    situation_.activite = activite;
    repondu_ = false;
    ++revision_;
  }
  preuveActivite_ = std::move(preuve);
  publier(maintenant);
}

/// What the agent declared holds over what it does, but for what cannot wait.
void Suivi::publier(Instant maintenant) {
  const bool declare =
      declaration_ && situation_.activite != Etat::sorti && situation_.activite != Etat::besoin && !rompue_;
  Etat etat = declare ? declaration_->etat : situation_.activite;
  situation_.preuve = declare ? declaration_->preuve : preuveActivite_;
  if (etat == Etat::repos && partie_ && !tourVu_) {
    etat = Etat::travaille;
    situation_.preuve = preuve(Source::porte, "consigne");
  }
  if (situation_.etat == etat) return;
  situation_.etat = etat;
  situation_.depuis = maintenant;
  ++revision_;
}

void Suivi::tourCommence() {
  if (!tourVu_) ++revision_;
  tourVu_ = soumise_ = true;
  ailleurs_ = partie_ = false;
}

/// A sign of work counts for our instruction, unless it may be that of the turn before.
void Suivi::travailVu() {
  premierRepos_.reset();
  if (!ailleurs_) tourCommence();
}

bool Suivi::crochetsContredits(const LectureEcran& lecture, Instant maintenant) const {
  if (!enTour_ || doute_ || lecture.interrompu) return true;
  return maintenant - bouge_ >= contredit;
}

void Suivi::reposVu(const LectureEcran& lecture, Instant maintenant) {
  if (maintenant - bouge_ < calme) return;
  if (!premierRepos_) premierRepos_ = maintenant;
  if (maintenant - *premierRepos_ < entreRegards || !crochetsContredits(lecture, maintenant)) return;
  if (consigne_ && !tourVu_) {
    // The turn was over before anyone looked, or there never was one.
    ailleurs_ = false;
    const bool du = tourDu_ && !touche_;
    if (maintenant - *premierRepos_ < (du ? tourTardif : sansTour) || lecture.brouillon()) return;
    tourVu_ = true;  // but nobody saw it submitted
    partie_ = false;
    ++revision_;
  }
  oublierTour();
  sansCrochet_.clear();
  doute_.reset();
  passer(Etat::repos, preuve(Source::ecran, lecture.ligne, lecture.regle), maintenant);
}

void Suivi::sansEcran(Instant maintenant) { regard_ = nouvelle_ = maintenant; }

void Suivi::ecran(const Ecran& ecran, Instant maintenant) {
  if (situation_.activite == Etat::sorti) return;
  if (!versionLue_)
    if (const auto version = regles_.version(ecran.lignes)) {
      versionLue_ = true;
      programme_ += " " + *version;
    }
  const LectureEcran lecture = regles_.lire(ecran);
  const std::size_t empreinte = regles_.empreinte(ecran.lignes);
  if (!lecture_ || empreinte != empreinte_) bouge_ = maintenant;
  empreinte_ = empreinte;
  regard_ = nouvelle_ = maintenant;
  lecture_ = lecture;
  if (rompue_) return;                               // it shows that, and nothing of the program
  const bool prise = enFileVue_ && !lecture.enFile;  // the text that waited has begun its turn
  enFileVue_ = lecture.enFile;
  if (lecture.enFile && consigne_ && !soumise_) {
    soumise_ = true;
    ++revision_;
  }
  const bool apresNosTouches = touche_ && maintenant - *touche_ < apresTouche;
  // Where hooks tell of the turns, they are quicker than the title.
  const bool sansPreuve = lecture.etat == Etat::repos || lecture.etat == Etat::inconnu;
  const auto titre = sansPreuve && !crochetsVus_ ? regles_.titreTravaille(ecran.titre) : std::nullopt;
  const Etat vu = titre ? Etat::travaille : lecture.etat;
  if (vu != Etat::repos) premierRepos_.reset();
  switch (vu) {
    case Etat::travaille:
      // The screen is slower than the hook.
      if (situation_.activite == Etat::besoin && permission_ && maintenant - *permission_ < dessinDialogue)
        break;
      if (prise) ailleurs_ = false;
      travailVu();
      if (!tourAttendu_ && !apresNosTouches) doute_.reset();
      passer(Etat::travaille,
             titre ? preuve(Source::titre, *titre) : preuve(Source::ecran, lecture.ligne, lecture.regle),
             maintenant);
      break;
    case Etat::besoin:
      if (maintenant - bouge_ < calme || (repondu_ && touche_ && maintenant - *touche_ < dessinDialogue)) break;
      if (!apresNosTouches) doute_.reset();
      passer(Etat::besoin, preuve(Source::ecran, lecture.ligne, lecture.regle), maintenant);
      break;
    case Etat::repos: reposVu(lecture, maintenant); break;
    default:
      if (maintenant - bouge_ >= calme && !enTour_ && situation_.activite != Etat::inconnu)
        passer(Etat::inconnu, preuve(Source::ecran, {}), maintenant);
  }
}

void Suivi::termine(std::optional<int> statut, Instant maintenant) {
  passer(Etat::sorti, preuve(Source::processus, statut ? "statut " + std::to_string(*statut) : ""), maintenant);
}

void Suivi::consigne(std::string_view texte, Instant maintenant) {
  consigne_ = maintenant;
  texteConsigne_ = texte.substr(0, consigneMax);
  touche_.reset();
  tourVu_ = soumise_ = partie_ = tourDu_ = enFileVue_ = false;
  reponse_.clear();
  ailleurs_ = situation_.activite == Etat::travaille;
  declaration_.reset();
  premierRepos_.reset();
  attendreCrochet(texte);
  ++revision_;
  douter(maintenant);
  publier(maintenant);
}

void Suivi::partie(bool commande, Instant maintenant) {
  partie_ = consigne_ && !tourVu_;
  tourDu_ = crochetsVus_ && !commande;
  publier(maintenant);
}

void Suivi::touches(const std::vector<Touche>& touches, Instant maintenant) {
  const bool coupe =
      std::ranges::any_of(touches, [](const Touche& touche) { return touche == "esc" || touche == "ctrl+c"; });
  if (!coupe && situation_.activite != Etat::besoin) return;
  touche_ = maintenant;
  repondu_ = situation_.activite == Etat::besoin;
  premierRepos_.reset();
  douter(maintenant);
}

void Suivi::declarerFini(Instant maintenant) {
  declaration_ = {Etat::fini, maintenant, preuve(Source::porte, "fini")};
  publier(maintenant);
}

void Suivi::declarerBloque(std::string_view raison, Instant maintenant) {
  declaration_ = {Etat::besoin, maintenant, preuve(Source::porte, "bloque : " + std::string(raison))};
  publier(maintenant);
}

std::optional<Instant> Suivi::prochainRegard(bool quelquUnAttend) const {
  const Etat activite = situation_.activite;
  if (activite == Etat::sorti || rompue_) return std::nullopt;
  // A look that settled nothing yet.
  if (premierRepos_ && (activite != Etat::repos || doute_)) return regard_ + calme;
  if (doute_) {
    const auto debut = crochetsVus_ && consigne_ == doute_ ? *doute_ + crochetTardif : *doute_ + calme;
    const bool vif = regard_ < *doute_ + douteVif;
    return std::max(debut, regard_ + (vif ? calme : quelquUnAttend ? attendu : regardLent));
  }
  if (!crochetsVus_ || (activite == Etat::travaille && !enTour_)) {
    // What has long been so is likely to last.
    const auto rare = std::clamp<Instant::duration>((regard_ - situation_.depuis) / 4, ordinaire, espace);
    return regard_ + (quelquUnAttend ? attendu : rare);
  }
  switch (activite) {
    case Etat::repos: return std::nullopt;
    case Etat::besoin: return nouvelle_ + (quelquUnAttend ? attendu : besoinRegarde);
    default: return nouvelle_ + (quelquUnAttend ? std::chrono::milliseconds(ordinaire) : silence);
  }
}

}  // namespace tarnavelle::Plateau
