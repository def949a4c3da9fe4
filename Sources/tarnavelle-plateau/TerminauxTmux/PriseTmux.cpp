#include <signal.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <charconv>
#include <chrono>
#include <optional>
#include <system_error>
#include <utility>

#include "Enfants/Enfant.hpp"
#include "PriseTmuxInterne.hpp"
#include "ProcessusInterne.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/Texte.hpp"
#include "TerminauxTmux/Lanceur.hpp"
#include "TerminauxTmux/TerminauxTmux.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::pair<int, int> versionMin = {3, 2};

/// Ours, whatever the user's own says: read when the server starts, and again by each board that finds it
/// there. message-limit: tmux keeps the commands it was given, pasted texts among them, for whoever asks.
constexpr std::string_view reglagesDuServeur =
    "set-option -s escape-time 10\n"
    "set-option -s set-clipboard off\n"
    "set-option -s message-limit 0\n"
    "set-option -g default-terminal screen-256color\n"
    "set-option -g history-limit 10000\n"
    "set-option -g update-environment \"\"\n"
    "set-option -g mouse on\n"
    "set-option -g set-titles off\n"
    "set-option -gw automatic-rename off\n"
    "set-option -gw allow-rename off\n"
    "set-option -gwq remain-on-exit-format \"\"\n"
    // An agent's terminal has no line and no key of tmux's: it is mostly looked at through a view, within a
    // scene that has its own. Views are told by their flag; who attaches to it himself has the usual prefix.
    "set-option -g status off\n"
    "set-option -g prefix None\n"
    "set-option -g prefix2 None\n"
    "bind-key -n C-b if-shell -F \"#{m:*ignore-size*,#{client_flags}}\" \"send-keys C-b\" \"switch-client -T "
    "prefix\"\n"
    // Menus that end the program under the mouse.
    "unbind-key -q -n MouseDown3Pane\n"
    "unbind-key -q -n M-MouseDown3Pane\n"
    // Whether a board is there, as those who look are to be told, however it ended: its client goes with it.
    "set-option -s @tarnavelle-porte 1\n"
    "set-hook -g client-detached \"set-option -s -F @tarnavelle-porte "
    "'#{S:#{?#{==:#{session_name},plateau},#{session_attached},}}'\"\n";

/// What a program wrote; nothing when it cannot be started or takes too long.
std::optional<std::string> sortieDe(const std::vector<std::string>& mots, const Environnement& environnement,
                                    std::chrono::milliseconds delai) {
  auto arrivee = courir({.embarque = {.mots = mots, .environnement = environnement, .dossier = {}},
                         .auPlus = delai,
                         .sortieMax = 4096});
  if (arrivee.horsDelai || arrivee.statut == 127) return std::nullopt;
  return std::move(arrivee.sortie);
}

std::optional<Processus::Un> lireServeur(const std::filesystem::path& fichier) {
  const auto contenu = lireFichier(fichier, 256);
  if (!contenu) return std::nullopt;
  const auto mots = Texte::mots(*contenu);
  if (mots.size() != 3 || mots[2] != Processus::demarrage()) return std::nullopt;
  Processus::Un serveur;
  std::from_chars(mots[0].data(), mots[0].data() + mots[0].size(), serveur.pid);
  std::from_chars(mots[1].data(), mots[1].data() + mots[1].size(), serveur.debut);
  return serveur.pid > 1 ? std::optional(serveur) : std::nullopt;
}

std::filesystem::path cheminDuSocket(const ReglagesTmux& reglages) {
  if (reglages.prise.find('/') != std::string::npos) return reglages.prise;
  const auto dossier = reglages.environnement.find("TMUX_TMPDIR");
  const std::filesystem::path racine = dossier == reglages.environnement.end() ? "/tmp" : dossier->second;
  return racine / ("tmux-" + std::to_string(::getuid())) / reglages.prise;
}

}  // namespace

bool versionSuffisante(std::string_view sortie) {
  if (sortie.starts_with("tmux openbsd-") || sortie.starts_with("tmux master")) return true;
  const auto chiffre = sortie.find_first_of("0123456789");
  if (!sortie.starts_with("tmux ") || chiffre == std::string_view::npos) return false;
  std::pair<int, int> version{0, 0};
  const char* const fin = sortie.data() + sortie.size();
  const auto majeure = std::from_chars(sortie.data() + chiffre, fin, version.first);
  if (majeure.ec != std::errc() || majeure.ptr == fin || *majeure.ptr != '.') return false;
  std::from_chars(majeure.ptr + 1, fin, version.second);
  return version >= versionMin;
}

Resultat<PriseTmux, std::string> PriseTmux::preparer(const ReglagesTmux& reglages) {
  PriseTmux prise;
  const auto dossier = reglages.dossier.string();
  const bool nouveau = ::mkdir(dossier.c_str(), 0700) == 0;
  struct stat etat {};
  if (!nouveau && (::stat(dossier.c_str(), &etat) != 0 || !S_ISDIR(etat.st_mode) || etat.st_uid != ::getuid()))
    return Sinon{"le dossier « " + dossier + " » ne peut pas servir."};
  ::chmod(dossier.c_str(), 0700);
  prise.configuration = reglages.dossier / "tmux.conf";
  prise.serveur = reglages.dossier / "serveur";
  if (!ecrireFichierPrive(prise.configuration, reglagesDuServeur))
    return Sinon{"rien ne peut être écrit dans « " + dossier + " »."};

  prise.environnement = Lanceur::heritage(reglages.environnement);
  const auto version = sortieDe({reglages.tmux, "-V"}, prise.environnement, std::chrono::seconds(5));
  if (!version || version->empty())
    return Sinon{
        std::string("tmux est introuvable : c'est lui qui tient les terminaux. Installez-le (version 3.2 ou "
                    "plus récente), puis relancez.")};
  if (!versionSuffisante(*version))
    return Sinon{"ce tmux est trop ancien (« " + std::string(Texte::rogner(Texte::reparer(*version))) +
                 " ») : il en faut un de version 3.2 ou plus récente."};

  prise.socket = cheminDuSocket(reglages);
  const bool chemin = reglages.prise.find('/') != std::string::npos;
  prise.mots = {reglages.tmux, "-u", chemin ? "-S" : "-L", reglages.prise, "-f", prise.configuration.string()};
  prise.attendreDeparts();
  return prise;
}

std::vector<std::string> PriseTmux::avec(const std::vector<std::string>& commande) const {
  auto tous = mots;
  tous.insert(tous.end(), commande.begin(), commande.end());
  return tous;
}

std::optional<Processus::Un> PriseTmux::retenir(std::string_view ligne) const {
  pid_t pid = 0;
  std::from_chars(ligne.data(), ligne.data() + ligne.size(), pid);
  const auto debut = Processus::debut(pid);
  if (!debut) return std::nullopt;
  ecrireFichierPrive(serveur,
                     std::to_string(pid) + " " + std::to_string(*debut) + " " + Processus::demarrage());
  return Processus::Un{pid, *debut};
}

void PriseTmux::attendreDeparts() const {
  using namespace std::chrono;
  constexpr timespec pause{0, 20'000'000};
  constexpr timespec brevePause{0, 5'000'000};  // when none was seen to leave
  std::error_code erreur;
  if (!std::filesystem::exists(socket, erreur)) return;
  const auto fin = steady_clock::now() + departs;
  for (bool vu = false; steady_clock::now() < fin;) {
    const auto etat = accueil();
    vu = vu || etat == Accueil::occupe;
    ::nanosleep(vu ? &pause : &brevePause, nullptr);
    if (etat == Accueil::libre) return;
  }
}

PriseTmux::Accueil PriseTmux::accueil() const {
  constexpr std::chrono::milliseconds delai{300};
  if (std::error_code erreur; !std::filesystem::exists(socket, erreur)) return Accueil::libre;
  const auto clients =
      sortieDe(avec({"-N", "list-clients", "-F",
                     "#{&&:#{client_control_mode},#{==:#{session_name}," + std::string(sessionPlateau) + "}}"}),
               environnement, delai);
  if (!clients) return Accueil::muet;
  return clients->find('1') == std::string::npos ? Accueil::libre : Accueil::occupe;
}

void PriseTmux::ranimer() const {
  constexpr int essais = 50;
  constexpr timespec pause{0, 10'000'000};
  struct stat etat {};
  if (::stat(socket.c_str(), &etat) == 0) return;
  const auto vivant = lireServeur(serveur);
  if (!vivant || Processus::debut(vivant->pid) != vivant->debut) return;
  Processus::signaler(*vivant, SIGUSR1);
  for (int essai = 0; essai < essais && ::stat(socket.c_str(), &etat) != 0; ++essai)
    ::nanosleep(&pause, nullptr);
}

}  // namespace tarnavelle::Plateau
