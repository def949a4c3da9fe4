// The lines of a screen as `tmux capture-pane -e` writes them: text, with the SGR sequences (ECMA-48) and the
// shifts into VT100's line drawing that its cells need. Anything else is passed over. Pure functions.
// https://invisible-island.net/xterm/ctlseqs/ctlseqs.html
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Terminaux/Peinture.hpp"

namespace tarnavelle::Plateau::LectureEcran {

struct Lignes {
  std::vector<std::string> vues;       ///< valid UTF-8, without trailing spaces
  std::vector<std::string> attenuees;  ///< the same, spaces in place of what is drawn dim
  bool operator==(const Lignes&) const = default;
};

/// Each line of the capture ends with a line feed.
Lignes lire(std::string_view capture);

/// The same lines with their styles, and the spaces that they end with.
std::vector<std::vector<Troncon>> peindre(std::string_view capture);

}  // namespace tarnavelle::Plateau::LectureEcran
