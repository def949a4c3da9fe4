// A terminal on which a thread scrolls by, above some lines that are drawn anew: what has scrolled stays in the
// terminal's own history. One thread at a time.
#pragma once

#include <termios.h>

#include <cstddef>
#include <string>
#include <vector>

namespace tarnavelle {

class Toile {
 public:
  /// Takes the terminal of standard input: raw, with bracketed paste. Gives it back as it was.
  Toile();
  ~Toile();
  Toile(const Toile&) = delete;
  Toile& operator=(const Toile&) = delete;

  std::size_t colonnes() const { return colonnes_; }
  std::size_t lignes() const { return lignes_; }
  /// The terminal may have another size.
  void mesurer();

  /// A line of the thread, harmless and no wider than the terminal; it stands above at the next drawing.
  void ajouter(std::string ligne) { neuves_.push_back(std::move(ligne)); }

  struct Vif {
    std::vector<std::string> lignes;  ///< harmless, no wider than the terminal
    std::size_t ligne = 0;            ///< where the cursor goes
    std::size_t colonne = 0;
    bool curseur = true;
  };
  /// Draws what is new of the thread, then these lines. False when the terminal is gone.
  bool dessiner(const Vif& vif);

 private:
  bool brute_ = false;
  termios avant_{};
  std::size_t colonnes_ = 80;
  std::size_t lignes_ = 24;
  std::vector<std::string> neuves_;
  std::vector<std::size_t> larges_;  ///< of the lines that were drawn last
  std::size_t ligneCurseur_ = 0;     ///< within them
  std::string dernier_;
};

}  // namespace tarnavelle
