// The lines of commands by which the ground asks tmux, and the reading of what comes back. Whoever acts on a
// terminal checks it in the same line: between two lines a program may end. Pure functions.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Terminaux/Terminaux.hpp"
#include "TerminauxTmux/LecteurControle.hpp"

namespace tarnavelle::Plateau::CommandesTmux {

using Blocs = std::vector<BlocTmux>;

std::string lister();
/// `processus` is told of those that have ended too: it tells one program from the next in the same terminal.
std::vector<Terminal> terminaux(const Blocs& blocs);

/// Opens a session whose program is these words; replies with its terminal's id and process.
std::string ouvrir(const Lancement& lancement, const std::vector<std::string>& mots);
std::string relancer(std::string_view id, const Lancement& lancement, const std::vector<std::string>& mots);
struct Ouvert {
  std::string id;
  std::int64_t processus = 0;
};
std::optional<Ouvert> ouvert(const Blocs& blocs);

std::string ecran(std::string_view id);
/// Nothing when what came back is not one screen.
std::optional<Ecran> ecran(const Blocs& blocs);

std::string peinture(std::string_view id);
/// The same.
std::optional<Peinture> peinture(const Blocs& blocs);

std::string historique(std::string_view id, int lignes);

/// Asks what is meant to run in a terminal, and whether that is what its id means.
std::string reconnaitre(const IdTerminal& id);
bool reconnu(const IdTerminal& id, const BlocTmux& bloc);

/// Acts on a terminal that is there and whose program runs, out of copy mode.
std::string agir(const IdTerminal& id, std::string_view acte);
/// Presses Enter, unless a line of the screen holds one of the texts.
std::string valider(const IdTerminal& id, const std::vector<std::string>& saufSi);
/// What became of an act.
Ou<Fait> issue(const Blocs& blocs);

}  // namespace tarnavelle::Plateau::CommandesTmux
