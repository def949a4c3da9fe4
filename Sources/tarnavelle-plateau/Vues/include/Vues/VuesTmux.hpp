// What a person sees, on the tmux server of the terminals: a scene is a session with a list that stays and,
// while somebody looks, views. A view is a tmux client within a pane, attached to an agent's own session:
// closing it ends nothing. The board alone gives agents their size: that of the largest view then shown, 80x24
// at least, and 200x50 when nobody looks. Nothing polls: what is shown is made anew when something has changed,
// on a thread of its own, and with nobody looking tmux is asked for nothing.
//
// Safe from any thread.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Etats/Veille.hpp"
#include "Registre/Registre.hpp"
#include "TerminauxTmux/TerminauxTmux.hpp"
#include "Verbes/Moyens.hpp"
#include "Vues/Alertes.hpp"

namespace tarnavelle::Plateau {

struct ReglagesVues {
  std::filesystem::path dossier;   ///< for the lists' files; made 0700 if it is not there
  std::vector<std::string> liste;  ///< the words that show a list, to which its file is added
  /// Told the words by which a person looks at the visible scene: at the start, and when they have changed.
  std::function<void(const std::vector<std::string>& mots)> regard{};
  /// Least time between two writings of what has changed.
  std::chrono::milliseconds cadence{250};
};

class VuesTmux final : public Vues {
 public:
  VuesTmux(TerminauxTmux& terminaux, Registre& registre, Veille& veille, Alertes& alertes,
           ReglagesVues reglages);
  /// The scenes and views stay; their status lines say that the door is closed.
  ~VuesTmux() override;
  VuesTmux(const VuesTmux&) = delete;
  VuesTmux& operator=(const VuesTmux&) = delete;

  /// Makes the scenes, and from here on shows what changes. A reason in French when the scenes could not be
  /// made.
  std::optional<std::string> demarrer();

  void rafraichir() override;
  Resultat<Rangement, std::string> ranger(std::int64_t scene, std::string_view plan,
                                          const std::string& vedette) override;

  /// The words by which a person looks at the visible scene.
  std::vector<std::string> motsPourRegarder() const;

 private:
  class Corps;
  std::unique_ptr<Corps> corps_;
};

}  // namespace tarnavelle::Plateau
