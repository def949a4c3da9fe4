// Where our tmux server is and how one speaks to it: the words, the configuration, the server that is there
// although its socket was removed.
#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ProcessusInterne.hpp"
#include "Socle/Environnement.hpp"
#include "Socle/Resultat.hpp"
#include "TerminauxTmux/TerminauxTmux.hpp"

namespace tarnavelle::Plateau {

struct PriseTmux {
  std::vector<std::string> mots;  ///< "tmux -u -L … -f …", before a command
  Environnement environnement;    ///< of what they start
  std::filesystem::path socket;   ///< where tmux makes it
  std::filesystem::path configuration;
  std::filesystem::path serveur;  ///< where the server's number is kept for `ranimer`

  /// Writes the configuration. A reason in French when the folder cannot be used, or tmux is missing or too
  /// old.
  static Resultat<PriseTmux, std::string> preparer(const ReglagesTmux& reglages);

  /// The words with a command after them.
  std::vector<std::string> avec(const std::vector<std::string>& commande) const;

  /// Keeps the number, and a line feed, by which the server that has answered named itself; nothing if it is
  /// none.
  std::optional<Processus::Un> retenir(std::string_view ligne) const;

  /// How the server would take a control client. tmux up to 3.3a falls when one leaves while another arrives:
  /// that of a board that was killed is given the time to leave (`departs`), as soon as the server runs.
  enum class Accueil { libre, occupe, muet };
  Accueil accueil() const;
  void attendreDeparts() const;
  static constexpr std::chrono::seconds departs{2};

  /// Where the socket was removed under a server that lives, asks it for another, and waits for that.
  void ranimer() const;
};

/// Whether what `tmux -V` writes is a version that can be used: "tmux 3.3a", "tmux next-3.6", "tmux
/// openbsd-7.4".
bool versionSuffisante(std::string_view sortie);

}  // namespace tarnavelle::Plateau
