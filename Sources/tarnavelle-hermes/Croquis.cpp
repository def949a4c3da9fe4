#include "Croquis.hpp"

#include <algorithm>
#include <span>

#include "Parole.hpp"
#include "Socle/Colonnes.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Croquis {
namespace {

constexpr std::size_t boiteMax = 10;    ///< lines of the box
constexpr std::size_t detailMax = 8;    ///< lines of a dialog
constexpr std::size_t enFileMax = 200;  ///< characters shown of what waits
constexpr std::size_t enFileVus = 3;    ///< messages shown of those that wait
constexpr std::size_t filetMax = 80;    ///< columns of a rule

std::string filet(std::size_t colonnes, const std::string& dit = "") {
  const auto place = std::min(colonnes - 1, filetMax);
  const auto traits = dit.empty() ? place : place - std::min(place - 10, Colonnes::largeur(dit) + 2);
  std::string trait;
  for (std::size_t i = 0; i < traits; ++i) trait += "─";
  return dit.empty() ? trait : trait + " " + dit;
}

void dessinerBoite(Toile::Vif& vif, const Moment& moment, std::size_t colonnes, std::size_t lignes) {
  const auto couper = [&](const std::string& ligne) { return Colonnes::couper(ligne, colonnes - 1); };
  const auto vus = std::min(moment.enFile.size(), enFileVus);
  for (const std::string& texte : std::span(moment.enFile).first(vus))
    vif.lignes.push_back(couper("○ En file : " + Inoffensif::epurer(Texte::joindre(
                                                     Texte::mots(Texte::premiers(texte, enFileMax)), " "))));
  if (moment.enFile.size() > vus)
    vif.lignes.push_back(couper("○ En file : encore " + std::to_string(moment.enFile.size() - vus) + "."));
  if (moment.enTour) vif.lignes.push_back(couper("● Hermès répond… Esc l'interrompt."));
  const auto boite = moment.boite.vue(colonnes - 3, std::min(boiteMax, lignes / 2 - 1));
  vif.lignes.push_back(filet(colonnes, boite.suite ? "suite" : ""));
  vif.ligne = vif.lignes.size() + boite.ligne;
  vif.colonne = 2 + boite.colonne;
  for (std::size_t i = 0; i < boite.lignes.size(); ++i)
    vif.lignes.push_back((i == 0 ? "› " : "  ") + boite.lignes[i]);
  vif.lignes.push_back(filet(colonnes));
}

void dessinerDialogue(Toile::Vif& vif, const Moment& moment, std::size_t colonnes) {
  vif.lignes.push_back(filet(colonnes));
  auto lignes = enLignes(Inoffensif::montrable(enClair(moment.demandes.front()), "\n"), colonnes - 3, true);
  const bool coupees = lignes.size() > detailMax;
  if (coupees) lignes.resize(detailMax);
  for (const std::string& ligne : lignes) vif.lignes.push_back(" " + ligne);
  const auto ajouter = [&](const std::string& phrase) {
    for (std::string& ligne : enLignes(phrase, colonnes - 1, true)) vif.lignes.push_back(std::move(ligne));
  };
  if (coupees) ajouter(" … tout est écrit plus haut.");
  if (moment.demandes.size() > 1)
    ajouter(" Encore " + std::to_string(moment.demandes.size() - 1) + " après celle-ci.");
  ajouter(moment.repondu ? "Votre réponse part…" : "o : accepter · n : refuser · Esc : interrompre");
  vif.ligne = vif.lignes.size() - 1;
  vif.curseur = false;
}

}  // namespace

Toile::Vif vif(const Moment& moment, std::size_t colonnes, std::size_t lignes) {
  Toile::Vif vif;
  vif.lignes = moment.fil.enCours(colonnes);
  if (const auto place = lignes / 2; vif.lignes.size() > place)
    vif.lignes.erase(vif.lignes.begin(), vif.lignes.end() - static_cast<std::ptrdiff_t>(place));
  vif.lignes.emplace_back("");
  if (moment.demandes.empty())
    dessinerBoite(vif, moment, colonnes, lignes);
  else
    dessinerDialogue(vif, moment, colonnes);
  // What is higher than the terminal would scroll away, and be said again at each change.
  if (vif.lignes.size() > lignes) {
    const auto trop = vif.lignes.size() - lignes;
    vif.lignes.erase(vif.lignes.begin(), vif.lignes.begin() + static_cast<std::ptrdiff_t>(trop));
    vif.ligne -= std::min(vif.ligne, trop);
  }
  return vif;
}

}  // namespace tarnavelle::Croquis
