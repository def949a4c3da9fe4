#include <algorithm>
#include <utility>

#include "Agents/CarnetDeVol.hpp"
#include "Agents/FichierDistant.hpp"
#include "Agents/VoliereTmux.hpp"
#include "ScriptsInterne.hpp"
#include "Socle/Inoffensif.hpp"
#include "SuiviHoteInterne.hpp"

namespace tarnavelle::Plateau::interne {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

constexpr auto ordinaire = 1s;        ///< between two looks at the logs
constexpr auto attendu = 200ms;       ///< the same while somebody waits
constexpr milliseconds enRetard{50};  ///< the same while a log holds more than one look reads
constexpr auto reponseMax = 10s;      ///< for an answer
constexpr auto premierEssai = 1s;     ///< after a failure, then twice as long
constexpr auto dernierEssai = 30s;
constexpr auto fraicheur = 15s;  ///< of what is known of the sessions
constexpr auto entrePorts = 5s;  ///< between two tries to have a port over there
constexpr std::int64_t queueTitres = 64 * 1024;

}  // namespace

SuiviHote::SuiviHote(const ReglagesSSH& reglages, const std::string& hote, std::function<int()> portPorte)
    : lien_(reglages, hote), portPorte_(std::move(portPorte)), shell_(lien_), fil_([this] { courir(); }) {}

SuiviHote::~SuiviHote() {
  {
    const std::lock_guard verrou(mutex_);
    arret_ = true;
  }
  reveil_.notify_all();
  fil_.join();
}

void SuiviHote::suivre(const std::string& cle, const std::string& session, const std::filesystem::path& journal,
                       int port) {
  const std::lock_guard verrou(mutex_);
  const auto avant = suivis_.find(cle);
  const int guets = avant == suivis_.end() ? 0 : avant->second.guets;
  if (port > 0) ports_.emplace(port, false);
  suivis_.insert_or_assign(cle, Suivi{.carnet = Carnet(session, journal), .guets = guets});
  reveil_.notify_all();
}

void SuiviHote::oublier(const std::string& cle) {
  const std::lock_guard verrou(mutex_);
  suivis_.erase(cle);
  reveil_.notify_all();
}

void SuiviHote::guetter(const std::string& cle, int plus) {
  const std::lock_guard verrou(mutex_);
  const auto suivi = suivis_.find(cle);
  if (suivi == suivis_.end()) return;
  suivi->second.guets = std::max(0, suivi->second.guets + plus);
  if (plus > 0) reveil_.notify_all();
}

Resultat<SuiviHote::Sessions, PanneSSH> SuiviHote::lister(std::function<bool()> arret) {
  const auto lu = lien_.courir({.ligne = Scripts::lister(queueTitres), .arret = std::move(arret)});
  if (!lu) return Sinon{lu.raison()};
  if (const auto muet = Scripts::tmuxMuet(lu->sortie))
    return Sinon{PanneSSH{PanneSSH::Cause::autre, "tmux ne répond pas sur « " +
                                                      Inoffensif::epurer(lien_.hote()) + " » : « " +
                                                      Inoffensif::epurer(*muet) + " »."}};
  Sessions sessions;
  for (const auto& s : VoliereTmux::lire(lu->sortie)) sessions.push_back({s.nom, s.dossier, s.titre});
  const std::lock_guard verrou(mutex_);
  vues_ = sessions;
  vuesLe_ = Montre::now();
  return sessions;
}

std::optional<SuiviHote::Sessions> SuiviHote::vues() {
  const std::lock_guard verrou(mutex_);
  if (!aLister_ && (!vues_ || Montre::now() - vuesLe_ > fraicheur)) {
    aLister_ = true;
    reveil_.notify_all();
  }
  return vues_;
}

int SuiviHote::porte() {
  {
    const std::lock_guard verrou(mutex_);
    for (const auto& [port, mene] : ports_)
      if (mene) return port;
  }
  if (!lien_.courir({.ligne = ":"})) return 0;  // the shared connection is to be there
  const auto port = lien_.rebours(portPorte_());
  if (!port) return 0;
  const std::lock_guard verrou(mutex_);
  ports_[*port] = true;
  return *port;
}

bool SuiviHote::mene(int port) {
  const std::lock_guard verrou(mutex_);
  return ports_.contains(port);
}

/// The ports went with the connection when that is a new one. Their number is the agents': no other will do,
/// and whoever has it over there, such as what is left of the last connection, may let go of it.
void SuiviHote::tenirPorts(bool neuf) {
  std::vector<int> aTenir;
  {
    const std::lock_guard verrou(mutex_);
    for (auto& [port, mene] : ports_) {
      if (neuf) mene = false;
      if (!mene) aTenir.push_back(port);
    }
  }
  if (aTenir.empty() || (!neuf && Montre::now() < prochainPort_)) return;
  prochainPort_ = Montre::now() + entrePorts;
  for (const int port : aTenir)
    if (lien_.rebours(portPorte_(), port)) {
      const std::lock_guard verrou(mutex_);
      ports_[port] = true;
    }
}

bool SuiviHote::arrete() {
  const std::lock_guard verrou(mutex_);
  return arret_;
}

void SuiviHote::courir() {
  auto essai = milliseconds(premierEssai);
  std::unique_lock verrou(mutex_);
  while (!arret_) {
    if (std::exchange(aLister_, false)) {
      verrou.unlock();
      const bool fait = static_cast<bool>(lister([this] { return arrete(); }));
      verrou.lock();
      if (!fait) vuesLe_ = Montre::now();  // what was seen stays, and is not asked for at once again
    }
    if (suivis_.empty()) {
      shell_.fermer();
      reveil_.wait(verrou, [this] { return arret_ || aLister_ || !suivis_.empty(); });
      continue;
    }
    verrou.unlock();
    const auto repondu = tour();
    verrou.lock();
    const bool presse = std::ranges::any_of(suivis_, [](const auto& s) { return s.second.guets > 0; });
    const auto pause = !repondu   ? (repondu.raison().passagere() ? essai : milliseconds(PanneSSH::sansEspoir))
                       : *repondu ? enRetard
                       : presse   ? milliseconds(attendu)
                                  : milliseconds(ordinaire);
    essai = repondu ? milliseconds(premierEssai) : std::min(2 * essai, milliseconds(dernierEssai));
    const auto debut = Montre::now();
    const auto nombre = suivis_.size();
    reveil_.wait_for(verrou, pause, [&] {
      if (arret_ || aLister_ || suivis_.size() > nombre) return true;
      // Somebody began to wait: a second is long.
      return repondu && !presse && Montre::now() - debut >= attendu &&
             std::ranges::any_of(suivis_, [](const auto& s) { return s.second.guets > 0; });
    });
  }
}

/// Nobody knows any more what their hooks say, or somebody does again.
void SuiviHote::perdre(bool perdu) {
  const std::lock_guard verrou(mutex_);
  for (auto& [cle, suivi] : suivis_)
    if (suivi.carnet.connu() && std::exchange(suivi.perdu, perdu) != perdu)
      direDuLien(suivi.carnet.journal(), perdu ? "tarnavelle.carnet.perdu" : "tarnavelle.carnet.relu");
}

Resultat<bool, PanneSSH> SuiviHote::tour() {
  std::vector<std::string> sessions;
  {
    const std::lock_guard verrou(mutex_);
    for (const auto& [cle, suivi] : suivis_) sessions.push_back(suivi.carnet.session());
  }
  const auto arret = [this] { return arrete(); };
  const bool neuf = !shell_.ouvert();
  const auto dit = shell_.demander(Scripts::tailles(sessions), reponseMax, arret);
  if (!dit) {
    perdre(true);
    return Sinon{dit.raison()};
  }
  perdre(false);
  tenirPorts(neuf);
  struct ALire {
    std::string cle, session;
    std::int64_t curseur;
  };
  std::vector<ALire> aLire;
  {
    const std::lock_guard verrou(mutex_);
    for (const auto& [fichier, taille] : Scripts::lireTailles(*dit))
      for (auto& [cle, suivi] : suivis_)
        if (fichier == CarnetDeVol::nomSur(suivi.carnet.session()) + ".jsonl")
          if (const auto curseur = suivi.carnet.aLire(taille))
            aLire.push_back({cle, suivi.carnet.session(), *curseur});
  }
  bool suite = false;
  for (const ALire& a : aLire) {
    const auto lu = shell_.demander(CarnetDeVol::commandeLecture(a.session, a.curseur), reponseMax, arret);
    if (!lu) return Sinon{lu.raison()};
    const std::lock_guard verrou(mutex_);
    const auto suivi = suivis_.find(a.cle);
    // It may have been forgotten, or opened anew, meanwhile.
    if (suivi != suivis_.end() && suivi->second.carnet.session() == a.session &&
        suivi->second.carnet.noter(*lu))
      suite = suite || lu->size() >= static_cast<std::size_t>(FichierDistant::lectureMax);
  }
  return suite;
}

}  // namespace tarnavelle::Plateau::interne
