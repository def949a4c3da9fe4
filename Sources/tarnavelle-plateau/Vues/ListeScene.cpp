#include "Vues/ListeScene.hpp"

#include <pthread.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <string_view>
#include <thread>

#include "Etats/GuetFichiers.hpp"
#include "Socle/Colonnes.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/Texte.hpp"
#include "TextesVuesInterne.hpp"

namespace tarnavelle::Plateau::ListeScene {
namespace {

constexpr std::size_t tailleMax = 1024 * 1024;
constexpr std::string_view cloche = "cloche";

std::string_view style(char signe) {
  switch (signe) {
    case '!': return "\033[1;31m";
    case '=': return "\033[1m";
    case '-': return "\033[2m";
    default: return "";
  }
}

/// A shown list takes no input: what is typed into it is not drawn, and neither ends nor holds it.
void taire() {
  termios reglage{};
  if (::tcgetattr(STDIN_FILENO, &reglage) != 0) return;
  reglage.c_lflag &= ~static_cast<tcflag_t>(ECHO | ICANON | ISIG);
  reglage.c_iflag &= ~static_cast<tcflag_t>(IXON);
  ::tcsetattr(STDIN_FILENO, TCSANOW, &reglage);
}

std::vector<std::string_view> lignesDe(std::string_view contenu) {
  std::vector<std::string_view> lignes;
  for (auto fin = contenu.find('\n'); fin != contenu.npos; fin = contenu.find('\n')) {
    lignes.push_back(contenu.substr(0, fin));
    contenu.remove_prefix(fin + 1);
  }
  lignes.push_back(contenu);
  return lignes;
}

/// A bell that rang while its list was being started is still to be heard.
bool vientDeSonner(const std::filesystem::path& fichier) {
  std::error_code erreur;
  const auto quand = std::filesystem::last_write_time(fichier, erreur);
  return !erreur && std::filesystem::file_time_type::clock::now() - quand < std::chrono::seconds(5);
}

/// Whether somebody misses it.
bool compte(std::string_view ligne) { return ligne.starts_with(' ') || ligne.starts_with('!'); }

}  // namespace

bool ecrire(const std::filesystem::path& fichier, const std::vector<std::string>& lignes) {
  return ecrireFichierPrive(fichier, Texte::joindre(lignes, "\n"), Duree::passagere);
}

bool sonner(const std::filesystem::path& dossier) {
  const auto quand = std::chrono::system_clock::now().time_since_epoch().count();
  return ecrireFichierPrive(dossier / cloche, std::to_string(quand), Duree::passagere);
}

std::string dessin(const std::string& contenu, int colonnes, int lignes) {
  const auto place = static_cast<std::size_t>(std::max(1, lignes));
  auto toutes = lignesDe(contenu);
  std::string reste;
  if (toutes.size() > place) {
    const auto debut = toutes.begin() + static_cast<std::ptrdiff_t>(place);
    auto coupees = std::count_if(debut, toutes.end(), compte);
    toutes.resize(place);
    if (coupees > 0) {
      coupees += compte(toutes.back()) ? 1 : 0;
      reste = "-" + TextesVues::autres(static_cast<std::size_t>(coupees));
      toutes.back() = reste;
    }
  }
  toutes.resize(place);
  std::string ecran = "\033[?25l\033[?7l\033[H";
  for (std::size_t i = 0; i < place; ++i) {
    const std::string_view ligne = toutes[i];
    if (!ligne.empty())
      ecran.append(style(ligne.front()))
          .append(Colonnes::couper(Inoffensif::epurer(ligne.substr(1)), static_cast<std::size_t>(colonnes)))
          .append("\033[0m");
    ecran += "\033[K";
    if (i + 1 < place) ecran += "\r\n";
  }
  return ecran;
}

int montrer(const std::filesystem::path& fichier) {
  taire();
  sigset_t tailles;
  sigemptyset(&tailles);
  sigaddset(&tailles, SIGWINCH);
  ::pthread_sigmask(SIG_BLOCK, &tailles, nullptr);
  GuetFichiers guet(fichier.parent_path(), std::chrono::seconds(1));
  std::thread([&] {
    for (int signal = 0; sigwait(&tailles, &signal) == 0;) guet.interrompre();
  }).detach();  // both last as long as the terminal
  std::string montre;
  const auto sonneries = [&] { return lireFichier(fichier.parent_path() / cloche, 64).value_or(""); };
  std::string entendue = vientDeSonner(fichier.parent_path() / cloche) ? "" : sonneries();
  while (true) {
    winsize taille{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &taille) != 0) return 1;
    std::string ecran = dessin(lireFichier(fichier, tailleMax).value_or(""), std::max<int>(1, taille.ws_col),
                               std::max<int>(1, taille.ws_row));
    if (ecran != montre && !ecrireTout(STDOUT_FILENO, ecran)) return 0;
    montre = std::move(ecran);
    if (const std::string sonnee = sonneries(); sonnee != entendue) {
      entendue = sonnee;
      if (!ecrireTout(STDOUT_FILENO, "\a")) return 0;
    }
    guet.attendre(std::chrono::hours(1));
  }
}

}  // namespace tarnavelle::Plateau::ListeScene
