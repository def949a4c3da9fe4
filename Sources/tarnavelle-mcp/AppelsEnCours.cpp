#include "AppelsEnCours.hpp"

#include <algorithm>
#include <new>
#include <utility>

#include "Appel/AppelPorte.hpp"
#include "ContenuReponse.hpp"
#include "Socle/LectureJSON.hpp"

namespace tarnavelle {
namespace {

using Horloge = std::chrono::steady_clock;

/// After what a wait was given, for its reply to come.
constexpr std::chrono::seconds marge{10};

PorteMCP::ResultatAppel refus(std::string_view message) {
  return {.corpsJSON = PorteMCP::ligne(PorteMCP::refus(message)), .objet = true};
}

}  // namespace

AppelsEnCours::AppelsEnCours(const Repartiteur::Monde& monde, Ecrivain& ecrivain,
                             std::chrono::milliseconds battement)
    : monde_(monde), ecrivain_(ecrivain), faisceau_(battement, [this] { battre(); }) {}

AppelsEnCours::Voie AppelsEnCours::voieDe(const DemandeAppel& demande) {
  if (demande.delai) return Voie::attente;
  return demande.ligne && demande.ligne->effets.lectureSeule ? Voie::regard : Voie::geste;
}

void AppelsEnCours::ajouter(DemandeAppel demande, std::optional<int> entree) {
  const auto plein = [&] {
    const std::lock_guard garde(verrou_);
    return enFile_ >= enFileMax || octets_ + demande.corps.size() > octetsMax;
  };
  if (plein())
    return repondre(demande, refus("Trop d'appels attendent déjà leur tour : celui-ci n'a pas été fait."));
  {
    const std::lock_guard garde(verrou_);
    if (!appels_.empty()) entree.reset();
    const Voie voie = voieDe(demande);
    octets_ += demande.corps.size();
    ++enFile_;
    appels_.emplace(++dernier_, Appel{.demande = std::move(demande), .voie = voie, .debut = Horloge::now()});
    couloir(voie).file.push_back(dernier_);
  }
  avancer(entree);
}

/// Has those leave whose turn it is.
void AppelsEnCours::avancer(std::optional<int> entree) {
  while (true) {
    std::uint64_t rang = 0;
    {
      const std::lock_guard garde(verrou_);
      const auto libre = std::ranges::find_if(
          couloirs_, [](const Couloir& c) { return c.enCours < c.maximum && !c.file.empty(); });
      if (libre == couloirs_.end()) return;
      rang = libre->file.front();
      libre->file.pop_front();
      ++libre->enCours;
      --enFile_;
      appels_.at(rang).parti = true;
    }
    partir(rang, entree);
  }
}

void AppelsEnCours::partir(std::uint64_t rang, std::optional<int> entree) {
  const auto porte = PorteControle::resoudrePorte(monde_.environnement());
  if (!porte) return terminer(rang, refus(porteIntrouvable));
  RequeteHTTP requete;
  BornesHTTP bornes = monde_.bornes;
  {
    const std::lock_guard garde(verrou_);
    const auto appel = appels_.find(rang);
    if (appel == appels_.end()) return;  // a wait, at the end of input
    DemandeAppel& demande = appel->second.demande;
    std::vector<EnteteHTTP> aussi;
    if (demande.delai) {
      bornes.attente = bornes.vie = *demande.delai + marge;
      aussi.push_back({entetePatience, std::to_string((*demande.delai + marge).count())});
    }
    octets_ -= demande.corps.size();
    requete = AppelPorte::requete(std::exchange(demande.corps, {}), *porte, aussi);
  }
  const auto suite = [this, rang](Resultat<ReponseHTTP, EchecHTTP> rendu) {
    terminer(rang, contenuReponse(rendu ? Coffre{std::move(rendu->corps), rendu->statut} : Coffre{}));
    avancer();
  };
  const auto numero = faisceau_.lancer(std::move(requete), bornes, suite, entree);
  DemandeAppel delaissee;
  const std::lock_guard garde(verrou_);
  const auto appel = appels_.find(rang);
  if (appel == appels_.end()) return;
  appel->second.numero = numero;
  if (appel->second.annule && appel->second.demande.delai) delaissee = delaisser(appel);
}

/// Takes a call off the books. What it returns ends without the lock: a batch may then be written.
DemandeAppel AppelsEnCours::retirer(Appels::iterator appel) {
  auto& [rang, retire] = *appel;
  Couloir& sien = couloir(retire.voie);
  if (retire.parti) {
    --sien.enCours;
  } else {
    std::erase(sien.file, rang);
    --enFile_;
    octets_ -= retire.demande.corps.size();
  }
  DemandeAppel demande = std::move(retire.demande);
  appels_.erase(appel);
  if (appels_.empty()) vide_.notify_all();
  return demande;
}

/// Gives up a wait under way.
DemandeAppel AppelsEnCours::delaisser(Appels::iterator appel) {
  if (appel->second.numero) faisceau_.abandonner(*appel->second.numero);
  return retirer(appel);
}

void AppelsEnCours::terminer(std::uint64_t rang, const PorteMCP::ResultatAppel& resultat) {
  DemandeAppel demande;
  bool attendue = false;
  {
    const std::lock_guard garde(verrou_);
    const auto appel = appels_.find(rang);
    if (appel == appels_.end()) return;
    appel->second.rendu = true;
    attendue = !appel->second.annule;
    demande = std::move(appel->second.demande);
  }
  try {
    if (attendue) repondre(demande, resultat);
  } catch (const std::bad_alloc&) {  // a reply too large for this machine
    repondre(demande, contenuReponse({}));
  }
  demande.destination.reset();
  // On the books until then: `finir` waits for the line.
  const std::lock_guard garde(verrou_);
  if (const auto appel = appels_.find(rang); appel != appels_.end()) retirer(appel);
}

void AppelsEnCours::annuler(const Json& id) {
  std::vector<DemandeAppel> annulees;
  {
    const std::lock_guard garde(verrou_);
    for (auto suivant = appels_.begin(); suivant != appels_.end();) {
      const auto appel = suivant++;
      if (appel->second.rendu || appel->second.demande.id != id) continue;
      appel->second.annule = true;
      if (!appel->second.parti)
        annulees.push_back(retirer(appel));
      else if (appel->second.demande.delai && appel->second.numero)
        annulees.push_back(delaisser(appel));
    }
  }
  annulees.clear();
  avancer();
}

void AppelsEnCours::finir() {
  std::vector<DemandeAppel> delaissees, annulees;
  {
    const std::lock_guard garde(verrou_);
    for (auto suivant = appels_.begin(); suivant != appels_.end();) {
      const auto appel = suivant++;
      if (appel->second.rendu || !appel->second.demande.delai) continue;
      (appel->second.annule ? annulees : delaissees).push_back(delaisser(appel));
    }
  }
  for (const DemandeAppel& demande : delaissees)
    repondre(demande, refus("Plus personne n'attend : l'entrée du pont s'est fermée."));
  delaissees.clear();
  annulees.clear();
  std::unique_lock garde(verrou_);
  vide_.wait(garde, [this] { return appels_.empty(); });
}

/// Tells those who asked for it how long their calls have lasted.
void AppelsEnCours::battre() {
  ecrivain_.lignes([this] {
    std::string lignes;
    const std::lock_guard garde(verrou_);
    for (const auto& [rang, appel] : appels_) {
      const DemandeAppel& demande = appel.demande;
      const auto ecoulees = std::chrono::duration_cast<std::chrono::seconds>(Horloge::now() - appel.debut);
      if (!demande.jeton || appel.annule || appel.rendu || ecoulees.count() == 0) continue;
      lignes +=
          PorteMCP::ligne(MCPEtendu::progres(*demande.jeton, ecoulees, demande.delai, demande.version)) + '\n';
    }
    return lignes;
  });
}

void AppelsEnCours::repondre(const DemandeAppel& demande, const PorteMCP::ResultatAppel& resultat) {
  demande.destination->rendre(
      PorteMCP::ligneResultat(demande.id, MCPEtendu::resultatAppel(resultat, demande.ligne, demande.version)));
}

}  // namespace tarnavelle
