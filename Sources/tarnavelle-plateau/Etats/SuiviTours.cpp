// The turns, as hooks tell them.
#include <algorithm>
#include <utility>

#include "Etats/Suivi.hpp"
#include "Etats/Trame.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::size_t anciensMax = 32;
constexpr std::size_t debutCompare = 40;  ///< characters by which an instruction is told from another

}  // namespace

bool Suivi::ancien(const std::string& tour) const {
  return !tour.empty() && std::ranges::count(anciens_, tour) > 0;
}

void Suivi::oublierTour() {
  if (!tour_.empty() && !ancien(tour_)) anciens_.push_back(std::exchange(tour_, {}));
  if (anciens_.size() > anciensMax) anciens_.pop_front();
  tour_.clear();
  enTour_ = false;
  enFile_ = 0;
  tourAttendu_ = false;
}

/// What the link has to say of itself; whether the hook was one of these.
bool Suivi::duLien(const Crochet& crochet, Instant maintenant) {
  switch (crochet.genre) {
    case Crochet::Genre::rompu:
      if (rompue_) return true;
      rompue_ = true;
      ++ruptures_;
      derriere_ = situation_.activite;
      preuveDerriere_ = preuveActivite_;
      passer(Etat::rompue, preuve(Source::lien, {}), maintenant);
      return true;
    case Crochet::Genre::renoue:
      if (!std::exchange(rompue_, false)) return true;
      premierRepos_.reset();
      passer(derriere_, preuveDerriere_, maintenant);
      douter(maintenant);
      return true;
    case Crochet::Genre::perdu:  // the screen alone tells, until they are heard again
      crochetsVus_ = false;
      douter(maintenant);
      return true;
    default: return false;
  }
}

void Suivi::crochet(const Crochet& crochet, Instant maintenant) {
  if (duLien(crochet, maintenant)) return;
  crochetsVus_ = true;
  nouvelle_ = maintenant;
  if (!crochet.conversation.empty() && conversation_ != crochet.conversation) {
    conversation_ = crochet.conversation;
    entamee_ = false;
    ++revision_;
  }
  if (!crochet.transcript.empty()) transcript_ = crochet.transcript;
  const auto dire = [&](Etat etat) { passer(etat, preuve(Source::crochet, crochet.nom), maintenant); };
  switch (crochet.genre) {
    case Crochet::Genre::consigne: soumission(crochet, maintenant); break;
    case Crochet::Genre::outil:
    case Crochet::Genre::outilFini:
      // A turn that is over may still say how its last tool ended; only another tool goes on with it.
      if (ancien(crochet.tour) && (crochet.genre == Crochet::Genre::outilFini || enTour_)) break;
      if (!enTour_ && crochet.genre == Crochet::Genre::outilFini) break;
      if (!crochet.tour.empty() && crochet.tour != tour_) {
        tour_ = crochet.tour;
        tourAttendu_ = false;
      }
      enTour_ = true;
      travailVu();
      dire(Etat::travaille);
      break;
    case Crochet::Genre::permission:
      if (ancien(crochet.tour)) break;
      permission_ = maintenant;
      dire(Etat::besoin);
      break;
    case Crochet::Genre::fini:
    case Crochet::Genre::echec:
      if (!crochet.reponse.empty() && !ancien(crochet.tour)) reponse_ = crochet.reponse;
      finDeTour(crochet, maintenant);
      break;
    case Crochet::Genre::interrompu:
      if (ancien(crochet.tour)) break;
      oublierTour();
      dire(Etat::repos);
      break;
    case Crochet::Genre::sorti:
      oublierTour();
      dire(Etat::inconnu);
      douter(maintenant);
      break;
    case Crochet::Genre::demarre:
    case Crochet::Genre::attention: douter(maintenant); break;
    default: break;
  }
}

/// Whether what was submitted is our last instruction, as far as the hook tells: it may hold no text, or the
/// mark of a large paste, or what a person typed before ours.
bool Suivi::laNotre(const Crochet& crochet) {
  const std::string dit = trame(crochet.texte);
  const auto attendue = std::ranges::find_if(sansCrochet_, [&](const std::string& debut) {
    return dit.empty() || dit.starts_with('[') || dit.find(debut) != std::string::npos ||
           debut.starts_with(dit);
  });
  if (attendue == sansCrochet_.end()) return !consigne_ || tourVu_;
  const bool derniere = dit.empty() || dit.starts_with('[') || attendue + 1 == sansCrochet_.end();
  sansCrochet_.erase(attendue);
  return derniere;
}

void Suivi::soumission(const Crochet& crochet, Instant maintenant) {
  if (!entamee_) ++revision_;
  entamee_ = true;
  if (ancien(crochet.tour)) return;
  const bool notre = laNotre(crochet);
  // During a turn whose id is unknown nobody can tell a text that is queued from one that begins a turn.
  if (enTour_ && !crochet.tour.empty() && (tourAttendu_ || crochet.tour == tour_)) {
    ++enFile_;
  } else {
    oublierTour();
  }
  tour_ = crochet.tour;
  tourAttendu_ = false;
  enTour_ = true;
  declaration_.reset();
  doute_.reset();
  touche_.reset();
  premierRepos_.reset();
  if (notre)
    tourCommence();
  else
    ailleurs_ = true;
  passer(Etat::travaille, preuve(Source::crochet, crochet.nom), maintenant);
}

void Suivi::finDeTour(const Crochet& crochet, Instant maintenant) {
  if (ancien(crochet.tour)) return;  // of an older turn: it ends nothing
  const bool suite = enFile_ > 0 || !sansCrochet_.empty();
  ailleurs_ = false;
  oublierTour();
  if (!crochet.tour.empty() && !ancien(crochet.tour)) anciens_.push_back(crochet.tour);
  if (!suite) {
    doute_.reset();
    passer(Etat::repos, preuve(Source::crochet, crochet.nom), maintenant);
    return;
  }
  // A text was submitted meanwhile: it was part of this turn, or begins another. The screen will tell.
  enTour_ = true;
  tourAttendu_ = true;
  premierRepos_.reset();
  douter(maintenant);
}

void Suivi::attendreCrochet(std::string_view texte) {
  sansCrochet_.push_back(trame(Texte::premiers(texte, debutCompare)));
  if (sansCrochet_.size() > anciensMax) sansCrochet_.pop_front();
}

}  // namespace tarnavelle::Plateau
