// One control-mode client: a tmux process of its own session, so that no signal of our terminal reaches it,
// with its input and output on pipes that never block us. It ends when its input is closed; it is never killed,
// which could take the server with it. One thread at a time.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Enfants/Enfant.hpp"
#include "TerminauxTmux/LecteurControle.hpp"

namespace tarnavelle::Plateau {

class ClientControle {
 public:
  explicit ClientControle(Enfant enfant) : enfant_(std::move(enfant)) {}
  ClientControle(const ClientControle&) = delete;
  ClientControle& operator=(const ClientControle&) = delete;

  /// To be waited for by its owner, once it has ended.
  pid_t processus() const { return enfant_.pid; }
  int lecture() const { return *enfant_.sortie; }
  int ecriture() const { return *enfant_.entree; }

  /// Lines to be written when the pipe takes them.
  void ecrire(std::string_view lignes) { aEcrire_.append(lignes); }
  bool aEcrire() const { return !aEcrire_.empty() && *enfant_.entree >= 0; }
  void vider();

  /// Reads what is there, once. False when the client is gone.
  bool lire();
  std::optional<LecteurControle::Lecture> suivante() { return lecteur_.suivante(); }

  /// Tells the client to end: `lire` goes on until it has.
  void fermer() { enfant_.entree.fermer(); }

 private:
  Enfant enfant_;
  std::string aEcrire_;
  LecteurControle lecteur_;
};

}  // namespace tarnavelle::Plateau
