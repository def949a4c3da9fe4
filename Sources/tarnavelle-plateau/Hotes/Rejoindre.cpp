#include "Hotes/Rejoindre.hpp"

#include <poll.h>
#include <signal.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <iostream>
#include <random>
#include <vector>

#include "Hotes/Barriere.hpp"
#include "Hotes/Carnet.hpp"
#include "RelaisInterne.hpp"
#include "ScriptsInterne.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

extern char** environ;

namespace tarnavelle::Plateau::Rejoindre {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr std::size_t ficheMax = 64 * 1024;
constexpr std::size_t journalMax = 64 * 1024;
constexpr seconds premierEssai{1};
constexpr seconds dernierEssai{30};
constexpr seconds tenu{10};  ///< of a link that held so long, the next cut is a first one
constexpr milliseconds presenceMax{15000};
constexpr int deSSH = 255;

/// What a program that was cut may have left: another screen, no cursor, a mouse that speaks, pastes in
/// brackets.
constexpr std::string_view remise =
    "\x1b[?1000l\x1b[?1002l\x1b[?1003l\x1b[?1006l\x1b[?1004l\x1b[?1049l\x1b[?2004l\x1b[?1l\x1b>\x1b[?7h\x1b[?"
    "25h\x1b[m"
    "\x1b[r\x1b[H\x1b[2J";
/// The session over there takes pastes in brackets whatever its tmux asks of the terminal.
constexpr std::string_view collages = "\x1b[?2004h";

void ecrire(std::string_view octets) { ecrireTout(STDOUT_FILENO, octets); }

/// The terminal as it was found, and as it is while nobody but us reads it.
class Terminal {
 public:
  Terminal() { trouve_ = ::tcgetattr(STDIN_FILENO, &depart_) == 0; }
  ~Terminal() { remettre(); }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  void remettre() const {
    if (trouve_) ::tcsetattr(STDIN_FILENO, TCSANOW, &depart_);
  }
  /// Every byte as it is: nothing of it is shown, no key ends us.
  void taire() const {
    if (!trouve_) return;
    termios muet = depart_;
    ::cfmakeraw(&muet);
    ::tcsetattr(STDIN_FILENO, TCSANOW, &muet);
  }

 private:
  termios depart_{};
  bool trouve_ = false;
};

class Vue {
 public:
  Vue(const Fiche& fiche, std::string session)
      : fiche_(fiche),
        session_(std::move(session)),
        lien_(fiche.ssh, fiche.hote),
        dits_(fiche.ssh.dossier / ("r" + std::to_string(::getpid()))) {}

  int montrer() {
    seconds essai = premierEssai;
    int statut = 0;
    while (true) {
      seconds attente = essai;
      const auto direPanne = [&](const PanneSSH& panne) {
        if (!panne.passagere()) attente = PanneSSH::sansEspoir;
        dire(panne.cause == PanneSSH::Cause::coupe ? "" : panne.phrase + "\r\n", attente);
      };
      terminal_.taire();
      const auto lu = lien_.courir({.ligne = interne::Scripts::presence(session_),
                                    .entree = interne::Scripts::retour(session_),
                                    .auPlus = presenceMax});
      const auto presence =
          lu ? interne::Scripts::presence(lu->sortie, session_) : interne::Scripts::Presence::inconnue;
      switch (presence) {
        case interne::Scripts::Presence::finie: return finir(statut);
        case interne::Scripts::Presence::inconnue:
          if (lu)
            dire("tmux ne répond pas sur « " + hote() + " ».\r\n", attente);
          else
            direPanne(lu.raison());
          break;
        case interne::Scripts::Presence::aPartir:
        case interne::Scripts::Presence::vit: {
          const auto debut = std::chrono::steady_clock::now();
          const bool depart = presence == interne::Scripts::Presence::aPartir;
          statut = suivre(depart ? interne::Scripts::cheminDepart(session_)
                                 : interne::Scripts::cheminRetour(session_));
          if (std::chrono::steady_clock::now() - debut > tenu) attente = essai = premierEssai;
          // Over there it ended, or somebody sent us away: which one, the next round asks.
          if (statut != deSSH) {
            if (!depart) statut = 0;
            if (std::chrono::steady_clock::now() - debut > premierEssai) continue;
            if (!patienter(premierEssai)) return 1;
            continue;
          }
          direPanne(PanneSSH::lire(fiche_.hote, lireFichier(dits_, journalMax).value_or("")));
        }
      }
      if (!patienter(hasard(attente))) return 1;
      essai = std::min(2 * essai, dernierEssai);
    }
  }

  ~Vue() { ::unlink(dits_.c_str()); }
  Vue(const Vue&) = delete;
  Vue& operator=(const Vue&) = delete;

 private:
  std::string hote() const { return Inoffensif::epurer(fiche_.hote); }

  /// Waits, or until Enter; false at the end of the input.
  bool patienter(milliseconds duree) {
    const auto limite = std::chrono::steady_clock::now() + duree;
    while (true) {
      const auto reste = std::chrono::ceil<milliseconds>(limite - std::chrono::steady_clock::now());
      if (reste <= milliseconds::zero()) return true;
      pollfd entree{STDIN_FILENO, POLLIN, 0};
      if (::poll(&entree, 1, static_cast<int>(reste.count())) <= 0) continue;
      std::array<char, 4096> bloc;
      const auto lus = ::read(STDIN_FILENO, bloc.data(), bloc.size());
      if (lus < 0 && errno == EINTR) continue;
      if (lus <= 0) return false;
      const std::string_view octets(bloc.data(), static_cast<std::size_t>(lus));
      barriere_.passer(octets, false);
      if (octets.find_first_of("\r\n") != std::string_view::npos) return true;
    }
  }

  /// Neither all agents at once nor all boards.
  static milliseconds hasard(seconds attente) {
    std::random_device source;
    return milliseconds(attente) * static_cast<int>(80 + source() % 41) / 100;
  }

  int finir(int statut) {
    terminal_.remettre();
    ecrire(remise);
    std::cout << fiche_.titre << " a pris fin sur « " << hote() << " » : sa session " << session_
              << " n'y est plus.\r\n"
              << std::flush;
    return statut == deSSH ? 0 : statut;
  }

  void dire(const std::string& pourquoi, seconds attente) {
    if (!rompu_) rompu_ = direDuLien(fiche_.journal, "tarnavelle.lien.rompu");
    ecrire(remise);
    std::cout << "Le lien avec « " << hote() << " » est rompu.\r\n"
              << pourquoi << "\r\n"
              << "Rien n'est perdu : si la machine vit, " << fiche_.titre << " continue là-bas dans sa session "
              << session_ << ".\r\nCe qui est tapé ici ne va nulle part. Nouvel essai dans " << attente.count()
              << " s ; Entrée : tout de suite.\r\n"
              << std::flush;
  }

  void renouer() {
    if (rompu_ && direDuLien(fiche_.journal, "tarnavelle.lien.renoue")) rompu_ = false;
  }

  /// Shows the session until the link or the session ends: its status.
  int suivre(const std::string& chemin) {
    ::unlink(dits_.c_str());
    ecrire(remise);
    ecrire(collages);
    const int statut = interne::Relais::courir(lien_.motsTerminal(interne::Scripts::lancer(chemin), dits_),
                                               interne::Scripts::signe, barriere_, [this] { renouer(); });
    return statut == interne::Relais::nonLance ? deSSH : statut;
  }

  const Fiche& fiche_;
  const std::string session_;
  const LienSSH lien_;
  const std::filesystem::path dits_;
  const Terminal terminal_;
  Barriere barriere_;
  bool rompu_ = false;
};

}  // namespace

std::optional<std::string> ecrire(const Fiche& fiche) {
  return EcritureJSON::compacte({{"ssh", fiche.ssh.programme},
                                 {"configuration", fiche.ssh.configuration.string()},
                                 {"dossier", fiche.ssh.dossier.string()},
                                 {"hote", fiche.hote},
                                 {"titre", fiche.titre},
                                 {"journal", fiche.journal.string()},
                                 {"port", fiche.port}});
}

std::optional<Fiche> lire(std::string_view texte) {
  const auto objet = LectureJSON::objet(texte);
  if (!objet) return std::nullopt;
  Fiche fiche{.ssh = {.programme = Champ::texte(*objet, "ssh"),
                      .configuration = Champ::texte(*objet, "configuration"),
                      .dossier = Champ::texte(*objet, "dossier")},
              .hote = Champ::texte(*objet, "hote"),
              .titre = Champ::texte(*objet, "titre"),
              .journal = Champ::texte(*objet, "journal"),
              .port = static_cast<int>(Champ::entier(*objet, "port", 0))};
  if (fiche.ssh.programme.empty() || fiche.hote.empty() || fiche.journal.empty()) return std::nullopt;
  return fiche;
}

int montrer(const std::filesystem::path& fichier, const std::string& session) {
  ::signal(SIGPIPE, SIG_IGN);
  const auto texte = lireFichier(fichier, ficheMax);
  auto fiche = texte ? lire(*texte) : std::nullopt;
  if (!fiche) {
    std::cerr << "tarnavelle : « " << Inoffensif::montrable(fichier.string()) << " » est illisible.\n";
    return 1;
  }
  for (char** ligne = environ; ligne && *ligne; ++ligne) {
    const std::string_view entree(*ligne);
    const auto egal = std::min(entree.find('='), entree.size());
    fiche->ssh.environnement.emplace(entree.substr(0, egal), entree.substr(std::min(egal + 1, entree.size())));
  }
  // It may have been cleared away with what was temporary.
  if (!creerDossierPrive(fiche->ssh.dossier))
    fiche->ssh.dossier = ReglagesSSH::dossierCourt(fiche->ssh.dossier);
  return Vue(*fiche, session).montrer();
}

}  // namespace tarnavelle::Plateau::Rejoindre
