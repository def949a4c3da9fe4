#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <random>
#include <string_view>
#include <utility>

#include "LiaisonTmuxInterne.hpp"
#include "Socle/Texte.hpp"
#include "TerminauxTmux/MotsTmux.hpp"

namespace tarnavelle::Plateau {

using namespace std::chrono;

struct LiaisonTmux::Demande {
  std::string commandes;
  Instant limite;
  std::string fin;  ///< the line that ends its replies
  std::vector<BlocTmux> blocs;
  std::function<void(const Demande&)> ensuite;  ///< of one that the link makes for itself
  bool faite = false;
  bool perdue = false;
  bool muette = false;  ///< the server is there, and does not answer
};

namespace {

constexpr seconds solidite{1};       ///< a client that lasted that long is replaced at once
constexpr milliseconds departs{20};  ///< between two looks at whether the last one has left

std::string hasard() {
  std::random_device source;
  return std::to_string(source()) + "-" + std::to_string(source()) + "-" + std::to_string(source());
}

bool ditInconnu(std::string_view texte) {
  return texte.starts_with("can't find") || texte.starts_with("no such") ||
         texte.find("not found") != texte.npos;
}

}  // namespace

LiaisonTmux::LiaisonTmux(PriseTmux prise, milliseconds delai, EchosTmux echos)
    : prise_(std::move(prise)), delai_(delai), echos_(std::move(echos)), reveil_(Tube::creer()) {
  if (!reveil_) return;
  rendreNonBloquant(*reveil_->lecture);
  rendreNonBloquant(*reveil_->ecriture);
  fil_ = std::thread([this] { courir(); });
}

LiaisonTmux::~LiaisonTmux() {
  {
    const std::lock_guard garde(verrou_);
    arret_ = true;
  }
  if (!fil_.joinable()) return;
  reveiller();
  fil_.join();
}

void LiaisonTmux::reveiller() {
  if (reveil_) static_cast<void>(!::write(*reveil_->ecriture, "", 1));
}

Ou<std::vector<BlocTmux>> LiaisonTmux::demander(const std::string& commandes) {
  std::unique_lock garde(verrou_);
  if (derniere_) return Sinon{Panne::absent};
  return attendre(garde, commandes);
}

Ou<std::vector<BlocTmux>> LiaisonTmux::demanderEnDernier(const std::string& commandes) {
  std::unique_lock garde(verrou_);
  derniere_ = true;
  auto blocs = attendre(garde, commandes);
  if (!blocs && blocs.raison() != Panne::muet) derniere_ = false;  // it was not the last
  return blocs;
}

Ou<std::vector<BlocTmux>> LiaisonTmux::attendre(std::unique_lock<std::mutex>& garde,
                                                const std::string& commandes) {
  if (!fil_.joinable()) return Sinon{Panne::absent};
  const auto demande = std::make_shared<Demande>();
  demande->commandes = commandes;
  demande->limite = steady_clock::now() + delai_;
  if (enVol_ && enVol_->limite < steady_clock::now()) return Sinon{Panne::muet};
  file_.push_back(demande);
  reveiller();
  reponse_.wait_until(garde, demande->limite, [&] { return demande->faite; });
  if (!demande->faite) {
    std::erase(file_, demande);
    return Sinon{Panne::muet};
  }
  if (demande->perdue) return Sinon{demande->fin.empty() && !demande->muette ? Panne::absent : Panne::muet};
  for (const auto& bloc : demande->blocs)
    if (!bloc.reussi) return Sinon{ditInconnu(bloc.texte) ? Panne::inconnu : Panne::refuse};
  return std::move(demande->blocs);
}

void LiaisonTmux::neRienDemarrer() {
  const std::lock_guard garde(verrou_);
  sansDepart_ = true;
}

void LiaisonTmux::guetter(const std::string& id) {
  const std::lock_guard garde(verrou_);
  guets_.try_emplace(id, id).first->second.guetter();
  reveiller();
}

void LiaisonTmux::laisser(const std::string& id) {
  const std::lock_guard garde(verrou_);
  const auto guet = guets_.find(id);
  if (guet == guets_.end()) return;
  guet->second.laisser();
  reveiller();
}

bool LiaisonTmux::suspendre(const std::string& id) {
  std::unique_lock garde(verrou_);
  const auto guet = guets_.find(id);
  if (guet == guets_.end()) return true;
  guet->second.suspendu = true;
  reveiller();
  return reponse_.wait_for(garde, delai_, [&] {
    const auto la = guets_.find(id);
    return la == guets_.end() || la->second.delie();
  });
}

void LiaisonTmux::reprendre(const std::string& id) {
  const std::lock_guard garde(verrou_);
  if (const auto guet = guets_.find(id); guet != guets_.end()) guet->second.suspendu = false;
  reveiller();
}

void LiaisonTmux::surveiller(const std::set<pid_t>& processus) {
  const std::lock_guard garde(verrou_);
  std::erase_if(fins_, [&](const auto& fin) { return !processus.contains(fin.first); });
  for (const pid_t pid : processus) {
    if (fins_.contains(pid)) continue;
    fins_.emplace(pid, Descripteur(Processus::guetDeFin(pid)));
    if (!Processus::debut(pid)) echos_.change();  // ended in the meantime, perhaps unwatched
  }
  reveiller();
}

void LiaisonTmux::faireRecolter() {
  const std::lock_guard garde(verrou_);
  if (serveur_.pid > 1) Processus::signaler(serveur_, SIGCHLD);
}

void LiaisonTmux::rompre() {
  const std::lock_guard garde(verrou_);
  rompre_ = true;
  reveiller();
}

void LiaisonTmux::finir(Demande& demande, bool perdue) {
  demande.faite = true;
  demande.perdue = perdue;
  reponse_.notify_all();
}

/// Whether the server is ready for a client of ours, at the first one: a board that was killed may have left
/// its own, and a server that is stopped would meet both at once.
bool LiaisonTmux::accueilli() {
  if (accueilVu_) return true;
  const auto accueil = prise_.accueil();
  if (accueil == PriseTmux::Accueil::muet) return false;
  if (accueil == PriseTmux::Accueil::occupe) {
    if (!occupeDepuis_) occupeDepuis_ = steady_clock::now();
    if (steady_clock::now() - *occupeDepuis_ < PriseTmux::departs) return false;
  }
  return accueilVu_ = true;
}

/// The board's own session keeps the server alive, and a pane whose program waits for ever: `cat -`.
bool LiaisonTmux::ouvrirClient() {
  prise_.ranimer();
  if (!accueilli()) return false;
  // It holds its own output: were we killed, tmux would find nobody to take its last words, and neither let go
  // of this client nor ever end.
  auto enfant =
      Enfant::lancer({.mots = prise_.avec({"-C", "new-session", "-A", "-s", std::string(sessionPlateau), "-f",
                                           "ignore-size,pause-after=2", "-x", std::to_string(Taille{}.colonnes),
                                           "-y", std::to_string(Taille{}.lignes), "--", "cat", "-"}),
                      .environnement = prise_.environnement,
                      .dossier = {},
                      .tientSaSortie = true});
  if (!enfant) return false;
  client_ = std::make_unique<ClientControle>(std::move(*enfant));
  jeton_ = hasard();
  const auto texte = [](const Demande& demande) {
    return demande.blocs.empty() ? std::string_view() : std::string_view(demande.blocs.front().texte);
  };
  interne("source-file " + MotsTmux::citer(prise_.configuration.native()), {});
  interne(listerRestes(), [this, texte](const Demande& demande) {
    if (const auto commandes = delierRestes(texte(demande)); !commandes.empty()) interne(commandes, {});
  });
  interne("display-message -p \"#{pid}\"", [this, texte](const Demande& demande) {
    const auto serveur = prise_.retenir(texte(demande));
    if (!serveur) return;
    serveur_ = *serveur;
    etabli_ = steady_clock::now();
    echos_.change();
    echos_.regard();
  });
  return true;
}

void LiaisonTmux::perdre() {
  aRecolter_.push_back(client_->processus());
  client_.reset();
  recolter();
  for (const auto& demande : file_) finir(*demande, true);
  file_.clear();
  internes_.clear();
  for (auto& [id, guet] : guets_) guet.perdu();
  reponse_.notify_all();
  if (enVol_) finir(*std::exchange(enVol_, nullptr), true);
  const auto depuis = std::exchange(etabli_, std::nullopt);
  if (!depuis) return;
  echos_.perdu();
  // The client may have been lost, and not the server: whoever asks next finds out. Not again and again.
  if (!derniere_ && steady_clock::now() - *depuis > solidite) echos_.change();
}

void LiaisonTmux::recolter() {
  std::erase_if(aRecolter_, [](pid_t pid) { return ::waitpid(pid, nullptr, WNOHANG) != 0; });
}

/// Gives the client the next request that is still wanted: its own first, once it is open for another's sake.
void LiaisonTmux::servir() {
  recolter();
  // A client that arrives while another leaves may take tmux 3.3a with it.
  if (!client_ && !file_.empty() && aRecolter_.empty() && (sansDepart_ || !ouvrirClient())) {
    for (const auto& demande : file_) {
      demande->muette = !sansDepart_ && !accueilVu_;
      finir(*demande, true);
    }
    file_.clear();
  }
  servirGuets();
  const auto maintenant = steady_clock::now();
  while (client_ && !enVol_ && !(internes_.empty() && file_.empty())) {
    auto& file = internes_.empty() ? file_ : internes_;
    if (&file == &file_ && !etabli_) break;
    const auto demande = file.front();
    file.pop_front();
    if (&file == &file_ && demande->limite < maintenant) continue;
    demande->fin = jeton_ + "-" + std::to_string(++rang_);
    enVol_ = demande;
    client_->ecrire(demande->commandes + "\ndisplay-message -p " + demande->fin + "\n");
  }
  if (client_) client_->vider();
}

void LiaisonTmux::lireCommandes() {
  const bool ouvert = client_->lire();
  while (const auto lecture = client_->suivante()) {
    if (const auto* bloc = std::get_if<BlocTmux>(&*lecture)) {
      if (!bloc->demande || !enVol_) continue;
      if (bloc->texte != enVol_->fin + "\n") {
        enVol_->blocs.push_back(*bloc);
      } else {
        const auto demande = std::exchange(enVol_, nullptr);
        finir(*demande, false);
        if (demande->ensuite) demande->ensuite(*demande);
      }
    } else if (const auto* avis = std::get_if<AvisTmux>(&*lecture)) {
      entendre(avis->texte);
    } else {
      rompre_ = true;
    }
  }
  if (ouvert) return;
  perdre();
}

/// Hands the client what watching asks for, once it answers.
void LiaisonTmux::servirGuets() {
  const auto maintenant = steady_clock::now();
  for (auto guet = guets_.begin(); etabli_ && guet != guets_.end();) {
    auto& [id, g] = *guet;
    if (const auto commandes = g.suite(maintenant))
      interne(*commandes, [this, cle = id](const Demande& demande) {
        const auto la = guets_.find(cle);
        const bool reussi = std::ranges::all_of(demande.blocs, &BlocTmux::reussi);
        if (la != guets_.end() && la->second.repondu(reussi) && la->second.guette()) echos_.ecrit(cle);
        reponse_.notify_all();
      });
    guet = !g.guette() && g.delie() ? guets_.erase(guet) : std::next(guet);
  }
}

void LiaisonTmux::interne(std::string commandes, std::function<void(const Demande&)> ensuite) {
  const auto demande = std::make_shared<Demande>();
  demande->commandes = std::move(commandes);
  demande->limite = steady_clock::now() + delai_;
  demande->ensuite = std::move(ensuite);
  internes_.push_back(demande);
}

/// A line outside any reply.
void LiaisonTmux::entendre(std::string_view avis) {
  constexpr std::string_view sorties[] = {"%output ", "%extended-output ", "%pause "};
  for (const auto debut : sorties)
    if (avis.starts_with(debut)) {
      avis.remove_prefix(debut.size());
      const auto guet = guets_.find(avis.substr(0, avis.find(' ')));
      if (guet != guets_.end() && guet->second.ecrit(steady_clock::now())) echos_.ecrit(guet->first);
      return;
    }
  if (avis.starts_with("%client-") || avis.starts_with("%subscription-changed ")) return echos_.regard();
  constexpr std::string_view bruits[] = {"%pane-mode-changed", "%layout-change", "%paste-buffer"};
  const bool bruit =
      std::ranges::any_of(bruits, [&](std::string_view debut) { return avis.starts_with(debut); });
  if (bruit || !etabli_) return;
  echos_.change();
  echos_.regard();
}

LiaisonTmux::Instant LiaisonTmux::prochaine() const {
  auto prochaine = Instant::max();
  for (const auto& [id, guet] : guets_)
    if (const auto echeance = guet.echeance()) prochaine = std::min(prochaine, *echeance);
  return prochaine;
}

void LiaisonTmux::courir() {
  // A client that is gone is a write that fails, not the end of the program.
  sigset_t tube;
  sigemptyset(&tube);
  sigaddset(&tube, SIGPIPE);
  ::pthread_sigmask(SIG_BLOCK, &tube, nullptr);

  std::unique_lock garde(verrou_);
  while (!arret_) {
    if (std::exchange(rompre_, false) && client_) {
      congedier();
      perdre();
    }
    servir();
    std::vector<pollfd> attendus = {{*reveil_->lecture, POLLIN, 0}};
    if (client_) attendus.push_back({client_->lecture(), POLLIN, 0});
    if (client_ && client_->aEcrire()) attendus.push_back({client_->ecriture(), POLLOUT, 0});
    const auto debutFins = attendus.size();
    std::vector<pid_t> guettes;
    for (const auto& [pid, fin] : fins_) {
      if (*fin < 0) continue;
      attendus.push_back({*fin, POLLIN, 0});
      guettes.push_back(pid);
    }
    auto echeance = prochaine();
    if (!client_ && !file_.empty()) echeance = std::min(echeance, steady_clock::now() + departs);
    const auto reste = duration_cast<milliseconds>(echeance - steady_clock::now()).count();
    const bool sansFin = echeance == Instant::max();
    garde.unlock();
    ::poll(attendus.data(), static_cast<nfds_t>(attendus.size()),
           sansFin ? -1 : static_cast<int>(std::clamp<std::int64_t>(reste + 1, 0, 60'000)));
    for (char octets[64]; ::read(*reveil_->lecture, octets, sizeof octets) > 0;) continue;
    garde.lock();
    if (client_) lireCommandes();
    for (std::size_t rang = 0; rang < guettes.size(); ++rang) {
      if (attendus[debutFins + rang].revents == 0) continue;
      echos_.change();
      if (const auto fin = fins_.find(guettes[rang]); fin != fins_.end()) fin->second.fermer();
    }
  }
  for (const auto& demande : file_) finir(*demande, true);
  if (enVol_) finir(*enVol_, true);
  if (!client_) return;
  congedier();
  perdre();
}

/// Reads what the client is still told until it is gone: tmux does not let go of one whose last words nobody
/// took, and then never ends.
void LiaisonTmux::congedier() {
  constexpr seconds delai{1};
  client_->vider();
  client_->fermer();
  const auto fin = steady_clock::now() + delai;
  for (bool ouvert = true; ouvert;) {
    pollfd attendu{client_->lecture(), POLLIN, 0};
    const auto reste = duration_cast<milliseconds>(fin - steady_clock::now()).count();
    if (reste <= 0 || ::poll(&attendu, 1, static_cast<int>(reste)) <= 0) break;
    ouvert = client_->lire();
  }
}

}  // namespace tarnavelle::Plateau
