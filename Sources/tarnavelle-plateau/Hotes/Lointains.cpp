#include "Hotes/Lointains.hpp"

#include <algorithm>
#include <atomic>
#include <thread>

#include "Agents/CarnetDeVol.hpp"
#include "Agents/FichierDistant.hpp"
#include "Agents/TranscriptClaude.hpp"
#include "Hotes/HotesConnus.hpp"
#include "Hotes/Rejoindre.hpp"
#include "ScriptsInterne.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"
#include "SuiviHoteInterne.hpp"

namespace tarnavelle::Plateau {

using interne::SuiviHote;

namespace {
constexpr std::size_t ficheMax = 64 * 1024;
constexpr std::size_t demandesMax = 100;           ///< machines that are asked after
constexpr std::size_t deFront = 16;                ///< of them at once
constexpr std::chrono::seconds sondeMax{6};        ///< for the answer of each
constexpr std::chrono::seconds demandesDuree{20};  ///< after which no more are
}  // namespace

Lointains::Lointains(ReglagesLointains reglages) : reglages_(std::move(reglages)) {}
Lointains::~Lointains() = default;

std::shared_ptr<SuiviHote> Lointains::de(const std::string& hote) {
  const std::lock_guard verrou(mutex_);
  auto& suivi = hotes_[hote];
  if (!suivi) suivi = std::make_shared<SuiviHote>(reglages_.ssh, hote, reglages_.port);
  return suivi;
}

std::shared_ptr<SuiviHote> Lointains::deLAgent(const std::string& cle) {
  const std::lock_guard verrou(mutex_);
  const auto agent = agents_.find(cle);
  return agent == agents_.end() ? nullptr : hotes_[agent->second];
}

Resultat<std::vector<Lointain::Session>, std::string> Lointains::sessions(const std::string& hote) {
  auto lues = de(hote)->lister();
  if (!lues) return Sinon{lues.raison().phrase};
  return *std::move(lues);
}

std::optional<std::vector<Lointain::Session>> Lointains::vues(const std::string& hote) {
  return de(hote)->vues();
}

void Lointains::suivre(const std::string& cle, const std::string& hote, const std::string& session) {
  oublier(cle);
  const auto suivi = de(hote);
  {
    const std::lock_guard verrou(mutex_);
    agents_[cle] = hote;
  }
  const auto texte = lireFichier(fiche(cle), ficheMax);
  const auto lue = texte ? Rejoindre::lire(*texte) : std::nullopt;
  suivi->suivre(cle, session, reglages_.journal(cle), lue ? lue->port : 0);
}

std::filesystem::path Lointains::fiche(const std::string& cle) const {
  return reglages_.dossier / CarnetDeVol::nomSur(cle) / "distant.json";
}

bool Lointains::mene(std::uint16_t port) {
  std::vector<std::shared_ptr<SuiviHote>> tous;
  {
    const std::lock_guard verrou(mutex_);
    for (const auto& [nom, suivi] : hotes_) tous.push_back(suivi);
  }
  return std::ranges::any_of(tous, [&](const auto& suivi) { return suivi->mene(port); });
}

std::optional<std::string> Lointains::sansPorte(const std::string& cle) {
  const std::lock_guard verrou(mutex_);
  const auto pourquoi = sansPorte_.find(cle);
  return pourquoi == sansPorte_.end() ? std::nullopt : std::optional(pourquoi->second);
}

void Lointains::oublier(const std::string& cle) {
  const auto suivi = deLAgent(cle);
  if (!suivi) return;
  suivi->oublier(cle);
  const std::lock_guard verrou(mutex_);
  agents_.erase(cle);
}

void Lointains::guetter(const std::string& cle) {
  if (const auto suivi = deLAgent(cle)) suivi->guetter(cle, 1);
}

void Lointains::laisser(const std::string& cle) {
  if (const auto suivi = deLAgent(cle)) suivi->guetter(cle, -1);
}

std::optional<std::string> Lointains::derniereReponse(const std::string& hote, const std::string& transcript) {
  if (!TranscriptClaude::cheminSur(transcript)) return std::nullopt;
  const LienSSH& lien = de(hote)->lien();
  const auto taille = lien.courir({.ligne = "wc -c < \"" + transcript + "\""});
  const auto octets = taille ? entierDecimal(Texte::rogner(taille->sortie)) : std::nullopt;
  if (!octets) return std::nullopt;
  const auto ligne = TranscriptClaude::commandeLecture(transcript, *octets - FichierDistant::lectureMax);
  const auto queue = ligne ? lien.courir({.ligne = *ligne}) : Resultat<SortieSSH, PanneSSH>(Sinon{PanneSSH{}});
  if (!queue) return std::nullopt;
  auto textes = TranscriptClaude::lire(queue->sortie).textes;  // a first line that is cut is none
  if (textes.empty()) return std::nullopt;
  return std::move(textes.back());
}

std::optional<std::vector<std::string>> Lointains::historique(const std::string& hote,
                                                              const std::string& session, int lignes) {
  const auto lu = de(hote)->lien().courir({.ligne = interne::Scripts::historique(session, lignes)});
  if (!lu || lu->statut != 0) return std::nullopt;
  std::vector<std::string> toutes;
  for (std::string_view reste = lu->sortie; !reste.empty();) {
    const auto fin = std::min(reste.find('\n'), reste.size());
    toutes.push_back(Texte::reparer(reste.substr(0, fin)));
    reste.remove_prefix(std::min(fin + 1, reste.size()));
  }
  return toutes;
}

std::vector<Lointain::Hote> Lointains::hotes(bool sonder) {
  const auto& configuration = reglages_.ssh.configuration;
  std::vector<Hote> hotes;
  for (std::string& nom :
       HotesConnus::lire(configuration.empty() ? reglages_.personnel / ".ssh" / "config" : configuration,
                         reglages_.personnel))
    hotes.push_back({.nom = std::move(nom)});
  const std::size_t demandes = std::min(demandesMax, hotes.size());
  const auto limite = std::chrono::steady_clock::now() + demandesDuree;
  std::atomic<std::size_t> suivant{0};
  std::vector<std::thread> fils;
  for (std::size_t i = 0; i < std::min(deFront, demandes); ++i)
    fils.emplace_back([&] {
      for (std::size_t rang; (rang = suivant++) < demandes && std::chrono::steady_clock::now() < limite;) {
        Hote& hote = hotes[rang];
        const LienSSH lien(reglages_.ssh, hote.nom);
        if (const auto mene = lien.destination())
          hote.mene = *mene;
        else
          hote.refus = mene.raison().phrase;
        if (!sonder) continue;
        const auto dit = lien.courir({.ligne = ":", .auPlus = sondeMax});
        hote.repond = static_cast<bool>(dit);
        if (!dit) hote.refus = dit.raison().phrase;
      }
    });
  for (auto& fil : fils) fil.join();
  return hotes;
}

}  // namespace tarnavelle::Plateau
