#include "Terminal/Toile.hpp"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>

#include "Socle/Colonnes.hpp"
#include "Socle/Fichiers.hpp"

namespace tarnavelle {

Toile::Toile() {
  if (::tcgetattr(STDIN_FILENO, &avant_) == 0) {
    termios brut = avant_;
    ::cfmakeraw(&brut);
    brute_ = ::tcsetattr(STDIN_FILENO, TCSADRAIN, &brut) == 0;
  }
  ecrireTout(STDOUT_FILENO, "\033[?2004h");
  mesurer();
}

Toile::~Toile() {
  ecrireTout(STDOUT_FILENO, "\033[?2004l\033[?25h\r\n");
  if (brute_) ::tcsetattr(STDIN_FILENO, TCSADRAIN, &avant_);
}

void Toile::mesurer() {
  winsize taille{};
  if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &taille) != 0 || taille.ws_col == 0 || taille.ws_row == 0) return;
  colonnes_ = std::max<std::size_t>(20, taille.ws_col);
  lignes_ = std::max<std::size_t>(6, taille.ws_row);
  dernier_.clear();
}

bool Toile::dessiner(const Vif& vif) {
  // Lines that were wider than the terminal is now take several.
  std::size_t monter = 0;
  for (std::size_t i = 0; i < ligneCurseur_ && i < larges_.size(); ++i)
    monter += std::max<std::size_t>(1, (larges_[i] + colonnes_ - 1) / colonnes_);
  std::string corps;
  for (const std::string& ligne : neuves_) corps += ligne + "\033[K\r\n";
  std::string bas;
  for (std::size_t i = 0; i < vif.lignes.size(); ++i) bas += (i == 0 ? "" : "\r\n") + vif.lignes[i] + "\033[K";
  const std::string place =
      std::to_string(vif.ligne) + ";" + std::to_string(vif.colonne) + (vif.curseur ? "+" : "-");
  if (neuves_.empty() && bas + place == dernier_) return true;
  dernier_ = bas + place;
  std::string ecran = "\033[?25l\r";
  if (monter > 0) ecran += "\033[" + std::to_string(monter) + "A";
  // The clearing comes last: tmux keeps in its history a screen that is cleared from its top.
  ecran += corps + bas + "\033[J\r";
  if (const auto haut = vif.lignes.size() - 1 - vif.ligne; haut > 0)
    ecran += "\033[" + std::to_string(haut) + "A";
  if (vif.colonne > 0) ecran += "\033[" + std::to_string(vif.colonne) + "C";
  if (vif.curseur) ecran += "\033[?25h";
  neuves_.clear();
  larges_.clear();
  for (const std::string& ligne : vif.lignes) larges_.push_back(Colonnes::largeur(ligne));
  ligneCurseur_ = vif.ligne;
  return ecrireTout(STDOUT_FILENO, ecran);
}

}  // namespace tarnavelle
