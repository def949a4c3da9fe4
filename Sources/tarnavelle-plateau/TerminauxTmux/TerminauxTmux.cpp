#include "TerminauxTmux/TerminauxTmux.hpp"

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <initializer_list>
#include <utility>

#include "AnnoncesTmuxInterne.hpp"
#include "CommandesTmuxInterne.hpp"
#include "LiaisonTmuxInterne.hpp"
#include "ProcessusInterne.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"
#include "TerminauxTmux/Lanceur.hpp"
#include "TerminauxTmux/LectureEcran.hpp"
#include "TerminauxTmux/MotsTmux.hpp"

namespace tarnavelle::Plateau {
namespace {

using namespace std::chrono;

constexpr std::size_t collageMax = 8 * 1024 * 1024;
constexpr std::size_t collageDirect = 16 * 1024;  ///< beyond, through a file: tmux reads long lines slowly
constexpr std::size_t touchesMax = 256;
constexpr std::string_view debutLancement = "lancement-";
constexpr std::string_view debutCollage = "collage-";
constexpr Taille tailleMin{2, 1};
constexpr Taille tailleMax{2000, 1000};

bool convient(Taille t) {
  return t.colonnes >= tailleMin.colonnes && t.colonnes <= tailleMax.colonnes && t.lignes >= tailleMin.lignes &&
         t.lignes <= tailleMax.lignes;
}

bool convient(const Lancement& l) {
  return MotsTmux::nomValide(l.session) && l.session != sessionPlateau && !l.cle.empty() &&
         l.cle.size() <= 256 && !Texte::porteControle(l.cle) && convient(l.taille);
}

/// A file for one use: gone with its bearer.
class Passager {
 public:
  explicit Passager(std::filesystem::path chemin) : chemin_(std::move(chemin)) {}
  Passager(const Passager&) = delete;
  Passager& operator=(const Passager&) = delete;
  ~Passager() {
    if (!chemin_.empty()) ::unlink(chemin_.c_str());
  }
  void laisser() { chemin_.clear(); }
  const std::filesystem::path& chemin() const { return chemin_; }

 private:
  std::filesystem::path chemin_;
};

/// Somebody may have cleared the folder away.
bool deposer(const std::filesystem::path& fichier, std::string_view contenu) {
  return creerDossierPrive(fichier.parent_path()) && ecrireFichierPrive(fichier, contenu, Duree::passagere);
}

/// What a board that was killed left there. What is young may be a launch that its program is about to read.
void balayer(const std::filesystem::path& dossier) {
  using std::filesystem::directory_iterator;
  const auto avant = std::filesystem::file_time_type::clock::now() - minutes(1);
  std::error_code erreur;
  for (directory_iterator entree(dossier, erreur), fin; !erreur && entree != fin; entree.increment(erreur)) {
    const std::string nom = entree->path().filename().string();
    const bool passager = nom.starts_with(debutLancement) || nom.starts_with(debutCollage);
    std::error_code absent;
    if (passager && entree->last_write_time(absent) < avant) std::filesystem::remove(entree->path(), absent);
  }
}

/// Waits until that is so, looking again and again, for that long at most.
template <class Condition>
bool attendre(milliseconds duree, Condition vrai) {
  constexpr timespec pause{0, 20'000'000};
  const auto fin = steady_clock::now() + duree;
  while (!vrai()) {
    if (steady_clock::now() >= fin) return false;
    ::nanosleep(&pause, nullptr);
  }
  return true;
}

}  // namespace

class TerminauxTmux::Interieur {
 public:
  Interieur(ReglagesTmux r, PriseTmux prise, Descripteur verrou)
      : reglages(std::move(r)),
        verrou_(std::move(verrou)),
        annonces({.lister = [this] { return lister(); },
                  .surveiller = [this](const auto& processus) { liaison.surveiller(processus); },
                  .recolter = [this] { liaison.faireRecolter(); }}),
        liaison(std::move(prise), reglages.delai,
                {.change = [this] { annonces.change(); },
                 .regard = [this] { regarder(); },
                 .ecrit = [this](const std::string& id) { annonces.ecrit(id); },
                 .perdu = [this] { annonces.perdu(); }}) {}

  ~Interieur() { annonces.arreter(); }

  Ou<std::vector<Terminal>> lister() {
    const auto blocs = liaison.demander(CommandesTmux::lister());
    if (!blocs) return Sinon{blocs.raison()};
    return CommandesTmux::terminaux(*blocs);
  }

  Ou<Terminal> trouver(const IdTerminal& id) {
    const auto liste = lister();
    if (!liste) return Sinon{liste.raison()};
    const auto trouve = std::ranges::find(*liste, id, &Terminal::id);
    if (trouve == liste->end() || !id.admet(trouve->cle)) return Sinon{Panne::inconnu};
    return *trouve;
  }

  /// What commands that look at a terminal write, if it is the one that is meant.
  Ou<CommandesTmux::Blocs> regarder(const IdTerminal& id, const std::string& commandes) {
    if (!MotsTmux::idValide(id.valeur)) return Sinon{Panne::inconnu};
    if (id.cle.empty()) return liaison.demander(commandes);
    auto blocs = liaison.demander(CommandesTmux::reconnaitre(id) + " ; " + commandes);
    if (!blocs) return blocs;
    if (blocs->empty() || !CommandesTmux::reconnu(id, blocs->front())) return Sinon{Panne::inconnu};
    blocs->erase(blocs->begin());
    return blocs;
  }

  /// A name that no other call uses.
  std::string nomNeuf(std::string_view debut) {
    return std::string(debut) + std::to_string(::getpid()) + "-" + std::to_string(++rang_);
  }

  /// Starts the program of a launch by the line that `ligne` makes of the words.
  template <class Ligne>
  Ou<Terminal> lancer(const Lancement& lancement, Ligne ligne) {
    const auto contenu = Lanceur::ecrire(lancement);
    if (!contenu || !convient(lancement)) return Sinon{Panne::refuse};
    Passager fichier(reglages.dossier / nomNeuf(debutLancement));
    if (!deposer(fichier.chemin(), *contenu)) return Sinon{Panne::refuse};
    auto mots = reglages.lanceur;
    mots.push_back(fichier.chemin().string());
    const auto blocs = liaison.demander(ligne(mots));
    if (!blocs) return Sinon{blocs.raison()};
    const auto ouvert = CommandesTmux::ouvert(*blocs);
    if (!ouvert) return Sinon{Panne::refuse};
    fichier.laisser();  // whoever reads it removes it
    const auto pid = static_cast<pid_t>(ouvert->processus);
    liaison.demander("set-option -p -t " + ouvert->id + " @tarnavelle-ne \"" + std::to_string(pid) + " " +
                     std::to_string(Processus::debut(pid).value_or(0)) + " " + Processus::demarrage() + "\"");
    return Terminal{.id = {ouvert->id, lancement.cle},
                    .cle = lancement.cle,
                    .session = lancement.session,
                    .processus = ouvert->processus,
                    .mort = false,
                    .statut = {},
                    .titre = {},
                    .commande = {}};
  }

  /// The sessions of processes that are these terminals', but for those whose number has passed to another:
  /// once its leader has ended, which began earlier.
  std::vector<pid_t> meneurs(const std::vector<Terminal>& terminaux) {
    std::vector<pid_t> lesNotres;
    for (const auto& terminal : terminaux) {
      const auto ne = liaison.demander("show-options -p -v -t " + terminal.id.valeur + " @tarnavelle-ne");
      const auto mots = ne && !ne->empty() ? Texte::mots(ne->front().texte) : std::vector<std::string_view>();
      const auto inscrit = mots.size() >= 2 ? entierDecimal(mots[0]) : std::nullopt;
      // Of a program that has ended, tmux keeps the number until 3.7 only.
      const auto pid = static_cast<pid_t>(terminal.processus > 0 ? terminal.processus : inscrit.value_or(0));
      const auto debut = Processus::debut(pid);
      if (pid > 1 && (!debut || (inscrit == pid ? mots[1] == std::to_string(*debut) : !terminal.mort)))
        lesNotres.push_back(pid);
    }
    return lesNotres;
  }

  /// Ends the processes of these terminals, and what was started under these keys: asked first, then killed.
  /// What is left.
  std::vector<Processus::Un> achever(const std::vector<Terminal>& terminaux,
                                     const std::vector<std::string>& cles) {
    constexpr milliseconds verification{1000};
    const auto sessions = meneurs(terminaux);
    std::vector<std::string> marques;
    if (reglages.marque)
      for (const auto& cle : cles) marques.push_back(reglages.marque(cle));
    // Whose child one was is forgotten with its parent.
    std::vector<Processus::Un> suite = Processus::portant(marques, reglages.demons);
    const auto signaler = [&](std::initializer_list<int> signaux) {
      suite = Processus::deLaSuite(sessions, suite);
      for (const auto& processus : suite)
        for (const int signal : signaux) Processus::signaler(processus, signal);
      return suite.empty();
    };
    signaler({SIGHUP, SIGTERM, SIGCONT}) || attendre(reglages.sursis, [&] { return signaler({}); }) ||
        attendre(verification, [&] { return signaler({SIGKILL}); });
    return suite;
  }

  Ou<Fait> acte(const std::string& commandes) {
    const auto blocs = liaison.demander(commandes);
    if (!blocs) return Sinon{blocs.raison()};
    return CommandesTmux::issue(*blocs);
  }

  void regarder() {
    const std::lock_guard garde(verrouRegard_);
    if (regard_) regard_();
  }
  void surRegard(std::function<void()> regard) {
    const std::lock_guard garde(verrouRegard_);
    regard_ = std::move(regard);
  }

  const ReglagesTmux reglages;

 private:
  std::mutex verrouRegard_;
  std::function<void()> regard_;
  const Descripteur verrou_;
  std::atomic<std::uint64_t> rang_ = 0;

 public:
  AnnoncesTmux annonces;
  LiaisonTmux liaison;
};

Resultat<std::unique_ptr<TerminauxTmux>, std::string> TerminauxTmux::ouvrir(ReglagesTmux reglages) {
  auto prise = PriseTmux::preparer(reglages);
  if (!prise) return Sinon{prise.raison()};
  // Beside the socket: boards that remember apart from each other may name the same one.
  std::filesystem::path chemin = prise->socket;
  chemin += ".plateau";
  const auto refus = Sinon{"rien ne peut être écrit dans « " + chemin.parent_path().string() + " »."};
  if (!creerDossierPrive(chemin.parent_path())) return refus;
  Descripteur verrou(::open(chemin.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (*verrou < 0) return refus;
  if (::flock(*verrou, LOCK_EX | LOCK_NB) != 0) {
    const auto qui = lireFichier(chemin, 64);
    return Sinon{"un autre plateau tient déjà ces terminaux (processus " +
                 std::string(Texte::rogner(qui.value_or("inconnu"))) + ")."};
  }
  const auto nous = std::to_string(::getpid()) + "\n";
  if (::ftruncate(*verrou, 0) != 0 || !ecrireTout(*verrou, nous)) return refus;
  balayer(reglages.dossier);
  return std::unique_ptr<TerminauxTmux>(new TerminauxTmux(
      std::make_unique<Interieur>(std::move(reglages), std::move(*prise), std::move(verrou))));
}

TerminauxTmux::TerminauxTmux(std::unique_ptr<Interieur> interieur) : interieur_(std::move(interieur)) {}

TerminauxTmux::~TerminauxTmux() { observer(nullptr); }

Ou<std::vector<Terminal>> TerminauxTmux::lister() {
  auto liste = interieur_->lister();
  if (liste)
    for (auto& terminal : *liste) terminal = AnnoncesTmux::commeOnLeDit(terminal);
  return liste;
}

Ou<Terminal> TerminauxTmux::ouvrir(const Lancement& lancement) {
  return interieur_->lancer(lancement,
                            [&](const auto& mots) { return CommandesTmux::ouvrir(lancement, mots); });
}

Ou<Terminal> TerminauxTmux::relancer(const IdTerminal& id, const Lancement& lancement) {
  const auto terminal = interieur_->trouver(id);
  if (!terminal) return Sinon{terminal.raison()};
  if (!terminal->mort) return Sinon{Panne::condition};
  // tmux may fall when a program starts anew under a control client that lags.
  const LiaisonTmux::Suspension suspension(interieur_->liaison, id.valeur);
  if (!suspension) return Sinon{Panne::muet};
  return interieur_->lancer(
      lancement, [&](const auto& mots) { return CommandesTmux::relancer(id.valeur, lancement, mots); });
}

Ou<Fait> TerminauxTmux::terminer(const IdTerminal& id) {
  const Ou<Terminal> terminal =
      id.valeur.empty() ? Ou<Terminal>(Sinon{Panne::inconnu}) : interieur_->trouver(id);
  if (!terminal) {
    const bool parti = terminal.raison() == Panne::inconnu && !id.cle.empty();
    if (parti && !interieur_->achever({}, {id.cle}).empty()) return Sinon{Panne::refuse};
    return Sinon{terminal.raison()};
  }
  const bool finis = interieur_->achever({*terminal}, {terminal->cle}).empty();
  const LiaisonTmux::Suspension suspension(interieur_->liaison, id.valeur);
  if (!suspension) return Sinon{Panne::muet};
  const auto ferme =
      interieur_->liaison.demander("kill-session -t " + MotsTmux::citer("=" + terminal->session + ":"));
  if (!ferme && ferme.raison() != Panne::inconnu) return Sinon{ferme.raison()};
  if (!finis) return Sinon{Panne::refuse};
  return Fait{};
}

Ou<Ecran> TerminauxTmux::ecran(const IdTerminal& id) {
  const auto blocs = interieur_->regarder(id, CommandesTmux::ecran(id.valeur));
  if (!blocs) return Sinon{blocs.raison()};
  if (auto lu = CommandesTmux::ecran(*blocs)) return *std::move(lu);
  interieur_->liaison.rompre();
  return Sinon{Panne::muet};
}

Ou<Peinture> TerminauxTmux::peinture(const IdTerminal& id) {
  const auto blocs = interieur_->regarder(id, CommandesTmux::peinture(id.valeur));
  if (!blocs) return Sinon{blocs.raison()};
  if (auto lue = CommandesTmux::peinture(*blocs)) return *std::move(lue);
  interieur_->liaison.rompre();
  return Sinon{Panne::muet};
}

Ou<std::vector<std::string>> TerminauxTmux::historique(const IdTerminal& id, int lignes) {
  const auto blocs = interieur_->regarder(id, CommandesTmux::historique(id.valeur, lignes));
  if (!blocs) return Sinon{blocs.raison()};
  if (blocs->empty()) return Sinon{Panne::refuse};
  return LectureEcran::lire(blocs->back().texte).vues;
}

Ou<Fait> TerminauxTmux::coller(const IdTerminal& id, std::string_view texte) {
  if (!MotsTmux::idValide(id.valeur)) return Sinon{Panne::inconnu};
  const auto colle = collable(texte.substr(0, collageMax + 1));
  if (colle.empty() || texte.size() > collageMax) return Sinon{Panne::refuse};
  const auto tampon = interieur_->nomNeuf(debutCollage);
  const Passager fichier(interieur_->reglages.dossier / tampon);
  const bool direct = colle.size() <= collageDirect;
  if (!direct && !deposer(fichier.chemin(), colle)) return Sinon{Panne::refuse};
  const auto charger = direct ? "set-buffer -b " + tampon + " -- " + MotsTmux::citer(colle)
                              : "load-buffer -b " + tampon + " " + MotsTmux::citer(fichier.chemin().native());
  const auto fait = interieur_->acte(
      charger + " ; " + CommandesTmux::agir(id, "paste-buffer -p -r -d -b " + tampon + " -t " + id.valeur));
  if (!fait) interieur_->liaison.demander("delete-buffer -b " + tampon);
  return fait;
}

Ou<Fait> TerminauxTmux::presser(const IdTerminal& id, const std::vector<Touche>& touches) {
  if (!MotsTmux::idValide(id.valeur)) return Sinon{Panne::inconnu};
  if (touches.empty() || touches.size() > touchesMax) return Sinon{Panne::refuse};
  std::vector<std::string> frappes;
  for (const auto& touche : touches) {
    auto frappe = MotsTmux::frapper(id.valeur, touche);
    if (!frappe) return Sinon{Panne::refuse};
    frappes.push_back(*std::move(frappe));
  }
  return interieur_->acte(CommandesTmux::agir(id, Texte::joindre(frappes, " ; ")));
}

Ou<Fait> TerminauxTmux::valider(const IdTerminal& id, const std::vector<std::string>& saufSi) {
  if (!MotsTmux::idValide(id.valeur)) return Sinon{Panne::inconnu};
  if (saufSi.size() > saufSiMax) return Sinon{Panne::refuse};
  return interieur_->acte(CommandesTmux::valider(id, saufSi));
}

Ou<Fait> TerminauxTmux::redimensionner(const IdTerminal& id, Taille taille) {
  if (!MotsTmux::idValide(id.valeur)) return Sinon{Panne::inconnu};
  if (!convient(taille)) return Sinon{Panne::refuse};
  const auto blocs =
      interieur_->liaison.demander("resize-window -t " + id.valeur + " -x " + std::to_string(taille.colonnes) +
                                   " -y " + std::to_string(taille.lignes));
  if (!blocs) return Sinon{blocs.raison()};
  return Fait{};
}

void TerminauxTmux::guetter(const IdTerminal& id) {
  if (MotsTmux::idValide(id.valeur)) interieur_->liaison.guetter(id.valeur);
}

void TerminauxTmux::laisser(const IdTerminal& id) { interieur_->liaison.laisser(id.valeur); }

void TerminauxTmux::observer(Observateur* observateur) { interieur_->annonces.observer(observateur); }

Ou<std::vector<std::string>> TerminauxTmux::eteindre(std::vector<std::string> cles) {
  const auto liste = interieur_->lister();
  if (!liste) return Sinon{liste.raison()};
  for (const auto& terminal : *liste) cles.push_back(terminal.cle);
  std::vector<std::string> restes;
  for (const auto& reste : interieur_->achever(*liste, cles)) restes.push_back(Processus::enMots(reste));
  const auto blocs = interieur_->liaison.demanderEnDernier("kill-server");
  if (!blocs && blocs.raison() != Panne::muet) return Sinon{blocs.raison()};
  return restes;
}

void TerminauxTmux::neRienDemarrer() { interieur_->liaison.neRienDemarrer(); }

std::vector<std::string> TerminauxTmux::motsPourRegarder(std::string_view session) const {
  return interieur_->liaison.prise().avec({"attach-session", "-t", "=" + std::string(session)});
}

Ou<std::vector<std::string>> TerminauxTmux::commander(const std::string& commandes) {
  auto blocs = interieur_->liaison.demander(commandes);
  if (!blocs) return Sinon{blocs.raison()};
  std::vector<std::string> ecrits;
  for (auto& bloc : *blocs) ecrits.push_back(std::move(bloc.texte));
  return ecrits;
}

void TerminauxTmux::surRegard(std::function<void()> regard) { interieur_->surRegard(std::move(regard)); }

}  // namespace tarnavelle::Plateau
